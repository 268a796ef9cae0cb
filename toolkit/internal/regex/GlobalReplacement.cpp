// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/GlobalReplacement.h"

#include <algorithm>
#include <climits>

#include "toolkit/internal/regex/ForwardReplacement.h"
#include "toolkit/internal/regex/RegExpBackend.h"
#include "toolkit/internal/regex/RegexPart.h"
#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/Utf8Scan.h"

namespace Toolkit
{

namespace
{

// In a shorter text the moves of the rest cost less than to ask about the pattern.
const std::size_t s_uLong = 4096;
// A text that outgrows every run without replaced replacements may still do so for that many of them: a start
// that goes round a few times can yet end the run in an exception of PCRE's.
const std::size_t s_uMostReturns = 1024;

bool IsUtf8(const TString<char>& text)
{
    return Utf8Scan::FindBroken(text) == text.npos;
}

} // namespace

const std::size_t GlobalReplacement::s_uStarts = 65536;

GlobalReplacement::GlobalReplacement(const RegExpCode* code, int options, const TString<char>& input,
                                     const TString<char>& replacement)
    : m_pCode(code),
      m_pWorkspace(LoadedRegex().newWorkspace(), LoadedRegex().freeWorkspace),
      m_iOptions(options | RegExpBackend::s_iCheckedOption),
      m_strText(input),
      m_strReplacement(replacement),
      m_bReplacementIsUtf8(IsUtf8(replacement)),
      m_uMostLength((input.size() + 1) * (replacement.size() + 1)),
      m_uLeastRest(input.size())
{
}

int GlobalReplacement::Run(const TString<char>& pattern, int* offsets, int vectorSize)
{
    int result = 1;
    if (m_strText.size() >= s_uLong && m_bReplacementIsUtf8)
        if (const std::optional<std::size_t> reach = LoadedRegex().findReach(pattern.c_str()))
            result = RunForward(*reach, offsets, vectorSize);
    while (result > 0)
    {
        const int failure = Replace(offsets);
        result = failure != 0 ? failure : Search(offsets, vectorSize);
    }
    return result;
}

// In one pass, as far as that goes.
int GlobalReplacement::RunForward(std::size_t reach, int* offsets, int vectorSize)
{
    ForwardReplacement pass(m_pCode, reach, m_iOptions, m_strText, m_strReplacement);
    const int result = pass.Run(offsets, vectorSize);
    m_strText = pass.GetText();
    m_uStart = pass.GetStart();
    return result > 0 ? Search(offsets, vectorSize) : result;
}

int GlobalReplacement::Replace(const int* offsets)
{
    const std::size_t begin = static_cast<std::size_t>(offsets[0]);
    const std::size_t end = offsets[1] < offsets[0] ? m_strText.size() : static_cast<std::size_t>(offsets[1]);
    m_uStart = (begin + m_strReplacement.size()) % s_uStarts;

    const bool staysUtf8 = StaysUtf8(begin, end);
    m_strText.replace(begin, end - begin, m_strReplacement);

    if (m_strText.size() > INT_MAX)
        return RegExpBackend::s_iBadLength;
    if (!staysUtf8)
        return RegExpBackend::s_iBadUtf8;
    if (IsInsideCharacter(m_uStart))
        return RegExpBackend::s_iBadUtf8Offset;
    return NeverEnds() ? RegExpBackend::s_iMatchLimit : 0;
}

int GlobalReplacement::Search(int* offsets, int vectorSize)
{
    return LoadedRegex().execute(m_pCode, m_strText.data(), m_strText.size(), m_uStart, m_iOptions, offsets,
                                 vectorSize, m_pWorkspace.get());
}

std::size_t GlobalReplacement::CharacterBegin(std::size_t index) const
{
    while (index > 0 && IsInsideCharacter(index))
        --index;
    return index;
}

std::size_t GlobalReplacement::CharacterEnd(std::size_t index) const
{
    while (IsInsideCharacter(index))
        ++index;
    return index;
}

bool GlobalReplacement::IsInsideCharacter(std::size_t index) const
{
    return index < m_strText.size() && CodePoints::IsContinuation(m_strText[index]);
}

// The text was UTF-8 until now, so only the characters around the replacement can break.
bool GlobalReplacement::StaysUtf8(std::size_t begin, std::size_t end) const
{
    if (m_bReplacementIsUtf8 && !IsInsideCharacter(begin) && !IsInsideCharacter(end))
        return true;
    const std::size_t from = CharacterBegin(begin);
    TString<char> changed = m_strText.substr(from, begin - from);
    changed += m_strReplacement;
    changed += m_strText.substr(end, CharacterEnd(end) - end);
    return IsUtf8(changed);
}

// A run ends as long as each replacement leaves less to search. One that leaves more must neither come back
// to a text and start it had before, which repeats for ever, nor outgrow the longest text that can arise when
// no replacement is ever replaced.
bool GlobalReplacement::NeverEnds()
{
    const std::size_t rest = m_strText.size() - m_uStart;
    if (rest < m_uLeastRest)
    {
        m_uLeastRest = rest;
        return false;
    }
    const bool repeats = m_uReturns > 0 && m_uStart == m_uRememberedStart && m_strText == m_strRemembered;
    const bool outgrows = m_uReturns > s_uMostReturns && m_strText.size() > m_uMostLength;
    if (repeats || outgrows)
        return true;
    if (++m_uReturns == m_uNextRemembered)
    {
        m_uNextRemembered *= 2;
        m_strRemembered = m_strText;
        m_uRememberedStart = m_uStart;
    }
    return false;
}

} // namespace Toolkit
