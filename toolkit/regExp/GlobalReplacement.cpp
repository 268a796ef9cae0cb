#include "toolkit/regExp/GlobalReplacement.h"

#include <algorithm>
#include <climits>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/regExp/RegExpBackend.h"
#include "toolkit/regExp/RegExpFailure.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uStarts = 65536;

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

GlobalReplacement::GlobalReplacement(const TString<char>& input, const TString<char>& replacement,
                                     std::size_t reach)
    : m_text(input),
      m_strReplacement(replacement),
      m_uReach(reach),
      m_bReplacementIsUtf8(IsUtf8(replacement)),
      m_uMostLength((input.size() + 1) * (replacement.size() + 1)),
      m_uLeastRest(input.size())
{
}

void GlobalReplacement::Replace(int start, int end)
{
    const std::size_t windowBegin = m_text.GetPosition() - m_uContext;
    const std::size_t matchBegin = windowBegin + static_cast<std::size_t>(start);
    const std::size_t matchEnd =
        end < start ? m_text.GetLength() : windowBegin + static_cast<std::size_t>(end);

    const bool staysUtf8 = StaysUtf8(matchBegin, matchEnd);
    m_text.Replace(matchBegin, matchEnd, m_strReplacement);
    m_text.MoveTo(m_text.GetPosition() % s_uStarts);
    m_uContext = FindContext();

    if (m_text.GetLength() > INT_MAX)
        RegExpFailure::ThrowExecution(RegExpBackend::s_iBadLength);
    if (!staysUtf8)
        RegExpFailure::ThrowExecution(RegExpBackend::s_iBadUtf8);
    if (IsInsideCharacter(m_text.GetPosition()))
        RegExpFailure::ThrowExecution(RegExpBackend::s_iBadUtf8Offset);
    StopIfEndless();
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

// A run ends as long as each replacement leaves less to search. One that leaves more must neither come back
// to a text and position it had before, which repeats for ever, nor outgrow the longest text that can arise
// when no replacement is ever replaced.
void GlobalReplacement::StopIfEndless()
{
    if (m_text.GetRest() < m_uLeastRest)
    {
        m_uLeastRest = m_text.GetRest();
        return;
    }
    const bool repeats =
        m_uReturns > 0 && m_text.GetPosition() == m_uRememberedPosition && m_text.Equals(m_strRemembered);
    if (repeats || m_text.GetLength() > m_uMostLength)
        RegExpFailure::ThrowExecution(RegExpBackend::s_iMatchLimit);
    if (++m_uReturns == m_uNextRemembered)
    {
        m_uNextRemembered *= 2;
        m_strRemembered = m_text.GetText();
        m_uRememberedPosition = m_text.GetPosition();
    }
}

} // namespace Toolkit
