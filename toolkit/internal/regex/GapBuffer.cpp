// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/GapBuffer.h"

#include <algorithm>
#include <cstring>

namespace Toolkit
{

namespace
{

const std::size_t s_uFirstGap = 256;

void Move(char* to, const char* from, std::size_t count)
{
    if (count != 0)
        std::memmove(to, from, count);
}

} // namespace

GapBuffer::GapBuffer(const TString<char>& text) : m_memory(s_uFirstGap + text.size()), m_uRest(s_uFirstGap)
{
    Move(m_memory.data() + m_uRest, text.data(), text.size());
}

TString<char> GapBuffer::GetText(std::size_t begin, std::size_t end) const
{
    TString<char> text;
    text.reserve(end - begin);
    if (begin < m_uBefore)
        text.append(m_memory.data() + begin, std::min(end, m_uBefore) - begin);
    const std::size_t behind = std::max(begin, m_uBefore);
    if (behind < end)
        text.append(m_memory.data() + behind + GetGap(), end - behind);
    return text;
}

bool GapBuffer::Equals(const TString<char>& text) const
{
    return text.size() == GetLength() && text.compare(0, m_uBefore, m_memory.data(), m_uBefore) == 0 &&
           text.compare(m_uBefore, text.npos, m_memory.data() + m_uRest, GetRest()) == 0;
}

const char* GapBuffer::GetWindow(std::size_t context)
{
    if (GetGap() != 0)
    {
        WidenGap(context);
        Move(m_memory.data() + m_uRest - context, m_memory.data() + m_uBefore - context, context);
    }
    return m_memory.data() + m_uRest - context;
}

void GapBuffer::MoveTo(std::size_t position)
{
    if (position > m_uBefore)
    {
        const std::size_t count = position - m_uBefore;
        Move(m_memory.data() + m_uBefore, m_memory.data() + m_uRest, count);
        m_uRest += count;
    }
    else
    {
        const std::size_t count = m_uBefore - position;
        m_uRest -= count;
        Move(m_memory.data() + m_uRest, m_memory.data() + position, count);
    }
    m_uBefore = position;
}

void GapBuffer::Replace(std::size_t begin, std::size_t end, const TString<char>& with)
{
    MoveTo(begin);
    m_uRest += end - begin;
    WidenGap(with.size());
    Move(m_memory.data() + m_uBefore, with.data(), with.size());
    m_uBefore += with.size();
}

void GapBuffer::WidenGap(std::size_t least)
{
    if (GetGap() >= least)
        return;
    const std::size_t rest = GetRest();
    std::vector<char> wider(2 * m_memory.size() + least);
    Move(wider.data(), m_memory.data(), m_uBefore);
    Move(wider.data() + wider.size() - rest, m_memory.data() + m_uRest, rest);
    m_uRest = wider.size() - rest;
    m_memory.swap(wider);
}

} // namespace Toolkit
