// SPDX-License-Identifier: MIT
#include "toolkit/app/EventPump.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/apptrait.h>
#include <wx/event.h>
#include <wx/evtloop.h>
#include <wx/evtloopsrc.h>

#include "tests/support/IPCSupport.h"
#include "tests/support/InChild.h"
#include "tests/support/Seconds.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/ToolkitSession.h"

using Toolkit::EventPump;
using Toolkit::ToolkitSession;
using ToolkitTest::LeastSeconds;
using ToolkitTest::SecondsSince;

namespace
{

const unsigned int s_uNoLimit = 4294967295U;

using Clock = std::chrono::steady_clock;

EventPump* s_pStopped = nullptr;

void StopOnSignal(int)
{
    s_pStopped->Stop();
}

} // namespace

class EventPumpTest : public testing::Test
{
protected:
    const ToolkitSession m_session;
    EventPump m_pump;
    wxEvtHandler m_handler;
};

TEST_F(EventPumpTest, DeliversWhatIsThere)
{
    int delivered = 0;
    m_handler.CallAfter([&delivered] { ++delivered; });
    m_handler.CallAfter([&delivered] { ++delivered; });
    EXPECT_TRUE(m_pump.Run(0));
    EXPECT_EQ(2, delivered);
    EXPECT_TRUE(m_pump.Run(0));
    EXPECT_EQ(2, delivered);
}

TEST_F(EventPumpTest, DeliversWhatAnotherThreadPosts)
{
    int delivered = 0;
    std::thread poster(
        [&]
        {
            m_handler.CallAfter(
                [&]
                {
                    ++delivered;
                    m_pump.Stop();
                });
        });
    EXPECT_TRUE(m_pump.Run(s_uNoLimit));
    EXPECT_EQ(1, delivered);
    poster.join();
}

TEST_F(EventPumpTest, IsStoppedByAnyThread)
{
    std::thread stopper([this] { m_pump.Stop(); });
    EXPECT_TRUE(m_pump.Run(s_uNoLimit));
    stopper.join();
}

TEST_F(EventPumpTest, IsStoppedByASignal)
{
    s_pStopped = &m_pump;
    const auto before = std::signal(SIGALRM, &StopOnSignal);
    const itimerval soon = {{0, 0}, {0, 10000}};
    ASSERT_EQ(0, setitimer(ITIMER_REAL, &soon, nullptr));
    EXPECT_TRUE(m_pump.Run(s_uNoLimit));
    std::signal(SIGALRM, before);
}

TEST_F(EventPumpTest, StopBeforeARunEndsThatRun)
{
    int delivered = 0;
    m_handler.CallAfter([&delivered] { ++delivered; });
    m_pump.Stop();
    m_pump.Stop();
    EXPECT_TRUE(m_pump.Run(s_uNoLimit));
    EXPECT_EQ(1, delivered) << "what is there is delivered all the same";
    const auto start = Clock::now();
    EXPECT_TRUE(m_pump.Run(50));
    EXPECT_GE(SecondsSince(start), 0.05) << "the next run is its own";
}

TEST_F(EventPumpTest, StopEndsTheRunsWithinTheRun)
{
    bool inner = false;
    bool innermost = false;
    m_handler.CallAfter(
        [&]
        {
            m_handler.CallAfter(
                [&]
                {
                    m_pump.Stop();
                    innermost = m_pump.Run(s_uNoLimit);
                });
            inner = m_pump.Run(s_uNoLimit);
        });
    EXPECT_TRUE(m_pump.Run(s_uNoLimit));
    EXPECT_TRUE(inner);
    EXPECT_TRUE(innermost);
}

TEST_F(EventPumpTest, RunsWithinTheRunOfAnother)
{
    EventPump inner;
    int delivered = 0;
    m_handler.CallAfter(
        [&]
        {
            m_handler.CallAfter(
                [&]
                {
                    ++delivered;
                    inner.Stop();
                });
            EXPECT_TRUE(inner.Run(s_uNoLimit));
            EXPECT_EQ(1, delivered);
            m_pump.Stop();
        });
    EXPECT_TRUE(m_pump.Run(s_uNoLimit));
}

