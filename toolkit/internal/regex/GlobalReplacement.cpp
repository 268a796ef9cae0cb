// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/GlobalReplacement.h"

#include <algorithm>
#include <climits>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/regex/RegExpBackend.h"
#include "toolkit/internal/regex/RegExpFailure.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uStarts = 65536;
// A text that outgrows every run without replaced replacements may still do so for that many of them: a start
// that goes round a few times can yet end the run in an exception of PCRE's.
const std::size_t s_uMostReturns = 1024;
const int s_iPartialOffsets = 60;

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

bool IsUtf8(TString<char> text)
{
    // The conversion would end at a zero.
    std::replace(text.begin(), text.end(), '\0', ' ');
    return text.empty() || !UTF8::ToUNICODE(text).empty();
}

} // namespace

GlobalReplacement::GlobalReplacement(const RegExpCode* code, const TString<char>& pattern, int options,
                                     const TString<char>& input, const TString<char>& replacement)
    : m_pCode(code),
      m_pHints(RegExpBackend::Study(code, pattern), RegExpBackend::FreeHints),
      m_iOptions(options | RegExpBackend::s_iCheckedOption),
      m_text(input),
      m_strReplacement(replacement),
      m_bReplacementIsUtf8(IsUtf8(replacement)),
      m_uReach(RegExpBackend::GetReach(code, pattern)),
      m_bMayBeginLater(RegExpBackend::MayBeginLater(code, pattern)),
      m_uMostLength((input.size() + 1) * (replacement.size() + 1)),
      m_uLeastRest(input.size())
{
}

void GlobalReplacement::Replace(const int* offsets)
{
    const std::size_t begin = m_uWindowBegin + static_cast<std::size_t>(offsets[0]);
    const std::size_t end =
        offsets[1] < offsets[0] ? m_text.GetLength() : m_uWindowBegin + static_cast<std::size_t>(offsets[1]);
    const std::size_t behind = begin + m_strReplacement.size();
    m_uStart = behind % s_uStarts;

    const bool staysUtf8 = StaysUtf8(begin, end);
    ForgetVain(begin);
    if (behind != m_uStart)
        ExtendVain(m_uStart, CharacterBegin(begin));
    m_text.Replace(begin, end, m_strReplacement);

    if (m_text.GetLength() > INT_MAX)
        RegExpFailure::ThrowExecution(RegExpBackend::s_iBadLength);
    if (!staysUtf8)
        RegExpFailure::ThrowExecution(RegExpBackend::s_iBadUtf8);
    if (IsInsideCharacter(m_uStart))
        RegExpFailure::ThrowExecution(RegExpBackend::s_iBadUtf8Offset);
    StopIfEndless();
}

int GlobalReplacement::Search(int* offsets, int vectorSize)
{
    m_text.MoveTo(IsInVain(m_uStart) ? m_uVainEnd : m_uStart);
    return Execute(m_text.GetLength(), m_iOptions, offsets, vectorSize);
}

// Searches from the text's position up to `end`.
int GlobalReplacement::Execute(std::size_t end, int options, int* offsets, int vectorSize)
{
    const std::size_t context = FindContext();
    m_uWindowBegin = m_text.GetPosition() - context;
    return RegExpBackend::Execute(m_pCode, m_text.GetWindow(context), end - m_uWindowBegin, context, options,
                                  offsets, vectorSize, m_pHints.get());
}

std::size_t GlobalReplacement::FindContext() const
{
    const std::size_t longestCharacter = 4;
    const std::size_t position = m_text.GetPosition();
    if (m_uReach >= position / longestCharacter)
        return position;
    return position - CharacterBegin(position - longestCharacter * m_uReach);
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
    return index < m_text.GetLength() && IsContinuation(m_text.At(index));
}

// The text was UTF-8 until now, so only the characters around the replacement can break.
bool GlobalReplacement::StaysUtf8(std::size_t begin, std::size_t end) const
{
    if (m_bReplacementIsUtf8 && !IsInsideCharacter(begin) && !IsInsideCharacter(end))
        return true;
    TString<char> changed = m_text.GetText(CharacterBegin(begin), begin);
    changed += m_strReplacement;
    changed += m_text.GetText(end, CharacterEnd(end));
    return IsUtf8(changed);
}

void GlobalReplacement::ForgetVain(std::size_t changed)
{
    if (changed < m_uVainBound)
        m_uVainBegin = m_uVainEnd = m_uVainBound = 0;
}

// A search that goes back to `start` will pass over the text up to `bound` again. An attempt that fails there
// without a look at what is behind it will always fail.
void GlobalReplacement::ExtendVain(std::size_t start, std::size_t bound)
{
    if (!m_bMayBeginLater)
        return;
    if (!IsInVain(start))
        m_uVainBegin = m_uVainEnd = m_uVainBound = start;
    if (bound <= m_uVainEnd)
        return;
    m_text.MoveTo(m_uVainEnd);
    int offsets[s_iPartialOffsets];
    const int result =
        Execute(bound, m_iOptions | RegExpBackend::s_iPartialOption, offsets, s_iPartialOffsets);
    std::size_t end = m_uVainEnd;
    if (result == RegExpBackend::s_iNoMatch)
        end = bound;
    else if (result == RegExpBackend::s_iPartial)
        end = CharacterBegin(m_uWindowBegin + static_cast<std::size_t>(std::min(offsets[0], offsets[2])));
    if (end > m_uVainEnd)
    {
        m_uVainEnd = end;
        m_uVainBound = bound;
    }
}

// A run ends as long as each replacement leaves less to search. One that leaves more must neither come back
// to a text and start it had before, which repeats for ever, nor outgrow the longest text that can arise when
// no replacement is ever replaced.
void GlobalReplacement::StopIfEndless()
{
    const std::size_t rest = m_text.GetLength() - m_uStart;
    if (rest < m_uLeastRest)
    {
        m_uLeastRest = rest;
        return;
    }
    const bool repeats = m_uReturns > 0 && m_uStart == m_uRememberedStart && m_text.Equals(m_strRemembered);
    const bool outgrows = m_uReturns > s_uMostReturns && m_text.GetLength() > m_uMostLength;
    if (repeats || outgrows)
        RegExpFailure::ThrowExecution(RegExpBackend::s_iMatchLimit);
    if (++m_uReturns == m_uNextRemembered)
    {
        m_uNextRemembered *= 2;
        m_strRemembered = m_text.GetText();
        m_uRememberedStart = m_uStart;
    }
}

} // namespace Toolkit
