// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_INI_INIDOCUMENT_H
#define TOOLKIT_INTERNAL_INI_INIDOCUMENT_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Toolkit
{

// The text of a settings file, line by line as it was read, with tables of what it says. A change touches the
// lines that it must and no other. Of a key that occurs several times in its section the first one counts.
// Texts are UTF-8. It has no lock; without memory it stays as it was.
class IniDocument
{
public:
    explicit IniDocument(std::string text);
    ~IniDocument();

    IniDocument(const IniDocument&) = delete;
    IniDocument& operator=(const IniDocument&) = delete;

    // The value, until the next change.
    std::optional<std::string_view> Find(std::string_view section, std::string_view key) const;

    // In the order of the file.
    std::vector<std::string> Sections() const;
    std::vector<std::string> Keys(std::string_view section) const;

    // Gives a key this value. A key that is there keeps its line and its spacing, a new one comes after the
    // last of its section, a new section at the end. False, and nothing is changed, when it would not be read
    // back equal.
    bool Set(std::string_view section, std::string_view key, std::string_view value);
    // Takes the key out, as often as it occurs; false when it does not.
    bool Remove(std::string_view section, std::string_view key);

    std::string ToText() const;

private:
    struct State;
    struct SectionKeys;
    struct Entry;

    bool Replace(Entry& entry, std::string_view key, std::string_view value);
    bool Append(std::string_view section, std::string_view key, std::string_view value);
    bool AppendSection(std::string_view section, std::string_view key, std::string_view value);
    void TidyUp();

    std::unique_ptr<State> m_pState;
};

} // namespace Toolkit

#endif
