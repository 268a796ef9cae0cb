// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_LITERALESCAPES_H
#define TOOLKIT_INTERNAL_REGEX_LITERALESCAPES_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Toolkit
{

// A pattern that PCRE 8 would take and PCRE2 refuses: PCRE 8 took an escape without a meaning ("\y", "[\R]")
// and a hyphen after a class ("[\w-.]") for the characters themselves. Where PCRE2 stopped tells the place,
// which is then written so that it means the same to PCRE2; the pattern is not looked at otherwise.
class LiteralEscapes
{
public:
    explicit LiteralEscapes(std::string pattern) : m_strText(std::move(pattern)) {}

    // The pattern as it is to be compiled.
    const std::string& GetText() const { return m_strText; }

    // True when the text was changed: the error of that number at that byte was such a place.
    bool TakeLiterally(int number, std::size_t offset);

    // The byte of the original pattern for a byte of the text.
    std::size_t GetOffset(std::size_t offset) const;

private:
    struct Change
    {
        std::size_t place;
        bool isInserted;
    };

    bool RemoveBackslash(std::size_t place);
    bool EscapeHyphen(std::size_t place);

    std::string m_strText;
    std::vector<Change> m_changes;
};

} // namespace Toolkit

#endif
