// SPDX-License-Identifier: MIT
#include "toolkit/threading/Threadable.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

using Toolkit::smart_ptr;
using Toolkit::Thread;
using Toolkit::Threading::IRunnable;
using Toolkit::Threading::Threadable;
using ToolkitTest::CapturedOutput;
using ToolkitTest::WaitUntil;

namespace
{

class Task : public IRunnable
{
public:
    explicit Task(std::function<void()> work) : m_work(std::move(work)) {}
    ~Task() override
    {
        if (m_pDestroyed != nullptr)
            ++*m_pDestroyed;
    }
    void Run() override { m_work(); }

    std::atomic<int>* m_pDestroyed = nullptr;

private:
    const std::function<void()> m_work;
};

// Offers the stop request to the task.
class Stoppable : public Threadable
{
public:
    using Threadable::TestDestroy;
    using Threadable::Threadable;
    ~Stoppable() override { StopAndWait(); }
};

} // namespace

TEST(Threadable, IsAThread)
{
    EXPECT_TRUE((std::is_base_of_v<Thread, Threadable>));
    EXPECT_TRUE(std::is_abstract_v<IRunnable>);
    EXPECT_FALSE((std::is_convertible_v<smart_ptr<IRunnable>, Threadable>));
}

TEST(Threadable, RunsTheTaskOnceOnItsOwnThread)
{
    std::atomic<int> count{0};
    std::atomic<unsigned long> id{0};
    std::atomic<bool> main{true};
    Threadable thread(smart_ptr<IRunnable>(new Task(
        [&]
        {
            ++count;
            id = Thread::GetCurrentId();
            main = Thread::IsMainThread();
        })));
    EXPECT_EQ(0, count);
    EXPECT_TRUE(thread.Run());
    EXPECT_FALSE(thread.Run());
    thread.Wait();
    EXPECT_EQ(1, count);
    EXPECT_EQ(thread.GetId(), id);
    EXPECT_FALSE(main);
}

TEST(Threadable, WaitReturnsAtOnceWhenItDoesNotRun)
{
    Threadable thread(smart_ptr<IRunnable>(new Task([] {})));
    thread.Wait();
    thread.Run();
    ASSERT_TRUE(WaitUntil([&] { return !thread.IsRunning(); }));
    thread.Wait();
    thread.Wait();
}

TEST(Threadable, DestroyingItReleasesTheTask)
{
    std::atomic<int> destroyed{0};
    {
        Task* const task = new Task([] {});
        task->m_pDestroyed = &destroyed;
        Threadable thread(task);
        thread.Run();
        thread.Wait();
        EXPECT_EQ(0, destroyed);
    }
    EXPECT_EQ(1, destroyed);
}

TEST(Threadable, SharesTheTaskWithItsMaker)
{
    std::atomic<int> destroyed{0};
    Task* const task = new Task([] {});
    task->m_pDestroyed = &destroyed;
    smart_ptr<IRunnable> shared(task);
    {
        Threadable thread(shared);
        thread.Run();
        thread.Wait();
    }
    EXPECT_EQ(0, destroyed);
    shared.Reset();
    EXPECT_EQ(1, destroyed);
}

TEST(Threadable, ReleasesATaskThatNeverRan)
{
    std::atomic<int> destroyed{0};
    std::atomic<int> ran{0};
    {
        Task* const task = new Task([&] { ++ran; });
        task->m_pDestroyed = &destroyed;
        const Threadable thread(task);
    }
    EXPECT_EQ(1, destroyed);
    EXPECT_EQ(0, ran);
}

TEST(Threadable, RunsANullTask)
{
    CapturedOutput errors(2);
    {
        Threadable thread{smart_ptr<IRunnable>()};
        EXPECT_TRUE(thread.Run());
        thread.Wait();
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(Threadable, WaitsForAKilledTask)
{
    std::atomic<bool> entered{false};
    std::atomic<bool> go{false};
    std::atomic<bool> done{false};
    Threadable thread(smart_ptr<IRunnable>(new Task(
        [&]
        {
            entered = true;
            // No cancellation point.
            while (!go)
                std::this_thread::yield();
            done = true;
        })));
    ASSERT_TRUE(thread.Run());
    ASSERT_TRUE(WaitUntil([&] { return entered.load(); }));
    EXPECT_EQ(wxTHREAD_NO_ERROR, thread.Kill());
    std::thread later(
        [&go]
        {
            Thread::Sleep(50);
            go = true;
        });
    EXPECT_EQ(nullptr, thread.Wait());
    EXPECT_TRUE(done);
    later.join();
}

TEST(Threadable, DestructorWaitsForARunningTask)
{
    std::atomic<bool> entered{false};
    std::atomic<bool> done{false};
    {
        Threadable thread(smart_ptr<IRunnable>(new Task(
            [&]
            {
                entered = true;
                Thread::Sleep(30);
                done = true;
            })));
        ASSERT_TRUE(thread.Run());
        ASSERT_TRUE(WaitUntil([&] { return entered.load(); }));
    }
    EXPECT_TRUE(done);
}

TEST(Threadable, DestructorEndsAPausedTask)
{
    std::atomic<int> rounds{0};
    std::atomic<bool> left{false};
    Stoppable* running = nullptr;
    auto thread = std::make_unique<Stoppable>(smart_ptr<IRunnable>(new Task(
        [&]
        {
            while (!running->TestDestroy())
            {
                ++rounds;
                Thread::Sleep(1);
            }
            left = true;
        })));
    running = thread.get();
    ASSERT_TRUE(thread->Run());
    ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
    EXPECT_TRUE(thread->Pause());
    thread.reset();
    EXPECT_TRUE(left);
}

TEST(Threadable, MayBeDestroyedAtOnce)
{
    EXPECT_TRUE(ToolkitTest::InChild(
        []() -> std::string
        {
            CapturedOutput errors(2);
            int count = 0;
            for (int i = 0; i < 3000; ++i)
            {
                Threadable thread(smart_ptr<IRunnable>(new Task([&count] { ++count; })));
                thread.Run();
            }
            return errors.Stop() + (count == 3000 ? "" : "tasks were not done");
        }));
}
