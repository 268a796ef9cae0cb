// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/ForwardReplacement.h"

#include <algorithm>
#include <climits>
#include <cstddef>

#include "toolkit/internal/regex/GlobalReplacement.h"
#include "toolkit/internal/regex/RegExpBackend.h"
#include "toolkit/internal/regex/RegexPart.h"
#include "toolkit/internal/text/CodePoints.h"

namespace Toolkit
{

namespace
{

// Before the input, for the end of a written text that is longer than what it replaces.
const std::size_t s_uRoom = 256;
const int s_iGoesOn = 1;

} // namespace

ForwardReplacement::ForwardReplacement(const RegExpCode* code, std::size_t reach, int options,
                                       const TString<char>& input, const TString<char>& replacement)
    : m_pCode(code),
      m_pWorkspace(LoadedRegex().newWorkspace(), LoadedRegex().freeWorkspace),
      m_uReach(reach),
      m_iOptions(options | RegExpBackend::s_iCheckedOption),
      m_strReplacement(replacement),
      m_uInput(s_uRoom)
{
    m_strInput.reserve(s_uRoom + input.size());
    m_strInput.assign(s_uRoom, ' ');
    m_strInput += input;
    m_strWritten.reserve(input.size());
}

int ForwardReplacement::Run(int* offsets, int vectorSize)
{
    std::size_t searched = m_uInput;
    int result = s_iGoesOn;
    while (result > 0)
    {
        const std::size_t begin = searched + static_cast<std::size_t>(offsets[0]);
        if (begin < m_uInput)
            return s_iGoesOn;
        Write(begin, searched + static_cast<std::size_t>(offsets[1]));
        if (m_strWritten.size() + m_strInput.size() - m_uInput > INT_MAX)
            return RegExpBackend::s_iBadLength;
        if (GetStart() < m_strWritten.size() && CodePoints::IsContinuation(m_strWritten[GetStart()]))
            return RegExpBackend::s_iBadUtf8Offset;
        if (!LookAtWritten(offsets, vectorSize))
            return s_iGoesOn;

        const std::size_t open = GetOpenBegin();
        const std::size_t seen = GetSeenBegin(open);
        if (m_strWritten.size() - seen > m_uInput)
            return s_iGoesOn;
        searched = m_uInput - (m_strWritten.size() - seen);
        std::copy(m_strWritten.begin() + static_cast<std::ptrdiff_t>(seen), m_strWritten.end(),
                  m_strInput.begin() + static_cast<std::ptrdiff_t>(searched));
        result = LoadedRegex().execute(m_pCode, m_strInput.data() + searched, m_strInput.size() - searched,
                                       open - seen, m_iOptions, offsets, vectorSize, m_pWorkspace.get());
    }
    // The other form searches less of what was written: it need not find the failure, or the match whose
    // groups are too many.
    const bool isFailure = result < RegExpBackend::s_iNoMatch;
    const bool isInWritten = result == 0 && searched + static_cast<std::size_t>(offsets[0]) < m_uInput;
    return isFailure || isInWritten ? s_iGoesOn : result;
}

TString<char> ForwardReplacement::GetText() const
{
    TString<char> text;
    text.reserve(m_strWritten.size() + m_strInput.size() - m_uInput);
    text = m_strWritten;
    text.append(m_strInput, m_uInput, m_strInput.npos);
    return text;
}

std::size_t ForwardReplacement::GetStart() const
{
    return m_strWritten.size() % GlobalReplacement::s_uStarts;
}

// Replaces the input's bytes between the two places.
void ForwardReplacement::Write(std::size_t begin, std::size_t end)
{
    m_strWritten.append(m_strInput, m_uInput, begin - m_uInput);
    m_strWritten += m_strReplacement;
    m_uInput = end;
}

// False when a match may begin in it. One that could only begin there with the help of what follows it is
// found by the search that sees both.
bool ForwardReplacement::LookAtWritten(int* offsets, int vectorSize)
{
    const std::size_t begin = GetOpenBegin();
    if (begin == m_strWritten.size())
        return true;
    const int result = LoadedRegex().execute(m_pCode, m_strWritten.data(), m_strWritten.size(), begin,
                                             m_iOptions | RegExpBackend::s_iPartialOption, offsets,
                                             vectorSize, m_pWorkspace.get());
    if (result == RegExpBackend::s_iNoMatch)
        m_uFruitless = m_strWritten.size();
    else if (result == RegExpBackend::s_iPartial)
        m_uFruitless = static_cast<std::size_t>(offsets[0]);
    return result == RegExpBackend::s_iNoMatch || result == RegExpBackend::s_iPartial;
}

// What was written is searched from there on: all of it is passed over until a search begins anew.
std::size_t ForwardReplacement::GetOpenBegin() const
{
    return m_strWritten.size() < GlobalReplacement::s_uStarts ? m_strWritten.size() : m_uFruitless;
}

// From there on an attempt at that place may look at what was written.
std::size_t ForwardReplacement::GetSeenBegin(std::size_t place) const
{
    for (std::size_t count = 0; count < m_uReach && place > 0; ++count)
        while (--place > 0 && CodePoints::IsContinuation(m_strWritten[place]))
            ;
    return place;
}

} // namespace Toolkit
