// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_FORWARDREPLACEMENT_H
#define TOOLKIT_INTERNAL_REGEX_FORWARDREPLACEMENT_H

#include <cstddef>
#include <memory>

#include "toolkit/core/TString.h"

namespace Toolkit
{

struct RegExpCode;
struct RegExpWorkspace;

// Rewrites a text in one pass, for a pattern whose reach RegExpBackend knows: what is written is looked at
// once, to know that nothing in it matches, and the rest of the input never moves. Where something that was
// written might match, GlobalReplacement has to go on. The result is the same. Used by one RegExp::Replace,
// on its thread, which owns the code.
class ForwardReplacement
{
public:
    // `options` are PCRE's for each search.
    ForwardReplacement(const RegExpCode* code, std::size_t reach, int options, const TString<char>& input,
                       const TString<char>& replacement);

    // Replaces what the first search found in the input and goes on as far as it can. Returns the result of
    // the last search; one above 0 means that the run has not ended.
    int Run(int* offsets, int vectorSize);

    // The text as far as it is rewritten, with its rest.
    TString<char> GetText() const;
    // Where the next search begins.
    std::size_t GetStart() const;

private:
    void Write(std::size_t begin, std::size_t end);
    bool LookAtWritten(int* offsets, int vectorSize);
    std::size_t GetOpenBegin() const;
    std::size_t GetSeenBegin(std::size_t place) const;

    const RegExpCode* const m_pCode;
    const std::unique_ptr<RegExpWorkspace, void (*)(RegExpWorkspace*)> m_pWorkspace;
    const std::size_t m_uReach;
    const int m_iOptions;
    const TString<char> m_strReplacement;
    // The rest of it begins at `m_uInput`; a search finds the end of what was written before that.
    TString<char> m_strInput;
    std::size_t m_uInput;
    TString<char> m_strWritten;
    // Of what was written after the 65,536th byte was: no match begins before that, whatever will follow.
    std::size_t m_uFruitless = 0;
};

} // namespace Toolkit

#endif
