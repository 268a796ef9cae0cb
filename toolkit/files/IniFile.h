// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_FILES_INIFILE_H
#define TOOLKIT_FILES_INIFILE_H

#include <memory>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// A settings file of sections and keys, read whole at construction and then only asked. Names are compared
/// exactly, case included; values are kept as text and converted on each call. Any number of threads may ask
/// at once, but not while another one parses. A file that cannot be read leaves no sections and one line in
/// the log; a malformed line is skipped without a word.
///
/// @code
/// const Toolkit::IniFile desk(L"desk.ini");
/// const Toolkit::TString<wchar_t> name = desk.GetValue(L"mail", L"name", L"nobody");
/// const unsigned int width = desk.GetUint32(L"window", L"width", 640);
/// @endcode
class TOOLKIT_API IniFile
{
public:
    /// Parses `path`; `IsLoaded` tells the result.
    explicit IniFile(const TString<wchar_t>& path);
    ~IniFile();

    /// A copy has sections of its own.
    IniFile(const IniFile& other);
    IniFile& operator=(const IniFile& other);

    /// True when the file given to the constructor was read; a later `Parse` does not change it.
    bool IsLoaded() const { return m_bLoaded; }

    /// Replaces all sections by the content of another file, read as TextFile reads it. False when it cannot
    /// be read: there are no sections then. `path` may be a value of this object.
    /// Quirk: the line in the log names source line 64, whatever the source says.
    ///
    /// "[name]" over the whole line begins a section, or goes on with an earlier one of that name; ";" in the
    /// first column begins a comment. Any other line is a key and its value around the first "=", both
    /// without the spaces and tabs at their ends; of a repeated key the first one stays. Keys before the
    /// first section are ignored.
    bool Parse(const TString<wchar_t>& path);

    /// True when the section occurs, with or without keys.
    bool HasSection(const TString<wchar_t>& section) const;
    /// True when the section holds the key, with or without a value.
    bool HasValue(const TString<wchar_t>& section, const TString<wchar_t>& key) const;

    /// The stored value, or `defaultValue` itself when there is none. The reference to a value holds until
    /// the next `Parse`.
    const TString<wchar_t>& GetValue(const TString<wchar_t>& section, const TString<wchar_t>& key,
                                     const TString<wchar_t>& defaultValue) const;
    /// The same for a default that is a temporary, made of a literal for instance: it returns a copy.
    TString<wchar_t> GetValue(const TString<wchar_t>& section, const TString<wchar_t>& key,
                              const TString<wchar_t>&& defaultValue) const;

    /// The number that the value begins with, as a wide stream in the classic locale reads it; a number out
    /// of range gives the nearest bound. `defaultValue` when the key is missing or its value is empty.
    /// Quirk: a value that begins with no number gives 0, not the default.
    /// Quirk: a negative number is taken modulo 2^32.
    unsigned int GetUint32(const TString<wchar_t>& section, const TString<wchar_t>& key,
                           unsigned int defaultValue) const;
    /// The same for a number with a sign.
    int GetInt32(const TString<wchar_t>& section, const TString<wchar_t>& key, int defaultValue) const;

    /// True exactly when GetUint32 would read 1. `defaultValue` when the key is missing or its value is
    /// empty.
    /// Quirk: "true" and "yes" are false, even when the default is true.
    bool GetBool(const TString<wchar_t>& section, const TString<wchar_t>& key, bool defaultValue) const;

    /// Replaces `keys` by the section's keys in ascending order; by nothing when there is no such section.
    void GetKeyList(const TString<wchar_t>& section, std::vector<TString<wchar_t>>& keys) const;

private:
    struct Sections;

    const TString<wchar_t>* FindValue(const TString<wchar_t>& section, const TString<wchar_t>& key) const;
    template <class Number>
    Number GetNumber(const TString<wchar_t>& section, const TString<wchar_t>& key, Number defaultValue) const;

    std::unique_ptr<Sections> m_pSections;
    bool m_bLoaded;
};

} // namespace Toolkit

#endif
