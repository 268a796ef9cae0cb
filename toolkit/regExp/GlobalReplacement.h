#ifndef TOOLKIT_REGEXP_GLOBALREPLACEMENT_H
#define TOOLKIT_REGEXP_GLOBALREPLACEMENT_H

#include <cstddef>

#include "toolkit/core/TString.h"
#include "toolkit/regExp/GapText.h"

namespace Toolkit
{

// Rewrites a text match by match: each search runs on the text as it is by then and begins behind the last
// replacement, modulo 65,536. It hands PCRE no more of the text than can decide the search, and of the text's
// UTF-8 it checks what has changed, so that a match costs its own bytes and not the whole text.
// Used by one RegExp::Replace, on its thread.
class GlobalReplacement
{
public:
    // `reach` is how many characters before its start a search can look at.
    GlobalReplacement(const TString<char>& input, const TString<char>& replacement, std::size_t reach);

    // What PCRE has to search next, in one piece until the next Replace.
    const char* GetWindow() { return m_text.GetWindow(m_uContext); }
    std::size_t GetWindowLength() const { return m_uContext + m_text.GetRest(); }
    std::size_t GetStart() const { return m_uContext; }

    // Replaces the bytes of the window between the two, and everything from `start` on if `end` is before it.
    // Throws what the next search on the whole text would throw before it begins, and when none of them would
    // be the last.
    void Replace(int start, int end);

    TString<char> GetText() const { return m_text.GetText(); }

private:
    std::size_t FindContext() const;
    std::size_t CharacterBegin(std::size_t index) const;
    std::size_t CharacterEnd(std::size_t index) const;
    bool IsInsideCharacter(std::size_t index) const;
    bool StaysUtf8(std::size_t begin, std::size_t end) const;
    void StopIfEndless();

    GapText m_text;
    const TString<char> m_strReplacement;
    const std::size_t m_uReach;
    const bool m_bReplacementIsUtf8;
    const std::size_t m_uMostLength;
    std::size_t m_uContext = 0;

    // Of the replacements that left no less to search than an earlier one: their number, and the text and
    // position after one of them.
    std::size_t m_uLeastRest;
    std::size_t m_uReturns = 0;
    std::size_t m_uNextRemembered = 1;
    TString<char> m_strRemembered;
    std::size_t m_uRememberedPosition = 0;
};

} // namespace Toolkit

#endif
