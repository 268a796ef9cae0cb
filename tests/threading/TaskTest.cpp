// SPDX-License-Identifier: MIT
#include "toolkit/threading/Task.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/NoNewThreads.h"
#include "tests/support/Rounds.h"
#include "toolkit/threading/Event.h"

using Toolkit::Event;
using Toolkit::Task;
using Toolkit::TaskContext;
using Toolkit::TaskProgress;
using namespace std::chrono_literals;

namespace
{

using Clock = std::chrono::steady_clock;

// Calls what it was given when the test says so.
class Queue
{
public:
    void operator()(std::function<void()> call)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_calls.push_back(std::move(call));
    }

    std::size_t CallAll()
    {
        std::deque<std::function<void()>> calls;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            calls.swap(m_calls);
        }
        for (const auto& call : calls)
            call();
        return calls.size();
    }

private:
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_calls;
};

// Sleeps until it is cancelled.
int SleepUntilCancelled(TaskContext& context)
{
    return context.SleepFor(std::chrono::nanoseconds::max()) ? 0 : 5;
}

} // namespace

TEST(Task, GivesItsValueOnce)
{
    auto task = Task<int>::Start([](TaskContext&) { return 42; });
    EXPECT_EQ(42, task.Get());
    EXPECT_FALSE(task.IsRunning());
    EXPECT_THROW(task.Get(), std::logic_error);
}

TEST(Task, TakesWorkAndValuesThatOnlyMove)
{
    auto held = std::make_unique<int>(7);
    auto task =
        Task<std::unique_ptr<int>>::Start([held = std::move(held)]() mutable { return std::move(held); });
    EXPECT_EQ(7, *task.Get());
    std::atomic<bool> done{false};
    auto nothing = Task<void>::Start([&done](TaskContext&) { done = true; });
    nothing.Get();
    EXPECT_TRUE(done);
}

TEST(Task, RunsOnAThreadOfItsOwn)
{
    auto task = Task<std::thread::id>::Start([] { return std::this_thread::get_id(); });
    EXPECT_NE(std::this_thread::get_id(), task.Get());
}

TEST(Task, RethrowsWhatTheWorkThrew)
{
    auto task = Task<int>::Start([](TaskContext&) -> int { throw std::runtime_error("broken"); });
    task.Wait();
    EXPECT_FALSE(task.IsRunning());
    try
    {
        task.Get();
        FAIL();
    }
    catch (const std::runtime_error& error)
    {
        EXPECT_STREQ("broken", error.what());
    }
    EXPECT_THROW(task.Get(), std::logic_error);
}

TEST(Task, WithoutWorkHoldsNothing)
{
    Task<int> task;
    task.Cancel();
    task.Wait();
    EXPECT_TRUE(task.WaitFor(0s));
    EXPECT_FALSE(task.IsRunning());
    EXPECT_EQ(0, task.Progress().All());
    task.OnChange([](const TaskProgress&) { FAIL(); });
    EXPECT_THROW(task.Get(), std::logic_error);
}

TEST(Task, SleepEndsAtOnceWhenItIsCancelled)
{
    Event sleeps;
    auto task = Task<int>::Start(
        [&sleeps](TaskContext& context)
        {
            EXPECT_TRUE(context.SleepFor(1ms));
            sleeps.Set();
            EXPECT_FALSE(context.SleepFor(24h));
            EXPECT_FALSE(context.SleepFor(0s));
            EXPECT_TRUE(context.IsCancelled());
            return 3;
        });
    sleeps.Wait();
    EXPECT_FALSE(task.WaitFor(1ms));
    EXPECT_TRUE(task.IsRunning());
    task.Cancel();
    EXPECT_TRUE(task.IsCancelled());
    EXPECT_EQ(3, task.Get());
}

TEST(Task, SleepsForTheTimeGiven)
{
    auto task = Task<bool>::Start(
        [](TaskContext& context)
        {
            const auto start = Clock::now();
            return context.SleepFor(20ms) && context.SleepFor(-1s) && Clock::now() - start >= 20ms;
        });
    EXPECT_TRUE(task.Get());
}

