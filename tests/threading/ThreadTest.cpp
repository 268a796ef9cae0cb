// SPDX-License-Identifier: MIT
#include "toolkit/threading/Thread.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>
#include <wx/init.h>
#include <wx/log.h>

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/Worker.h"

using Toolkit::Thread;
using ToolkitTest::AsNobody;
using ToolkitTest::CapturedOutput;
using ToolkitTest::Code;
using ToolkitTest::InChild;
using ToolkitTest::LoopUntilStopped;
using ToolkitTest::WaitUntil;
using ToolkitTest::Work;
using ToolkitTest::Worker;

namespace
{

bool Finish(Thread& thread)
{
    return thread.Run() && WaitUntil([&] { return !thread.IsRunning(); });
}

Work LoopWithoutRest(std::atomic<int>& rounds)
{
    return [&rounds](Thread& thread) -> wxThread::ExitCode
    {
        while (!thread.TestDestroy())
            ++rounds;
        return nullptr;
    };
}

// For conditions that are awaited so often that WaitUntil's rests would add up.
void YieldUntil(const std::function<bool()>& condition)
{
    while (!condition())
        std::this_thread::yield();
}

class Stoppable : public Worker
{
public:
    using Worker::StopAndWait;
    using Worker::Worker;
};

// Stops threads, again and again, while another one asks the base class to pause them all the time.
void PauseWhileStopped(const std::function<void(Stoppable&)>& stop)
{
    const wxLogNull silence;
    CapturedOutput errors(2);
    for (int round = 0; round < 40 && !testing::Test::HasFailure(); ++round)
    {
        std::atomic<int> rounds{0};
        std::atomic<bool> stopped{false};
        Stoppable worker(LoopWithoutRest(rounds));
        wxThread& base = worker;
        ASSERT_TRUE(worker.Run());
        YieldUntil([&] { return rounds > 0; });
        std::thread stopping(
            [&]
            {
                stop(worker);
                stopped = true;
            });
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!stopped && std::chrono::steady_clock::now() < end)
            base.Pause();
        EXPECT_TRUE(stopped);
        while (!stopped)
            base.Resume();
        stopping.join();
    }
    EXPECT_EQ("", errors.Stop());
}

// Its work waits for what `OnDelete` tells it, and for nothing else.
class Sleeper : public Thread
{
public:
    explicit Sleeper(std::atomic<int>& told) : m_told(told) {}
    ~Sleeper() override { StopAndWait(); }

protected:
    ExitCode DoWork() override
    {
        std::unique_lock<std::mutex> guard(m_guard);
        m_change.wait(guard, [this] { return m_bAwake; });
        return nullptr;
    }
    void OnDelete() override
    {
        const std::lock_guard<std::mutex> guard(m_guard);
        ++m_told;
        m_bAwake = true;
        m_change.notify_all();
        Thread::OnDelete();
    }

private:
    std::atomic<int>& m_told;
    std::mutex m_guard;
    std::condition_variable m_change;
    bool m_bAwake = false;
};

} // namespace

TEST(Thread, IsAnAbstractBaseThread)
{
    EXPECT_TRUE((std::is_base_of_v<wxThread, Thread>));
    EXPECT_TRUE(std::is_abstract_v<Thread>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Thread>);
    EXPECT_EQ(4294967295UL, Thread::UndefinedThread);
}

TEST(Thread, DoesNothingBeforeItIsRun)
{
    std::atomic<bool> worked{false};
    {
        Worker worker(
            [&](Thread&)
            {
                worked = true;
                return nullptr;
            });
        EXPECT_FALSE(worker.IsRunning());
        EXPECT_FALSE(worker.IsPaused());
    }
    EXPECT_FALSE(worked);
}

TEST(Thread, RunsItsWorkOnceOnItsOwnThread)
{
    std::atomic<int> count{0};
    std::atomic<unsigned long> id{0};
    Worker worker(
        [&](Thread&)
        {
            ++count;
            id = Thread::GetCurrentId();
            return Code(42);
        });
    EXPECT_TRUE(worker.Run());
    EXPECT_EQ(Code(42), worker.Wait());
    EXPECT_EQ(1, count);
    EXPECT_EQ(worker.GetId(), id);
    EXPECT_NE(Thread::GetCurrentId(), id);
    EXPECT_NE(Thread::UndefinedThread, worker.GetId());
}

