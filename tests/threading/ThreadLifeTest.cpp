// SPDX-License-Identifier: MIT
#include "toolkit/threading/Thread.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <malloc.h>
#include <wx/app.h>
#include <wx/init.h>

#include "tests/support/InChild.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/Worker.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/log/LogLine.h"

using namespace Toolkit;
using namespace ToolkitTest;

// What a thread object survives at every stage of its life, and leaves behind.

namespace
{

const int s_iRounds = 3000;
const std::size_t s_uGrowth = 100000;

class HostApp : public wxAppConsole
{
public:
    int OnRun() override { return 0; }
};

// Forgets to wait in its destructor.
class Careless : public Thread
{
protected:
    ExitCode DoWork() override { return nullptr; }
};

// Its writing is a cancellation point.
class DeviceSink : public ILogger
{
public:
    DeviceSink() : ILogger(LogSeverity::Verbose) {}
    void Write(const TString<wchar_t>& text) override
    {
        std::ofstream("/dev/null") << text.size() << std::flush;
    }
};

std::ptrdiff_t ThreadCount()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

// Runs `round` over and over in a process of its own; tells what it printed, what it left running and how
// much memory it kept.
testing::AssertionResult Repeat(const std::function<void()>& round)
{
    return InChild(
        [&round]() -> std::string
        {
            CapturedOutput errors(2);
            round();
            const std::ptrdiff_t threads = ThreadCount();
            const std::size_t memory = mallinfo2().uordblks;
            for (int i = 0; i < s_iRounds; ++i)
                round();
            std::string wrong = errors.Stop();
            if (!WaitUntil([threads] { return ThreadCount() <= threads; }))
                wrong += " threads are left";
            if (mallinfo2().uordblks > memory + s_uGrowth)
                wrong += " memory is left";
            return wrong;
        });
}

// The memory that many workers leave behind on the calling thread.
std::size_t GrowthOverManyWorkers()
{
    const auto round = []
    {
        Worker worker;
        worker.Run();
    };
    round();
    const std::size_t before = mallinfo2().uordblks;
    for (int i = 0; i < s_iRounds; ++i)
        round();
    return mallinfo2().uordblks - std::min(before, mallinfo2().uordblks);
}

// `Repeat` with wxWidgets started by the host.
testing::AssertionResult RepeatStarted(const std::function<void()>& round)
{
    return Repeat(
        [&round]
        {
            static const bool s_bStarted = wxInitialize();
            if (s_bStarted)
                round();
        });
}

} // namespace

TEST(ThreadLife, BeginsWithAThreadOfTheSystem)
{
    // A sanitizer adds a thread of its own to the first one.
    const Worker first;
    const std::ptrdiff_t before = ThreadCount();
    const Worker second;
    EXPECT_EQ(before + 1, ThreadCount());
}

TEST(ThreadLife, NeverRun)
{
    EXPECT_TRUE(RepeatStarted([] { Worker worker; }));
}

TEST(ThreadLife, NeverRunWithoutAWaitingDestructor)
{
    EXPECT_TRUE(RepeatStarted([] { Careless careless; }));
}

TEST(ThreadLife, RunAndDestroyedAtOnce)
{
    EXPECT_TRUE(RepeatStarted(
        []
        {
            bool done = false;
            {
                Worker worker(
                    [&done](Thread& self)
                    {
                        done = true;
                        return self.TestDestroy() ? nullptr : Code(1);
                    });
                worker.Run();
            }
            if (!done)
                std::cerr << "work was not done\n";
        }));
}

TEST(ThreadLife, RunThroughTheBaseClass)
{
    EXPECT_TRUE(RepeatStarted(
        []
        {
            int count = 0;
            {
                Worker worker(
                    [&count](Thread&)
                    {
                        ++count;
                        return Code(3);
                    });
                wxThread& base = worker;
                base.Run();
                if (worker.Run())
                    std::cerr << "was run twice\n";
                if (worker.Wait() != Code(3))
                    std::cerr << "was not waited for\n";
            }
            if (count != 1)
                std::cerr << "work was not done once\n";
        }));
}

TEST(ThreadLife, KilledAtOnce)
{
    EXPECT_TRUE(RepeatStarted(
        []
        {
            std::atomic<int> rounds{0};
            Worker worker(LoopUntilStopped(rounds));
            worker.Run();
            if (worker.Kill() != wxTHREAD_NO_ERROR)
                std::cerr << "was not killed\n";
            if (worker.IsRunning() || worker.Run())
                std::cerr << "is not finished\n";
        }));
}

TEST(ThreadLife, KilledWhileItLogsAndReadsFiles)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            const TemporaryFolder folder;
            WriteBytes(folder.Path("text"), std::string(100000, 'x'));
            const TString<wchar_t> path = folder.Wide("text");
            wxInitialize();
            const InstalledLogger installed(new DeviceSink);
            for (int i = 0; i < 200; ++i)
            {
                std::atomic<int> rounds{0};
                Worker worker(
                    [&](Thread& self) -> wxThread::ExitCode
                    {
                        for (; !self.TestDestroy(); ++rounds)
                        {
                            TOOLKIT_LOG(LogSeverity::Info) << "round " << i;
                            if (i % 2 == 0)
                                continue;
                            TextFile text;
                            text.Open(path);
                            FFile file;
                            file.Open(path, L"r+");
                            file.Write(L"y");
                        }
                        return nullptr;
                    });
                worker.Run();
                if (!WaitUntil([&rounds] { return rounds > 2; }) || worker.Kill() != wxTHREAD_NO_ERROR)
                    return "was not killed";
                worker.Wait();
            }
            wxUninitialize();
            return "";
        }));
}

