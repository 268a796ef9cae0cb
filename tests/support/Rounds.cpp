// SPDX-License-Identifier: MIT
#include "tests/support/Rounds.h"

#include <algorithm>
#include <iostream>

#include <gtest/gtest.h>

#include "tests/support/LoadOf.h"
#include "tests/support/Resources.h"

namespace ToolkitTest
{

namespace
{

// What is kept grows for some 25 rounds where the system is busy.
const std::size_t s_uMostExtraRounds = 60;
const std::size_t s_uLongRun = 32;
// Of that many rounds the use is kept, in memory that is taken before the first.
const std::size_t s_uMostUses = 100000;
// What a late leap of a cache may come to, in the later half of a long run.
const long long s_iHeapBound = 64 * 1024;
const long long s_iResidentBound = 16 * 1024 * 1024;

} // namespace

Rounds::Rounds(const char* what, const char* variable, unsigned long everyDay)
    : m_strWhat(what),
      m_uEveryDay(everyDay),
      m_uWanted(LoadOf(variable, everyDay)),
      m_end(Clock::now() + std::chrono::seconds(LoadOf("TOOLKIT_TEST_SECONDS", 0)))
{
    m_uses.reserve(s_uMostUses);
}

Rounds::~Rounds()
{
    std::cout << "  " << m_strWhat << ": " << m_uDone << " in " << m_uRounds << " rounds" << std::endl;
}

bool Rounds::GoOn()
{
    if (m_uRounds > 0)
        Judge();
    if (testing::Test::HasFailure())
        return false;
    ++m_uRounds;
    if (m_uDone < m_uWanted || Clock::now() < m_end)
        return true;
    if (!m_bLeftNothing && ++m_uExtraRounds <= s_uMostExtraRounds)
        return true;
    --m_uRounds;
    EXPECT_TRUE(m_bLeftNothing) << "each round left memory behind, from " << m_uses.front().m_iHeap << " to "
                                << m_uses.back().m_iHeap;
    CompareWithBefore();
    return false;
}

unsigned long Rounds::Size(unsigned long most) const
{
    const unsigned long left = m_uDone < m_uWanted ? m_uWanted - m_uDone : std::min(m_uEveryDay, m_uWanted);
    return std::min(most, left);
}

void Rounds::Judge()
{
    const Use use = {HeapInUse(), static_cast<long long>(ResidentBytes())};
    if (m_uses.empty())
        m_lDescriptors = OpenDescriptors();
    else
        m_bLeftNothing = m_bLeftNothing || use.m_iHeap <= m_uses.back().m_iHeap;
    EXPECT_EQ(m_lDescriptors, OpenDescriptors()) << m_strWhat << ", round " << m_uRounds;
    if (m_uses.size() < s_uMostUses)
        m_uses.push_back(use);
}

void Rounds::CompareWithBefore() const
{
    const std::size_t size = m_uses.size();
    if (size < s_uLongRun || HasSanitizersHeap())
        return;
    const auto growth = [&](long long Use::*what)
    { return Lowest(what, size / 2, size) - Lowest(what, size / 4, size / 2); };
    EXPECT_LE(growth(&Use::m_iHeap), s_iHeapBound) << m_strWhat;
    EXPECT_LE(growth(&Use::m_iResident), s_iResidentBound) << m_strWhat;
}

long long Rounds::Lowest(long long Use::*what, std::size_t begin, std::size_t end) const
{
    long long lowest = m_uses[begin].*what;
    for (std::size_t i = begin; i < end; ++i)
        lowest = std::min(lowest, m_uses[i].*what);
    return lowest;
}

} // namespace ToolkitTest
