// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_GLOBALREPLACEMENT_H
#define TOOLKIT_INTERNAL_REGEX_GLOBALREPLACEMENT_H

#include <cstddef>
#include <memory>

#include "toolkit/core/TString.h"

namespace Toolkit
{

struct RegExpCode;
struct RegExpWorkspace;

// Rewrites a text match by match: each search runs on the whole text as it is by then and begins after the
// last replacement, modulo 65,536. Only what a replacement has changed is checked to be UTF-8. Used by one
// RegExp::Replace, on its thread, which owns the code.
class GlobalReplacement
{
public:
    // A search begins at its place modulo this.
    static const std::size_t s_uStarts;

    // `options` are PCRE's for each search.
    GlobalReplacement(const RegExpCode* code, int options, const TString<char>& input,
                      const TString<char>& replacement);

    // Replaces what the first search found, which the caller made on the input, and whatever is found after
    // that: the bytes between the first two offsets, and everything from the first on if the second is before
    // it. Returns PCRE's result of the last search, or the error with which a search on the whole text fails
    // before it begins, or the match limit's when the run never ends.
    [[nodiscard]] int Run(const TString<char>& pattern, int* offsets, int vectorSize);

    const TString<char>& GetText() const { return m_strText; }

private:
    int RunForward(std::size_t reach, int* offsets, int vectorSize);
    int Replace(const int* offsets);
    int Search(int* offsets, int vectorSize);
    std::size_t CharacterBegin(std::size_t index) const;
    std::size_t CharacterEnd(std::size_t index) const;
    bool IsInsideCharacter(std::size_t index) const;
    bool StaysUtf8(std::size_t begin, std::size_t end) const;
    bool NeverEnds();

    const RegExpCode* const m_pCode;
    const std::unique_ptr<RegExpWorkspace, void (*)(RegExpWorkspace*)> m_pWorkspace;
    const int m_iOptions;
    TString<char> m_strText;
    const TString<char> m_strReplacement;
    const bool m_bReplacementIsUtf8;
    // Where the next search begins.
    std::size_t m_uStart = 0;

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
