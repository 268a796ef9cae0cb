// SPDX-License-Identifier: MIT
#include "toolkit/app/GetTickCount.h"

#include <algorithm>
#include <chrono>

#include <gtest/gtest.h>
#include <sys/times.h>
#include <unistd.h>

using Toolkit::GetTickCount;

namespace
{

unsigned int MillisecondsPerTick()
{
    return 1000U / static_cast<unsigned int>(sysconf(_SC_CLK_TCK));
}

unsigned int SystemTicks()
{
    tms unused;
    return static_cast<unsigned int>(times(&unused));
}

} // namespace

TEST(GetTickCount, IsTheSystemsClockInMillisecondsModuloTwoToThe32)
{
    const unsigned int before = SystemTicks() * MillisecondsPerTick();
    const unsigned int now = GetTickCount();
    const unsigned int after = SystemTicks() * MillisecondsPerTick();
    EXPECT_LE(now - before, after - before);
    EXPECT_EQ((now - before) % MillisecondsPerTick(), 0U);
}

TEST(GetTickCount, GrowsInStepsOfWholeTicks)
{
    unsigned int last = GetTickCount();
    for (int changes = 0; changes < 5;)
    {
        const unsigned int now = GetTickCount();
        ASSERT_LT(now - last, 60000U) << "it went back";
        ASSERT_EQ((now - last) % MillisecondsPerTick(), 0U);
        changes += now != last ? 1 : 0;
        last = now;
    }
}

TEST(GetTickCountTiming, KeepsPaceWithTheClock)
{
    const auto clockStart = std::chrono::steady_clock::now();
    const unsigned int start = GetTickCount();
    usleep(200 * 1000);
    const unsigned int passed = GetTickCount() - start;
    const auto clock =
        std::chrono::ceil<std::chrono::milliseconds>(std::chrono::steady_clock::now() - clockStart);
    EXPECT_GE(passed, 200U - MillisecondsPerTick());
    EXPECT_LE(passed, static_cast<unsigned int>(clock.count()) + MillisecondsPerTick());
}