TEST(Task, DestructionAndAssignmentCancelAndWait)
{
    std::atomic<int> ended{0};
    const auto work = [&ended](TaskContext& context)
    {
        SleepUntilCancelled(context);
        return ++ended;
    };
    {
        const auto task = Task<int>::Start(work);
    }
    EXPECT_EQ(1, ended);
    auto task = Task<int>::Start(work);
    task = Task<int>::Start(work);
    EXPECT_EQ(2, ended);
    auto moved = std::move(task);
    EXPECT_FALSE(task.IsRunning());
    EXPECT_TRUE(moved.IsRunning());
    moved = Task<int>();
    EXPECT_EQ(3, ended);
}

TEST(Task, MayBeDestroyedOnItsOwnThread)
{
    Event ended;
    auto task = std::make_shared<std::unique_ptr<Task<void>>>();
    Event stored;
    *task = std::make_unique<Task<void>>(Task<void>::Start(
        [&, task](TaskContext& context)
        {
            stored.Wait();
            EXPECT_THROW((*task)->Get(), std::logic_error);
            task->reset();
            EXPECT_TRUE(context.IsCancelled());
            ended.Set();
        }));
    stored.Set();
    ended.Wait();
}

TEST(Task, ShowsItsProgressToAnyThreadFromAnyThread)
{
    Event reported;
    Event go;
    auto task = Task<void>::Start(
        [&](TaskContext& context)
        {
            std::thread([&context] { context.Report(2, 10, "two"); }).join();
            reported.Set();
            go.Wait();
            context.Report(10, 10);
        });
    reported.Wait();
    const TaskProgress two = task.Progress();
    EXPECT_EQ(2, two.Done());
    EXPECT_EQ(10, two.All());
    EXPECT_EQ("two", two.Text());
    EXPECT_FALSE(two.IsFinished());
    go.Set();
    task.Get();
    EXPECT_EQ("two", two.Text());
    EXPECT_EQ(10, task.Progress().Done());
    EXPECT_EQ("", task.Progress().Text());
    EXPECT_TRUE(task.Progress().IsFinished());
}

TEST(Task, TellsOfChangesAtMostEvery50MillisecondsAndAtTheEnd)
{
    std::vector<Clock::time_point> times;
    TaskProgress last;
    Event listens;
    std::thread::id thread;
    std::atomic<int> others{0};
    auto task = Task<std::thread::id>::Start(
        [&](TaskContext& context)
        {
            listens.Wait();
            const auto end = Clock::now() + 230ms;
            for (int i = 0; Clock::now() < end; ++i)
                context.Report(i, 100000000);
            context.Report(7, 7, "last");
            return std::this_thread::get_id();
        });
    task.OnChange(
        [&](const TaskProgress& progress)
        {
            if (!progress.IsFinished())
                times.push_back(Clock::now());
            else
                ++others;
            last = progress;
            thread = std::this_thread::get_id();
        });
    listens.Set();
    EXPECT_EQ(task.Get(), thread);
    ASSERT_GE(times.size(), 1U);
    EXPECT_LE(times.size(), 5U);
    EXPECT_EQ(1, others);
    EXPECT_EQ("last", last.Text());
}

TEST(Task, TellsOfTheLastReportWhileItSleeps)
{
    Event seen;
    Event listens;
    auto task = Task<int>::Start(
        [&](TaskContext& context)
        {
            listens.Wait();
            context.Report(1, 2);
            context.Report(2, 2);
            return SleepUntilCancelled(context);
        });
    task.OnChange(
        [&seen](const TaskProgress& progress)
        {
            if (progress.Done() == 2)
                seen.Set();
        });
    listens.Set();
    seen.Wait();
    task.Cancel();
    EXPECT_EQ(5, task.Get());
}

TEST(Task, HandsItsCallsToTheExecutor)
{
    auto queue = std::make_shared<Queue>();
    int calls = 0;
    TaskProgress last;
    auto task = Task<int>::Start(
        [](TaskContext& context)
        {
            context.Report(1, 2);
            SleepUntilCancelled(context);
            context.Report(2, 2, "end");
            return 1;
        });
    task.OnChange(
        [&](const TaskProgress& progress)
        {
            ++calls;
            last = progress;
        },
        [queue](std::function<void()> call) { (*queue)(std::move(call)); });
    task.Cancel();
    EXPECT_EQ(1, task.Get());
    EXPECT_EQ(0, calls);
    EXPECT_GE(queue->CallAll(), 1U);
    EXPECT_GE(calls, 1);
    EXPECT_TRUE(last.IsFinished());
    EXPECT_EQ("end", last.Text());
    task.OnChange([&](const TaskProgress&) { ++calls; },
                  [queue](std::function<void()> call) { (*queue)(std::move(call)); });
    task = Task<int>();
    const int before = calls;
    EXPECT_EQ(1U, queue->CallAll());
    EXPECT_EQ(before, calls);
}

