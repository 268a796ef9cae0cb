// SPDX-License-Identifier: MIT
#include "toolkit/threading/Event.h"

#include <cerrno>
#include <csignal>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using Toolkit::Event;
using namespace std::chrono_literals;

namespace
{

Event* s_pSignalled = nullptr;

void SetTheEvent(int)
{
    s_pSignalled->Set();
}

} // namespace

TEST(Event, StaysSetUntilItIsReset)
{
    Event event;
    EXPECT_FALSE(event.IsSet());
    EXPECT_FALSE(event.WaitFor(0s));
    event.Set();
    EXPECT_TRUE(event.IsSet());
    EXPECT_TRUE(event.WaitFor(0s));
    EXPECT_TRUE(event.WaitFor(-1s));
    event.Wait();
    event.Reset();
    EXPECT_FALSE(event.WaitFor(-1s));
}

TEST(Event, WaitsForTheTimeGiven)
{
    const Event event;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.WaitFor(20ms));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
    EXPECT_FALSE(event.WaitFor(std::chrono::nanoseconds::min()));
}

TEST(Event, WakesEveryWaiterAndShowsWhatWasDoneBefore)
{
    for (int round = 0; round < 200; ++round)
    {
        Event event;
        int written = 0;
        std::vector<std::thread> waiters;
        for (int i = 0; i < 4; ++i)
            waiters.emplace_back(
                [&event, &written, i]
                {
                    if (i % 2 == 0)
                        event.Wait();
                    else
                        EXPECT_TRUE(event.WaitFor(std::chrono::nanoseconds::max()));
                    EXPECT_EQ(7, written);
                });
        written = 7;
        event.Set();
        for (std::thread& waiter : waiters)
            waiter.join();
    }
}

TEST(Event, ThreadsThatWakeEachOtherLoseNoWakeUp)
{
    const int rounds = 2000;
    Event call;
    Event answer;
    int calls = 0;
    std::thread other(
        [&]
        {
            for (int i = 0; i < rounds; ++i)
            {
                call.Wait();
                call.Reset();
                ++calls;
                answer.Set();
            }
        });
    for (int i = 0; i < rounds; ++i)
    {
        call.Set();
        EXPECT_TRUE(answer.WaitFor(10min));
        answer.Reset();
        EXPECT_EQ(i + 1, calls);
    }
    other.join();
}

TEST(Event, WhoWaitsOnIsWokenAfterAResetAndAfterOthersGaveUp)
{
    for (int round = 0; round < 200; ++round)
    {
        Event event;
        std::thread waiter([&event] { event.Wait(); });
        std::thread resetter([&event] { event.Reset(); });
        EXPECT_FALSE(event.WaitFor(1us));
        resetter.join();
        event.Set();
        waiter.join();
        EXPECT_TRUE(event.IsSet());
        event.Reset();
        EXPECT_FALSE(event.IsSet());
    }
}

TEST(Event, IsSetBySignalHandlers)
{
    Event event;
    s_pSignalled = &event;
    const auto before = std::signal(SIGUSR1, SetTheEvent);
    std::thread waiter([&event] { event.Wait(); });
    errno = 77;
    std::raise(SIGUSR1);
    EXPECT_EQ(77, errno);
    waiter.join();
    event.Reset();
    // The waiter itself is interrupted.
    std::thread interrupted([&event] { EXPECT_TRUE(event.WaitFor(10min)); });
    pthread_kill(interrupted.native_handle(), SIGUSR1);
    interrupted.join();
    std::signal(SIGUSR1, before);
}
