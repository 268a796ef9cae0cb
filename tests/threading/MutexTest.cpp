// SPDX-License-Identifier: MIT
#include "toolkit/threading/Mutex.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/threading/MutexLock.h"

using Toolkit::Mutex;
using Toolkit::MutexInternal;
using Toolkit::MutexLock;

namespace
{

using Clock = std::chrono::steady_clock;

template <class Work>
void OnAnotherThread(Work work)
{
    std::thread(work).join();
}

bool IsFree(MutexInternal& mutex)
{
    bool taken = false;
    OnAnotherThread(
        [&]
        {
            taken = mutex.Lock(0);
            if (taken)
                mutex.Unlock();
        });
    return taken;
}

long long MillisecondsSince(Clock::time_point start)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

// A timeout, and the least time that it takes.
class MutexTiming : public testing::TestWithParam<std::pair<unsigned int, long long>>
{
};

} // namespace

TEST(Mutex, WorksWithTheStandardsGuards)
{
    Mutex mutex;
    Mutex other;
    {
        const std::lock_guard<Mutex> guard(mutex);
        EXPECT_FALSE(IsFree(mutex));
        const std::unique_lock<Mutex> again(mutex, std::try_to_lock);
        EXPECT_TRUE(again.owns_lock());
    }
    EXPECT_TRUE(IsFree(mutex));
    {
        const std::scoped_lock<Mutex, Mutex> both(mutex, other);
        EXPECT_FALSE(IsFree(other));
    }
    EXPECT_TRUE(IsFree(mutex));
    EXPECT_TRUE(IsFree(other));
}

TEST(Mutex, TryOnceFailsWhereAnotherThreadHoldsIt)
{
    Mutex mutex;
    mutex.lock();
    bool taken = true;
    OnAnotherThread([&] { taken = mutex.try_lock(); });
    EXPECT_FALSE(taken);
    EXPECT_TRUE(mutex.try_lock());
    mutex.unlock();
    EXPECT_FALSE(IsFree(mutex));
    mutex.unlock();
    EXPECT_TRUE(IsFree(mutex));
}

TEST(Mutex, DerivesFromMutexInternal)
{
    EXPECT_TRUE((std::is_base_of_v<MutexInternal, Mutex>));
    EXPECT_TRUE(std::has_virtual_destructor_v<MutexInternal>);
    EXPECT_FALSE((std::is_convertible_v<bool, Mutex>));
    EXPECT_EQ(4294967295U, Mutex::s_uInfinite);
    EXPECT_EQ(4294967295U, MutexInternal::s_uInfinite);
}

TEST(Mutex, IsFreeByDefault)
{
    Mutex mutex;
    EXPECT_TRUE(IsFree(mutex));
    Mutex told(false);
    EXPECT_TRUE(IsFree(told));
}

TEST(Mutex, IsHeldAtOnceWhenAsked)
{
    Mutex mutex(true);
    EXPECT_FALSE(IsFree(mutex));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(IsFree(mutex));
}

TEST(Mutex, LocksAFreeMutexWithEveryTimeout)
{
    for (const unsigned int timeout : {0U, 1U, 25U, 4294967294U, 4294967295U})
    {
        MutexInternal mutex(false);
        EXPECT_TRUE(mutex.Lock(timeout));
        EXPECT_FALSE(IsFree(mutex));
        EXPECT_TRUE(mutex.Unlock());
        EXPECT_TRUE(IsFree(mutex));
    }
}

TEST(Mutex, IsLockedAgainByItsHolderAndUnlockedAsOften)
{
    Mutex mutex;
    EXPECT_TRUE(mutex.Lock(Mutex::s_uInfinite));
    EXPECT_TRUE(mutex.Lock(0));
    EXPECT_TRUE(mutex.Lock(Mutex::s_uInfinite));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(IsFree(mutex));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(IsFree(mutex));
}

TEST(Mutex, LetsOneThreadInAtATime)
{
    Mutex mutex;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < 5000; ++round)
                {
                    mutex.Lock(Mutex::s_uInfinite);
                    mutex.Lock(Mutex::s_uInfinite);
                    ++count;
                    mutex.Unlock();
                    mutex.Unlock();
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(20000, count);
}

