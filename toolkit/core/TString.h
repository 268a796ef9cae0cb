// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_TSTRING_H
#define TOOLKIT_CORE_TSTRING_H

#include <functional>
#include <string>
#include <type_traits>
#include <utility>

#include "toolkit/core/Export.h"

namespace Toolkit
{

template <class C>
class TString;

namespace Detail
{
TOOLKIT_API bool Contains(const wchar_t* text, std::size_t length, const wchar_t* what, std::size_t count);
TOOLKIT_API bool Contains(const char* text, std::size_t length, const char* what, std::size_t count);
TOOLKIT_API bool HasSubstring(const wchar_t* text, std::size_t length, const wchar_t* what,
                              std::size_t count);
TOOLKIT_API bool HasSubstring(const char* text, std::size_t length, const char* what, std::size_t count);
TOOLKIT_API int CompareNoCase(const wchar_t* a, std::size_t aLength, const wchar_t* b, std::size_t bLength);
TOOLKIT_API int CompareNoCase(const char* a, std::size_t aLength, const char* b, std::size_t bLength);
TOOLKIT_API void Replace(std::wstring& text, const std::wstring& what, const std::wstring& with);
} // namespace Detail

/// The library's string: a standard string of C with a few operations more and no data of its own.
/// TString<wchar_t> holds text, one code point per element; TString<char> holds bytes, as a rule UTF-8.
/// It converts to and from the standard string freely, and is as safe across threads as that is.
///
/// @code
/// const Toolkit::TString<wchar_t> name(L"Report.TXT");
/// if (name.HasSubstring(L".txt"))
///     Show(Toolkit::UTF8::ToUTF8(name));
/// @endcode
template <class C>
class TString : public std::basic_string<C>
{
    static_assert(std::is_same_v<C, char> || std::is_same_v<C, wchar_t>, "bytes or wide text only");

public:
    /// The standard string that this one is derived from.
    using Base = std::basic_string<C>;
    /// Those of the standard string.
    using Base::Base;

    TString() = default;
    /// A null pointer gives an empty string.
    TString(const C* text) : Base(text != nullptr ? Base(text) : Base()) {}
    /// A copy of a standard string.
    TString(const Base& text) : Base(text) {}
    /// Takes over the text of a standard string.
    TString(Base&& text) noexcept : Base(std::move(text)) {}

    /// One empty instance per character type, the same object in every library of the process.
    static const TString& Empty();

    /// True when `text` occurs in this string exactly as it is; an empty `text` always does.
    bool Contains(const TString& text) const
    {
        return Detail::Contains(this->data(), this->size(), text.data(), text.size());
    }

    /// `Contains` without regard to case. Both character types fold through the narrow `tolower` of the
    /// current locale. Quirk: wide letters beyond the narrow `tolower` compare exactly.
    bool HasSubstring(const TString& text) const
    {
        return Detail::HasSubstring(this->data(), this->size(), text.data(), text.size());
    }

    /// -1, 0 or 1: three-way comparison without regard to case. Wide elements fold through `towlower`, bytes,
    /// taken as signed, through `tolower`; a string that another one continues comes before it.
    int compareNoCase(const TString& other) const
    {
        return Detail::CompareNoCase(this->data(), this->size(), other.data(), other.size());
    }

    /// Replaces every occurrence of `what` by `with`, those that a replacement creates included (wide text
    /// only). Quirk: it never ends when `with` contains `what`, or when `what` is empty.
    template <class D = C, class = std::enable_if_t<std::is_same_v<D, wchar_t>>>
    void Replace(const TString& what, const TString& with)
    {
        Detail::Replace(*this, what, with);
    }
};

/// The empty instance of bytes.
template <>
TOOLKIT_API const TString<char>& TString<char>::Empty();
/// The empty instance of wide text.
template <>
TOOLKIT_API const TString<wchar_t>& TString<wchar_t>::Empty();

} // namespace Toolkit

namespace std
{

/// Keys of unordered containers; equal to the hash of the standard string with the same elements.
template <class C>
struct hash<Toolkit::TString<C>>
{
    /// The hash of the text.
    size_t operator()(const Toolkit::TString<C>& text) const noexcept
    {
        return hash<basic_string<C>>()(text);
    }
};

} // namespace std

#endif
