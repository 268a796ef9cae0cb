// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_GLOBALREPLACEMENT_H
#define TOOLKIT_INTERNAL_REGEX_GLOBALREPLACEMENT_H

#include <cstddef>
#include <memory>

#include "toolkit/core/TString.h"
#include "toolkit/internal/regex/GapBuffer.h"

namespace Toolkit
{

struct RegExpCode;
struct RegExpHints;

// Rewrites a text match by match: each search runs on the text as it is by then and begins behind the last
// replacement, modulo 65,536. The result is that of searching the whole text each time, but PCRE gets no more
// of it than can decide the search, only what has changed is checked to be UTF-8, and places that were
// searched in vain are not searched again, so that a match costs its own bytes and not the whole text. Used
// by one RegExp::Replace, on its thread, which owns the code.
class GlobalReplacement
{
public:
    // `options` are PCRE's for each search.
    GlobalReplacement(const RegExpCode* code, const TString<char>& pattern, int options,
                      const TString<char>& input, const TString<char>& replacement);

    // Replaces what the last search found, or the first one, which the caller made on the input: the bytes
    // between the two offsets, and everything from the first on if the second is before it.
    // Throws what the next search on the whole text would throw before it begins, and when the run never
    // ends.
    void Replace(const int* offsets);

    // Searches on; the result is PCRE's.
    int Search(int* offsets, int vectorSize);

    TString<char> GetText() const { return m_text.GetText(); }

private:
    int Execute(std::size_t end, int options, int* offsets, int vectorSize);
    std::size_t FindContext() const;
    std::size_t CharacterBegin(std::size_t index) const;
    std::size_t CharacterEnd(std::size_t index) const;
    bool IsInsideCharacter(std::size_t index) const;
    bool StaysUtf8(std::size_t begin, std::size_t end) const;
    void ForgetVain(std::size_t changed);
    void ExtendVain(std::size_t start, std::size_t bound);
    bool IsInVain(std::size_t start) const { return start >= m_uVainBegin && start <= m_uVainEnd; }
    void StopIfEndless();

    const RegExpCode* const m_pCode;
    const std::unique_ptr<RegExpHints, void (*)(RegExpHints*)> m_pHints;
    const int m_iOptions;
    GapBuffer m_text;
    const TString<char> m_strReplacement;
    const bool m_bReplacementIsUtf8;
    const std::size_t m_uReach;
    const bool m_bMayBeginLater;
    // Where the next search begins as far as its result goes; the text's position is where it really begins.
    std::size_t m_uStart = 0;
    // Where the bytes begin that the last search was given.
    std::size_t m_uWindowBegin = 0;

    // No match begins from the first up to the second, whatever becomes of the text from the third on.
    std::size_t m_uVainBegin = 0;
    std::size_t m_uVainEnd = 0;
    std::size_t m_uVainBound = 0;

    // Of the replacements that left no less to search than an earlier one: their number, and the text and
    // start after one of them.
    const std::size_t m_uMostLength;
    std::size_t m_uLeastRest;
    std::size_t m_uReturns = 0;
    std::size_t m_uNextRemembered = 1;
    TString<char> m_strRemembered;
    std::size_t m_uRememberedStart = 0;
};

} // namespace Toolkit

#endif
