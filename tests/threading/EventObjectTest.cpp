// SPDX-License-Identifier: MIT
#include "toolkit/threading/EventObject.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/WaitUntil.h"

using Toolkit::EventObject;
using Toolkit::Mutex;
using ToolkitTest::WaitUntil;

namespace
{

using Clock = std::chrono::steady_clock;

class EventObjectTiming : public testing::TestWithParam<unsigned int>
{
};

long long MillisecondsSince(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

} // namespace

TEST(EventObject, PollsEvery200Milliseconds)
{
    EXPECT_EQ(200U, EventObject::s_uMinSlice);
}

TEST(EventObject, StartsAsItIsTold)
{
    EXPECT_TRUE(EventObject(false, true).Wait(0));
    EXPECT_FALSE(EventObject(false, false).Wait(0));
    EXPECT_TRUE(EventObject(true, true).Wait(0));
    EXPECT_FALSE(EventObject(true, false).Wait(0));
}

TEST(EventObject, ManualResetStaysSignalled)
{
    EventObject event(false, false);
    event.Signal();
    EXPECT_TRUE(event.Wait(0));
    EXPECT_TRUE(event.Wait(0));
    event.Reset();
    EXPECT_FALSE(event.Wait(0));
}

TEST(EventObject, AutomaticResetIsConsumedByOneWait)
{
    EventObject event(true, false);
    event.Signal();
    EXPECT_TRUE(event.Wait(0));
    EXPECT_FALSE(event.Wait(0));
}

TEST(EventObject, SignalsDoNotAddUp)
{
    EventObject event(true, true);
    event.Signal();
    event.Signal();
    EXPECT_TRUE(event.Wait(0));
    EXPECT_FALSE(event.Wait(0));
}

TEST(EventObject, SignalWithoutAWaiterStaysUntilReset)
{
    EventObject event(true, false);
    event.Signal();
    event.Reset();
    EXPECT_FALSE(event.Wait(0));
    event.Reset();
    EXPECT_FALSE(event.Wait(0));
}

TEST(EventObject, WaitTakesASignalledEventWithoutALimit)
{
    EventObject event(false, true);
    EXPECT_TRUE(event.Wait(Mutex::s_uInfinite));
}

TEST(EventObject, WaitWithoutALimitEndsWithTheSignal)
{
    EventObject event(false, false);
    std::atomic<bool> done{false};
    std::thread waiter(
        [&]
        {
            event.Wait(Mutex::s_uInfinite);
            done = true;
        });
    EXPECT_FALSE(done);
    event.Signal();
    waiter.join();
    EXPECT_TRUE(done);
}

TEST(EventObject, AutomaticResetWakesOneWaiterForEachSignal)
{
    EventObject event(true, false);
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i)
        waiters.emplace_back([&] { woken += event.Wait(900) ? 1 : 0; });
    event.Signal();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(1, woken);
}

TEST(EventObject, ManualResetWakesEveryWaiter)
{
    EventObject event(false, false);
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i)
        waiters.emplace_back([&] { woken += event.Wait(60000) ? 1 : 0; });
    event.Signal();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(3, woken);
}

TEST(EventObject, LooksOnceMoreWhenTheTimeIsOver)
{
    // Signalled during the only slice, which does not end early for it; a busy machine may signal before or
    // after it.
    bool seenAtTheEnd = false;
    for (int attempt = 0; attempt < 20 && !seenAtTheEnd; ++attempt)
    {
        EventObject event(false, false);
        std::atomic<bool> started{false};
        std::thread waiter(
            [&]
            {
                started = true;
                const Clock::time_point start = Clock::now();
                seenAtTheEnd = event.Wait(200) && MillisecondsSince(start) >= 200;
            });
        EXPECT_TRUE(WaitUntil([&] { return started.load(); }));
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        event.Signal();
        waiter.join();
    }
    EXPECT_TRUE(seenAtTheEnd);
}

TEST_P(EventObjectTiming, WaitLastsAsLongAsItsTimeout)
{
    EventObject event(true, false);
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(event.Wait(GetParam()));
    const long long took = MillisecondsSince(start);
    EXPECT_GE(took, GetParam());
    EXPECT_LT(took, GetParam() + 2000LL);
}

INSTANTIATE_TEST_SUITE_P(Timeouts, EventObjectTiming, testing::Values(0U, 1U, 200U, 201U, 450U));

TEST(EventObjectSignalTiming, WaiterSeesTheSignalAtItsNextLook)
{
    EventObject event(false, false);
    const Clock::time_point start = Clock::now();
    long long took = 0;
    std::thread waiter(
        [&]
        {
            event.Wait(10000);
            took = MillisecondsSince(start);
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    event.Signal();
    waiter.join();
    // Neither at once nor only when the time is over.
    EXPECT_GE(took, 50);
    EXPECT_LT(took, 5000);
}
