// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/LiteralEscapes.h"

namespace Toolkit
{

namespace
{

// PCRE2's numbers: an escape without a meaning, one without a meaning in a class, a range that begins or ends
// with a class, and an escape of Perl's that is not supported.
const int s_iUnknownEscape = 103;
const int s_iEscapeInClass = 107;
const int s_iRangeOfClass = 150;
const int s_iUnsupportedEscape = 137;

// Each place costs another compilation.
const std::size_t s_uMostChanges = 500;

} // namespace

bool LiteralEscapes::TakeLiterally(int number, std::size_t offset)
{
    if (m_changes.size() >= s_uMostChanges || offset > m_strText.size())
        return false;
    switch (number)
    {
    case s_iUnknownEscape:
    case s_iEscapeInClass:
        return offset >= 1 && RemoveBackslash(offset - 1);
    case s_iUnsupportedEscape:
        return offset >= 2 && m_strText[offset - 1] == 'F' && RemoveBackslash(offset - 2);
    case s_iRangeOfClass:
        // Newer versions of PCRE2 stop after the hyphen.
        return EscapeHyphen(offset) || (offset >= 1 && EscapeHyphen(offset - 1));
    default:
        return false;
    }
}

std::size_t LiteralEscapes::GetOffset(std::size_t offset) const
{
    for (std::size_t i = m_changes.size(); i > 0; --i)
        if (m_changes[i - 1].place < offset)
            m_changes[i - 1].isInserted ? --offset : ++offset;
    return offset;
}

bool LiteralEscapes::RemoveBackslash(std::size_t place)
{
    if (m_strText[place] != '\\')
        return false;
    m_strText.erase(place, 1);
    m_changes.push_back({place, false});
    return true;
}

bool LiteralEscapes::EscapeHyphen(std::size_t place)
{
    if (place >= m_strText.size() || m_strText[place] != '-')
        return false;
    m_strText.insert(place, 1, '\\');
    m_changes.push_back({place, true});
    return true;
}

} // namespace Toolkit