TEST_F(EventPumpTest, RunsWithinTheLoopOfTheHost)
{
    const std::unique_ptr<wxEventLoopBase> loop(wxAppConsole::GetInstance()->GetTraits()->CreateEventLoop());
    const wxEventLoopActivator activator(loop.get());
    int delivered = 0;
    m_handler.CallAfter([&delivered] { ++delivered; });
    EXPECT_TRUE(m_pump.Run(0));
    EXPECT_EQ(1, delivered);
    EXPECT_EQ(loop.get(), wxEventLoopBase::GetActive());
}

TEST_F(EventPumpTest, LeavesNoLoopBehind)
{
    EXPECT_TRUE(m_pump.Run(0));
    EXPECT_EQ(nullptr, wxEventLoopBase::GetActive());
}

TEST_F(EventPumpTest, ExceptionOfAHandlerPasses)
{
    m_handler.CallAfter([] { throw std::runtime_error("refused"); });
    EXPECT_THROW(m_pump.Run(s_uNoLimit), std::runtime_error);
    EXPECT_EQ(nullptr, wxEventLoopBase::GetActive());
    EXPECT_TRUE(m_pump.Run(0));
}

TEST_F(EventPumpTest, StopIsGoneWithTheExceptionThatEndsTheRun)
{
    m_handler.CallAfter(
        [this]
        {
            m_pump.Stop();
            throw std::runtime_error("refused");
        });
    EXPECT_THROW(m_pump.Run(s_uNoLimit), std::runtime_error);
    bool heard = false;
    std::thread later(
        [this, &heard]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            m_handler.CallAfter(
                [this, &heard]
                {
                    heard = true;
                    m_pump.Stop();
                });
        });
    EXPECT_TRUE(m_pump.Run(s_uNoLimit));
    EXPECT_TRUE(heard);
    later.join();
}

TEST_F(EventPumpTest, EndsThoughThereIsAlwaysMore)
{
    int pipes[2];
    ASSERT_EQ(0, pipe2(pipes, O_CLOEXEC));
    ASSERT_EQ(1, write(pipes[1], "x", 1));
    class Readable : public wxEventLoopSourceHandler
    {
    public:
        void OnReadWaiting() override { ++m_iTimes; }
        void OnWriteWaiting() override {}
        void OnExceptionWaiting() override {}
        int m_iTimes = 0;
    } readable;
    std::unique_ptr<wxEventLoopSource> source(
        wxEventLoopBase::AddSourceForFD(pipes[0], &readable, wxEVENT_SOURCE_INPUT));
    EXPECT_TRUE(m_pump.Run(0));
    EXPECT_GE(readable.m_iTimes, 1);
    EXPECT_TRUE(m_pump.Run(10));
    source.reset();
    close(pipes[0]);
    close(pipes[1]);
}

// What another thread opens meanwhile is its own, and may be meant for the programs that it starts.
TEST_F(EventPumpTest, LeavesTheDescriptorsOfOtherThreadsAlone)
{
    std::atomic<bool> done{false};
    int changed = 0;
    std::thread other(
        [&done, &changed]
        {
            for (int i = 0; i < 20000; ++i)
            {
                int ends[2];
                if (pipe(ends) != 0)
                    continue;
                std::this_thread::yield();
                for (const int end : ends)
                {
                    changed += fcntl(end, F_GETFD) == FD_CLOEXEC ? 1 : 0;
                    close(end);
                }
            }
            done = true;
        });
    while (!done)
        EXPECT_TRUE(m_pump.Run(0));
    other.join();
    EXPECT_EQ(0, changed);
}

TEST_F(EventPumpTest, RunsOnTheMainThreadOnly)
{
    bool ran = true;
    std::thread([&] { ran = m_pump.Run(s_uNoLimit); }).join();
    EXPECT_FALSE(ran);
}