TEST(Mutex, LockWithoutLimitWaitsForTheHolder)
{
    Mutex mutex(true);
    std::atomic<bool> taken{false};
    std::thread waiter(
        [&]
        {
            mutex.Lock(Mutex::s_uInfinite);
            taken = true;
            mutex.Unlock();
        });
    EXPECT_FALSE(taken);
    mutex.Unlock();
    waiter.join();
    EXPECT_TRUE(taken);
}

TEST(Mutex, LockWithALimitTakesWhatIsReleasedInTime)
{
    Mutex mutex(true);
    std::atomic<bool> trying{false};
    bool taken = false;
    std::thread waiter(
        [&]
        {
            trying = true;
            taken = mutex.Lock(60000);
            mutex.Unlock();
        });
    while (!trying)
        std::this_thread::yield();
    mutex.Unlock();
    waiter.join();
    EXPECT_TRUE(taken);
}

// ThreadSanitizer rightly reports these errors of a caller.
#if !defined(__SANITIZE_THREAD__)
TEST(Mutex, UnlockOfAFreeMutexAnswersFalse)
{
    Mutex mutex;
    EXPECT_FALSE(mutex.Unlock());
    EXPECT_TRUE(mutex.Lock(0));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(mutex.Unlock());
    EXPECT_TRUE(IsFree(mutex));
}

TEST(Mutex, UnlockByAStrangerAnswersFalseAndHarmsNothing)
{
    Mutex mutex(true);
    bool unlocked = true;
    OnAnotherThread([&] { unlocked = mutex.Unlock(); });
    EXPECT_FALSE(unlocked);
    EXPECT_FALSE(IsFree(mutex));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(mutex.Unlock());
    EXPECT_TRUE(IsFree(mutex));
}

TEST(Mutex, DestroyingAMutexThatTheCallerHoldsIsSilent)
{
    ToolkitTest::CapturedOutput errors(2);
    {
        Mutex once(true);
        MutexInternal nested(true);
        nested.Lock(0);
        nested.Lock(0);
        nested.Unlock();
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(Mutex, DestroyingAMutexThatAnotherThreadHeldIsSilent)
{
    ToolkitTest::CapturedOutput errors(2);
    {
        Mutex mutex;
        OnAnotherThread([&] { mutex.Lock(Mutex::s_uInfinite); });
    }
    EXPECT_EQ("", errors.Stop());
}
#endif

TEST(MutexLock, HoldsTheMutexForAScope)
{
    Mutex mutex;
    {
        const MutexLock lock(mutex);
        const MutexLock again(mutex);
        EXPECT_FALSE(IsFree(mutex));
    }
    EXPECT_TRUE(IsFree(mutex));
}

TEST(MutexLock, ReleasesWhenAnExceptionPasses)
{
    Mutex mutex;
    EXPECT_THROW(
        {
            const MutexLock lock(mutex);
            throw std::runtime_error("on its way");
        },
        std::runtime_error);
    EXPECT_TRUE(IsFree(mutex));
}

TEST_P(MutexTiming, GivesUpABusyMutexAfterItsTries)
{
    Mutex mutex(true);
    bool taken = true;
    long long took = 0;
    OnAnotherThread(
        [&]
        {
            const Clock::time_point start = Clock::now();
            taken = mutex.Lock(GetParam().first);
            took = MillisecondsSince(start);
        });
    EXPECT_FALSE(taken);
    EXPECT_GE(took, GetParam().second);
    EXPECT_LT(took, GetParam().second + 2000);
    mutex.Unlock();
}

// 10 ms for each try: timeout / 10 + 1 of them.
INSTANTIATE_TEST_SUITE_P(Timeouts, MutexTiming,
                         testing::Values(std::pair(0U, 10LL), std::pair(9U, 10LL), std::pair(10U, 20LL),
                                         std::pair(25U, 30LL), std::pair(100U, 110LL)));

TEST(MutexFreeTiming, TakesAFreeMutexAtOnce)
{
    Mutex mutex;
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < 1000; ++i)
    {
        EXPECT_TRUE(mutex.Lock(0));
        EXPECT_TRUE(mutex.Unlock());
    }
    // A single pause for each would come to 10 s.
    EXPECT_LT(MillisecondsSince(start), 5000);
}