TEST(Task, TellsOfTheEndOnceWhenTheExecutorIsLate)
{
    auto queue = std::make_shared<Queue>();
    Event listening;
    int ends = 0;
    auto task = Task<void>::Start(
        [&listening](TaskContext& context)
        {
            listening.Wait();
            context.Report(1, 2);
        });
    task.OnChange([&ends](const TaskProgress& progress) { ends += progress.IsFinished() ? 1 : 0; },
                  [queue](std::function<void()> call) { (*queue)(std::move(call)); });
    listening.Set();
    task.Wait();
    // The one for the report sees the end already.
    EXPECT_EQ(2U, queue->CallAll());
    EXPECT_EQ(1, ends);
}

TEST(Task, ListenerGivenAfterTheEndIsCalledAtOnce)
{
    auto task = Task<int>::Start([](TaskContext& context) { return context.Report(3, 4), 1; });
    task.Wait();
    int calls = 0;
    task.OnChange(
        [&calls](const TaskProgress& progress)
        {
            ++calls;
            EXPECT_EQ(3, progress.Done());
            EXPECT_TRUE(progress.IsFinished());
        });
    EXPECT_EQ(1, calls);
}

TEST(Task, WhatAListenerOrExecutorThrowsIsDropped)
{
    auto task = Task<int>::Start(SleepUntilCancelled);
    task.OnChange([](const TaskProgress&) { throw std::runtime_error("listener"); });
    task.Cancel();
    EXPECT_EQ(5, task.Get());
    auto other = Task<int>::Start(SleepUntilCancelled);
    other.OnChange([](const TaskProgress&) {},
                   [](const std::function<void()>&) { throw std::runtime_error("executor"); });
    other.Cancel();
    EXPECT_EQ(5, other.Get());
}

TEST(Task, ManyTasksEndAtEveryMoment)
{
    std::atomic<int> started{0};
    std::atomic<int> ended{0};
    for (int round = 0; round < 20; ++round)
    {
        std::vector<Task<int>> tasks;
        for (int i = 0; i < 16; ++i)
        {
            tasks.push_back(Task<int>::Start(
                [&](TaskContext& context)
                {
                    ++started;
                    for (int step = 0; context.SleepFor(10us) && step < 100; ++step)
                        context.Report(step, 100, "step");
                    return ++ended;
                }));
            tasks.back().OnChange([](const TaskProgress&) {});
        }
        for (std::size_t i = 0; i < tasks.size(); i += 2)
            tasks[i].Cancel();
        tasks[1].Get();
    }
    EXPECT_EQ(320, started);
    EXPECT_EQ(320, ended);
}

TEST(Task, ManyOneAfterAnotherLeaveNothingBehind)
{
    ToolkitTest::Rounds rounds("tasks", "TOOLKIT_TEST_TASKS", 1000);
    while (rounds.GoOn())
    {
        const unsigned long size = rounds.Size(500);
        for (unsigned long i = 0; i < size; ++i)
        {
            auto task = Task<unsigned long>::Start(
                [i](TaskContext& context)
                {
                    context.Report(1, 1, "a text that needs memory of its own");
                    return i;
                });
            if (i % 3 == 0)
                task.Cancel();
            // Every other one is destroyed at whatever point it has come to.
            EXPECT_TRUE(i % 2 != 0 || task.Get() == i);
        }
        rounds.Did(size);
    }
}

TEST(Task, ThreadThatTheSystemRefusesIsThrownByGet)
{
    bool hasRun = false;
    const ToolkitTest::NoNewThreads none;
    Task<int> task = Task<int>::Start(
        [&hasRun]
        {
            hasRun = true;
            return 1;
        });
    task.Wait();
    EXPECT_TRUE(task.Progress().IsFinished());
    EXPECT_THROW(task.Get(), std::system_error);
    EXPECT_FALSE(hasRun);
}