TEST(Thread, RunsOnlyOnce)
{
    CapturedOutput errors(2);
    std::atomic<int> count{0};
    Worker worker(
        [&](Thread&)
        {
            ++count;
            return nullptr;
        });
    EXPECT_TRUE(worker.Run());
    EXPECT_FALSE(worker.Run());
    worker.Wait();
    EXPECT_FALSE(worker.Run());
    EXPECT_EQ(1, count);
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, WaitReturnsAtOnceWhenItWasNeverStarted)
{
    Worker worker;
    EXPECT_EQ(nullptr, worker.Wait());
    EXPECT_EQ(nullptr, worker.Wait());
}

TEST(Thread, WaitReturnsAtOnceWhenItHasFinished)
{
    Worker worker([](Thread&) { return Code(3); });
    ASSERT_TRUE(Finish(worker));
    EXPECT_EQ(Code(3), worker.Wait());
    EXPECT_EQ(Code(3), worker.Wait());
}

TEST(Thread, WaitOnItselfReturnsAtOnce)
{
    std::atomic<bool> returned{false};
    Worker worker(
        [&](Thread& self)
        {
            returned = self.Wait() == nullptr;
            return nullptr;
        });
    worker.Run();
    worker.Wait();
    EXPECT_TRUE(returned);
}

TEST(Thread, WaitLastsUntilTheWorkIsDone)
{
    std::atomic<bool> go{false};
    std::atomic<bool> done{false};
    Worker worker(
        [&](Thread&)
        {
            while (!go)
                Thread::Sleep(1);
            done = true;
            return nullptr;
        });
    EXPECT_TRUE(worker.Run());
    EXPECT_TRUE(worker.IsRunning());
    go = true;
    worker.Wait();
    EXPECT_TRUE(done);
    EXPECT_FALSE(worker.IsRunning());
}

TEST(Thread, PausesAtTestDestroyAndGoesOn)
{
    CapturedOutput errors(2);
    std::atomic<int> rounds{0};
    Worker worker(LoopUntilStopped(rounds));
    EXPECT_FALSE(worker.Pause());
    EXPECT_FALSE(worker.Resume());
    ASSERT_TRUE(worker.Run());
    ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
    EXPECT_FALSE(worker.Resume());
    EXPECT_TRUE(worker.Pause());
    EXPECT_FALSE(worker.Pause());
    EXPECT_TRUE(worker.IsPaused());
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_TRUE(WaitUntil(
        [&]
        {
            const int before = rounds;
            Thread::Sleep(50);
            return rounds == before;
        }));
    const int paused = rounds;
    EXPECT_TRUE(worker.Resume());
    EXPECT_FALSE(worker.IsPaused());
    EXPECT_TRUE(WaitUntil([&] { return rounds > paused; }));
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, PauseAndResumeOfAFinishedThreadAnswerFalse)
{
    CapturedOutput errors(2);
    Worker worker;
    ASSERT_TRUE(Finish(worker));
    EXPECT_FALSE(worker.Pause());
    EXPECT_FALSE(worker.Resume());
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, PauseResumeAndKillOnItselfAnswerFailure)
{
    CapturedOutput errors(2);
    std::atomic<int> failed{0};
    Worker worker(
        [&](Thread& self)
        {
            failed += !self.Pause();
            failed += !self.Resume();
            failed += self.Kill() != wxTHREAD_NO_ERROR;
            return nullptr;
        });
    worker.Run();
    worker.Wait();
    EXPECT_EQ(3, failed);
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, DestructorStopsAPausedThread)
{
    std::atomic<int> rounds{0};
    {
        Worker worker(LoopUntilStopped(rounds));
        ASSERT_TRUE(worker.Run());
        ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
        EXPECT_TRUE(worker.Pause());
    }
    const int after = rounds;
    Thread::Sleep(10);
    EXPECT_EQ(after, rounds);
}