TEST(ThreadLife, RunAndKilledThroughTheBaseClass)
{
    EXPECT_TRUE(RepeatStarted(
        []
        {
            std::atomic<int> rounds{0};
            Worker worker(LoopUntilStopped(rounds));
            wxThread& base = worker;
            base.Run();
            if (base.Kill() != wxTHREAD_NO_ERROR)
                std::cerr << "was not killed\n";
            if (worker.Run())
                std::cerr << "was run twice\n";
        }));
}

// ThreadSanitizer rightly sees the object go while its thread looks at it.
#if !defined(__SANITIZE_THREAD__)
TEST(ThreadLife, RunAndDestroyedAtOnceWithoutAWaitingDestructor)
{
    EXPECT_TRUE(RepeatStarted(
        []
        {
            Careless careless;
            careless.Run();
        }));
}
#endif

TEST(ThreadLife, FinishedAndNotWaitedFor)
{
    EXPECT_TRUE(RepeatStarted(
        []
        {
            Worker worker;
            worker.Run();
            while (worker.IsRunning())
                std::this_thread::yield();
        }));
}

TEST(ThreadLife, WaitedForWithoutAWaitingDestructor)
{
    EXPECT_TRUE(RepeatStarted(
        []
        {
            Careless careless;
            careless.Run();
            careless.Wait();
        }));
}

TEST(ThreadLife, NeverRunAndWxWidgetsStoppedFirst)
{
    EXPECT_TRUE(Repeat(
        []
        {
            wxInitialize();
            const Worker worker;
            wxUninitialize();
        }));
}

TEST(ThreadLife, FinishedAndWxWidgetsStoppedFirst)
{
    EXPECT_TRUE(Repeat(
        []
        {
            wxInitialize();
            Worker worker;
            worker.Run();
            worker.Wait();
            wxUninitialize();
        }));
}

TEST(ThreadLife, RunningAndWxWidgetsStoppedFirst)
{
    EXPECT_TRUE(Repeat(
        []
        {
            wxInitialize();
            Worker worker;
            worker.Run();
            wxUninitialize();
        }));
}

TEST(ThreadLife, NeverRunWithoutWxWidgets)
{
    EXPECT_TRUE(Repeat([] { const Worker worker; }));
}

TEST(ThreadLife, RunWithoutWxWidgets)
{
    EXPECT_TRUE(Repeat(
        []
        {
            Worker worker;
            worker.Run();
        }));
}

TEST(ThreadLife, FinishedWithoutWxWidgets)
{
    EXPECT_TRUE(Repeat(
        []
        {
            Worker worker;
            worker.Run();
            worker.Wait();
        }));
}

TEST(ThreadLife, InAHostWithAnApplicationObjectOfItsOwn)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            CapturedOutput errors(2);
            wxApp::SetInstance(new HostApp);
            int count = 0;
            if (!wxEntryStart(count, static_cast<wxChar**>(nullptr)))
                return "not started";
            {
                const Worker neverRun;
                Worker finished;
                finished.Run();
                finished.Wait();
            }
            wxEntryCleanup();
            return errors.Stop() + (wxAppConsole::GetInstance() == nullptr ? "" : " still started");
        }));
}

TEST(ThreadLife, FinishedOneOutlivesAnApplicationObjectOfTheHost)
{
    EXPECT_TRUE(InChild(
        []
        {
            wxApp::SetInstance(new HostApp);
            int count = 0;
            if (!wxEntryStart(count, static_cast<wxChar**>(nullptr)))
                return false;
            {
                Worker finished;
                finished.Run();
                finished.Wait();
                // wxWidgets says that this thread is left.
                const CapturedOutput errors(2);
                wxEntryCleanup();
            }
            return wxAppConsole::GetInstance() == nullptr;
        }));
}

TEST(ThreadLife, MadeAndDestroyedOnAnotherThread)
{
    // wxWidgets keeps a record of every foreign thread, so that there is only one here.
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            CapturedOutput errors(2);
            wxInitialize();
            std::size_t grown = 0;
            std::thread([&grown] { grown = GrowthOverManyWorkers(); }).join();
            wxUninitialize();
            return errors.Stop() + (grown < s_uGrowth ? "" : " memory is left");
        }));
}

TEST(ThreadLife, OneObjectOutlivesManyStartsOfWxWidgets)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            CapturedOutput errors(2);
            {
                const Worker worker;
                for (int i = 0; i < 20; ++i)
                {
                    wxInitialize();
                    wxUninitialize();
                }
            }
            return errors.Stop() + (wxAppConsole::GetInstance() == nullptr ? "" : " still started");
        }));
}