TEST(EventPump, RunsOnTheThreadThatStartedWxWidgets)
{
    const ToolkitTest::TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::InChild(
        [&folder]() -> ToolkitTest::ChildAnswer
        {
            std::string wrong = "no end";
            std::thread(
                [&]
                {
                    const ToolkitSession session;
                    ToolkitTest::RecordingServer server(folder.Wide("s"));
                    const bool done =
                        server.Run() && ToolkitTest::SendTo(folder.Wide("s"), L"open x") &&
                        ToolkitTest::PumpUntil([&server] { return !server.Received().empty(); });
                    wrong = done ? "" : "nothing received";
                })
                .join();
            return wrong;
        }));
}

TEST(EventPump, DoesNotRunWithoutWxWidgets)
{
    ToolkitTest::CapturedOutput errors(2);
    EventPump pump;
    EXPECT_FALSE(pump.Run(0));
    EXPECT_FALSE(pump.Run(s_uNoLimit));
    {
        const ToolkitSession session;
        EXPECT_TRUE(pump.Run(0));
    }
    EXPECT_FALSE(pump.Run(0));
    {
        const ToolkitSession session;
        EXPECT_TRUE(pump.Run(0)) << "it outlives wxWidgets";
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(EventPumpTiming, RunsForItsTime)
{
    const ToolkitSession session;
    EventPump pump;
    const auto secondsOf = [&pump](unsigned int time)
    {
        const auto start = Clock::now();
        EXPECT_TRUE(pump.Run(time));
        return SecondsSince(start);
    };
    EXPECT_LT(LeastSeconds(0.1, [&] { return secondsOf(0); }), 0.2);
    const double least = LeastSeconds(0.5, [&] { return secondsOf(300); });
    EXPECT_GE(least, 0.3);
    EXPECT_LT(least, 1);
}

TEST(EventPumpTiming, StopsAtOnce)
{
    const ToolkitSession session;
    EventPump pump;
    const auto seconds = [&pump]
    {
        Clock::time_point stopped;
        std::thread stopper(
            [&]
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(300));
                stopped = Clock::now();
                pump.Stop();
            });
        EXPECT_TRUE(pump.Run(s_uNoLimit));
        const Clock::time_point returned = Clock::now();
        stopper.join();
        return std::chrono::duration<double>(returned - stopped).count();
    };
    EXPECT_LT(LeastSeconds(0.05, seconds), 0.1);
}

TEST(EventPumpTiming, IdleServerUsesNoProcessorTime)
{
    const ToolkitTest::TemporaryFolder folder;
    const ToolkitSession session;
    ToolkitTest::RecordingServer server(folder.Wide("s"));
    ASSERT_TRUE(server.Run());
    ToolkitTest::RawClient silent(folder.Path("s"));
    ToolkitTest::RawClient begun(folder.Path("s"));
    begun.Send(ToolkitTest::ConnectBytes("t"));
    EXPECT_TRUE(ToolkitTest::SendTo(folder.Wide("s"), L"open x"));
    EventPump pump;
    EXPECT_TRUE(pump.Run(100));
    // A server that is busy is so in every second; a sanitizer or a busy machine adds its own to some.
    bool idle = false;
    for (int attempt = 0; attempt < 5 && !idle; ++attempt)
    {
        rusage before = {};
        rusage after = {};
        getrusage(RUSAGE_THREAD, &before);
        EXPECT_TRUE(pump.Run(1000));
        getrusage(RUSAGE_THREAD, &after);
        const auto microseconds = [](const timeval& time) { return time.tv_sec * 1000000 + time.tv_usec; };
        const long used = microseconds(after.ru_utime) - microseconds(before.ru_utime) +
                          microseconds(after.ru_stime) - microseconds(before.ru_stime);
        const long wakings = after.ru_nvcsw - before.ru_nvcsw;
        std::cout << "  " << used << " microseconds, woken " << wakings << " times\n";
        idle = used < 20000 && wakings <= 5;
    }
    EXPECT_TRUE(idle);
}