// The destructor comes at every moment of the pause: before the thread sees it, while and after.
TEST(Thread, DestructorStopsAThreadThatIsAboutToPause)
{
    CapturedOutput errors(2);
    for (int round = 0; round < 500; ++round)
    {
        std::atomic<int> rounds{0};
        Worker worker(LoopWithoutRest(rounds));
        ASSERT_TRUE(worker.Run());
        YieldUntil([&] { return rounds > 0; });
        EXPECT_TRUE(worker.Pause());
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, StopEndsAThreadThatTheBaseClassPausesMeanwhile)
{
    PauseWhileStopped([](Stoppable& worker) { worker.StopAndWait(); });
}

TEST(Thread, DeleteEndsAThreadThatTheBaseClassPausesMeanwhile)
{
    PauseWhileStopped([](Stoppable& worker) { EXPECT_EQ(wxTHREAD_NO_ERROR, worker.Delete()); });
}

// As the base class tells a thread that it is deleted, so do these.
TEST(Thread, StopAndDeleteTellWhatTheSubclassWaitsFor)
{
    std::atomic<int> told{0};
    {
        Sleeper stopped(told);
        Sleeper deleted(told);
        ASSERT_TRUE(stopped.Run());
        ASSERT_TRUE(deleted.Run());
        EXPECT_EQ(wxTHREAD_NO_ERROR, deleted.Delete());
        EXPECT_EQ(1, told);
    }
    EXPECT_LE(2, told);
}

TEST(Thread, EveryPauseIsEndedByItsResume)
{
    CapturedOutput errors(2);
    std::atomic<int> rounds{0};
    Worker worker(LoopWithoutRest(rounds));
    ASSERT_TRUE(worker.Run());
    for (int round = 0; round < 500; ++round)
    {
        EXPECT_TRUE(worker.Pause());
        EXPECT_TRUE(worker.Resume());
        const int before = rounds;
        YieldUntil([&] { return rounds != before; });
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, ResumedThroughTheBaseClassGoesOn)
{
    std::atomic<int> rounds{0};
    Worker worker(LoopUntilStopped(rounds));
    wxThread& base = worker;
    ASSERT_TRUE(worker.Run());
    for (int round = 0; round < 3; ++round)
    {
        EXPECT_TRUE(worker.Pause());
        EXPECT_EQ(wxTHREAD_NO_ERROR, base.Resume());
        const int before = rounds;
        ASSERT_TRUE(WaitUntil([&] { return rounds > before + 1; }));
    }
}

TEST(Thread, DeletedThroughTheBaseClassWhilePausedEnds)
{
    std::atomic<int> rounds{0};
    Worker worker(LoopUntilStopped(rounds));
    ASSERT_TRUE(worker.Run());
    ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
    EXPECT_TRUE(worker.Pause());
    wxThread::ExitCode code = nullptr;
    EXPECT_EQ(wxTHREAD_NO_ERROR, static_cast<wxThread&>(worker).Delete(&code));
    EXPECT_EQ(Code(5), code);
    EXPECT_FALSE(worker.IsRunning());
}

TEST(Thread, DestructorAsksTheThreadToStopAndWaitsForIt)
{
    std::atomic<int> rounds{0};
    std::atomic<bool> left{false};
    {
        Worker worker(
            [&](Thread& self)
            {
                LoopUntilStopped(rounds)(self);
                left = true;
                return nullptr;
            });
        ASSERT_TRUE(worker.Run());
        ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
    }
    EXPECT_TRUE(left);
}

TEST(Thread, KillEndsTheThread)
{
    CapturedOutput errors(2);
    std::atomic<int> rounds{0};
    {
        Worker worker(
            [&](Thread&) -> wxThread::ExitCode
            {
                while (true)
                {
                    ++rounds;
                    Thread::Sleep(1);
                }
            });
        ASSERT_TRUE(worker.Run());
        ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
        EXPECT_EQ(wxTHREAD_NO_ERROR, worker.Kill());
        EXPECT_FALSE(worker.IsRunning());
        EXPECT_FALSE(worker.IsPaused());
        EXPECT_FALSE(worker.Pause());
        EXPECT_FALSE(worker.Run());
        EXPECT_EQ(wxTHREAD_NOT_RUNNING, worker.Kill());
    }
    const int after = rounds;
    Thread::Sleep(20);
    EXPECT_EQ(after, rounds);
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, KillEndsAPausedThread)
{
    CapturedOutput errors(2);
    std::atomic<int> rounds{0};
    {
        Worker worker(LoopUntilStopped(rounds));
        ASSERT_TRUE(worker.Run());
        ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
        EXPECT_TRUE(worker.Pause());
        EXPECT_EQ(wxTHREAD_NO_ERROR, worker.Kill());
        EXPECT_FALSE(worker.IsPaused());
        EXPECT_FALSE(worker.Resume());
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, KillOfAThreadThatDoesNotRunAnswersFailure)
{
    CapturedOutput errors(2);
    Worker worker;
    EXPECT_EQ(wxTHREAD_NOT_RUNNING, worker.Kill());
    ASSERT_TRUE(Finish(worker));
    EXPECT_EQ(wxTHREAD_NOT_RUNNING, worker.Kill());
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, WaitAfterKillReturns)
{
    std::atomic<int> rounds{0};
    Worker worker(LoopUntilStopped(rounds));
    ASSERT_TRUE(worker.Run());
    ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
    EXPECT_EQ(wxTHREAD_NO_ERROR, worker.Kill());
    worker.Wait();
    worker.Wait();
    EXPECT_FALSE(worker.IsRunning());
}

TEST(Thread, KillEndsWorkThatOnlyLooksWhetherToStop)
{
    CapturedOutput errors(2);
    std::atomic<int> rounds{0};
    {
        Worker worker(LoopWithoutRest(rounds));
        ASSERT_TRUE(worker.Run());
        ASSERT_TRUE(WaitUntil([&] { return rounds > 0; }));
        EXPECT_EQ(wxTHREAD_NO_ERROR, worker.Kill());
        worker.Wait();
        const int after = rounds;
        EXPECT_FALSE(worker.IsRunning());
        EXPECT_EQ(after, rounds);
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, KillDoesNotWaitForAnEntryThatTellsNothing)
{
    class Silent : public Worker
    {
    public:
        ~Silent() override { StopAndWait(); }

    protected:
        ExitCode Entry() override
        {
            while (!TestDestroy())
                Sleep(1);
            return nullptr;
        }
    };
    Silent silent;
    ASSERT_TRUE(silent.Run());
    EXPECT_EQ(wxTHREAD_NO_ERROR, silent.Kill());
}

TEST(Thread, DeleteAnswersByTheStateOfTheThread)
{
    CapturedOutput errors(2);
    {
        wxThread::ExitCode code = Code(9);
        std::atomic<int> rounds{0};
        Worker worker(LoopUntilStopped(rounds));
        EXPECT_EQ(wxTHREAD_NOT_RUNNING, worker.Delete(&code));
        EXPECT_EQ(Code(9), code);
        ASSERT_TRUE(worker.Run());
        EXPECT_EQ(wxTHREAD_NO_ERROR, worker.Delete(&code));
        EXPECT_EQ(Code(5), code);
        EXPECT_FALSE(worker.IsRunning());
        EXPECT_EQ(wxTHREAD_NO_ERROR, worker.Delete());
        EXPECT_FALSE(worker.Run());

        Worker killed(LoopUntilStopped(rounds));
        ASSERT_TRUE(killed.Run());
        EXPECT_EQ(wxTHREAD_NO_ERROR, killed.Kill());
        killed.Delete();

        wxThreadError own = wxTHREAD_NO_ERROR;
        Worker itself(
            [&own](Thread& self)
            {
                own = self.Delete();
                return nullptr;
            });
        ASSERT_TRUE(itself.Run());
        itself.Wait();
        EXPECT_EQ(wxTHREAD_MISC_ERROR, own);
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, PriorityOfAnEndedThreadAndWrongPrioritiesAreLeftAlone)
{
    CapturedOutput errors(2);
    {
        Worker worker;
        worker.SetPriority(101);
        EXPECT_EQ(static_cast<unsigned int>(wxPRIORITY_DEFAULT), worker.GetPriority());
        worker.SetPriority(40);
        EXPECT_EQ(40U, worker.GetPriority());
        ASSERT_TRUE(Finish(worker));
        worker.SetPriority(60);
        EXPECT_EQ(40U, worker.GetPriority());
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(Thread, TestDestroyTellsItsOwnerOfTheStopOnly)
{
    CapturedOutput errors(2);
    {
        std::atomic<int> rounds{0};
        Worker worker(LoopUntilStopped(rounds));
        EXPECT_FALSE(worker.TestDestroy());
        ASSERT_TRUE(worker.Run());
        EXPECT_TRUE(worker.Pause());
        EXPECT_FALSE(worker.TestDestroy());
        worker.Delete();
        EXPECT_TRUE(worker.TestDestroy());
    }
    EXPECT_EQ("", errors.Stop());
}

// The system gives the identifier of a thread that was waited for to the next one.
TEST(Thread, WaitOnAThreadWithTheSameIdentifierAnswersTheExitCode)
{
    Worker worker([](Thread&) { return Code(42); });
    ASSERT_TRUE(worker.Run());
    EXPECT_EQ(Code(42), worker.Wait());
    wxThread::ExitCode code = nullptr;
    std::thread([&] { code = worker.Wait(); }).join();
    EXPECT_EQ(Code(42), code);
}

TEST(Thread, ExceptionOutOfItsWorkEndsItWithAWordOfWxWidgets)
{
    CapturedOutput errors(2);
    Worker worker([](Thread&) -> wxThread::ExitCode { throw std::runtime_error("not caught"); });
    ASSERT_TRUE(worker.Run());
    EXPECT_EQ(nullptr, worker.Wait());
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_THAT(errors.Stop(), testing::HasSubstr("Unhandled unknown exception"));
}

TEST(Thread, IsMainThreadOnTheFirstThreadOnly)
{
    EXPECT_TRUE(Thread::IsMainThread());
    std::atomic<bool> main{true};
    Worker worker(
        [&](Thread&)
        {
            main = Thread::IsMainThread();
            return nullptr;
        });
    EXPECT_TRUE(Thread::IsMainThread());
    worker.Run();
    worker.Wait();
    EXPECT_FALSE(main);
    std::thread([&] { main = Thread::IsMainThread(); }).join();
    EXPECT_FALSE(main);
}

TEST(Thread, IsMainThreadEvenWhenAnotherThreadStartedWxWidgets)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            bool started = false;
            bool main = true;
            std::thread(
                [&]
                {
                    started = wxInitialize();
                    main = Thread::IsMainThread();
                })
                .join();
            if (!started || main)
                return "the other thread takes itself for the main one";
            return Thread::IsMainThread() ? "" : "the main thread does not know itself";
        }));
}

TEST(Thread, IsMainThreadWithoutWxWidgets)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            bool main = true;
            std::thread([&] { main = Thread::IsMainThread(); }).join();
            return Thread::IsMainThread() && !main ? "" : "the main thread is not told apart";
        }));
}

TEST(ThreadTiming, SleepIsNotCutShortBySignals)
{
    std::signal(SIGALRM, [](int) {});
    const itimerval often{{0, 5000}, {0, 5000}};
    const itimerval never{{0, 0}, {0, 0}};
    setitimer(ITIMER_REAL, &often, nullptr);
    const auto start = std::chrono::steady_clock::now();
    Thread::Sleep(150);
    const auto took = std::chrono::steady_clock::now() - start;
    setitimer(ITIMER_REAL, &never, nullptr);
    std::signal(SIGALRM, SIG_DFL);
    EXPECT_GE(took, std::chrono::milliseconds(150));
    EXPECT_LT(took, std::chrono::milliseconds(3000));
}

TEST(ThreadTiming, SleepOfNothingReturns)
{
    const auto start = std::chrono::steady_clock::now();
    Thread::Sleep(0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(Thread, ThatCouldNotBeCreatedHasNoIdentifier)
{
    // Root would not be bound by the limit.
    EXPECT_TRUE(AsNobody(
        []() -> std::string
        {
            const rlimit none{0, 0};
            if (setrlimit(RLIMIT_NPROC, &none) != 0)
                return "no limit";
            Worker worker;
            return worker.GetId() == Thread::UndefinedThread && !worker.Run() ? "" : "it was created";
        }));
}
