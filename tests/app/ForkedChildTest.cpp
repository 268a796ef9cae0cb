// SPDX-License-Identifier: MIT
// What a forked child that does not replace its image keeps of a process that was killed: nothing that
// anybody waits for.

#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/IPCSupport.h"
#include "tests/support/InChild.h"
#include "tests/support/LogFile.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/LogRecord.h"
#include "toolkit/log/RunLog.h"

using Toolkit::FileLogger;
using Toolkit::RunLog;
using Toolkit::RunLogOptions;
using Toolkit::SingleApplicationInstance;
using Toolkit::ToolkitSession;
using ToolkitTest::ChildAnswer;
using ToolkitTest::ForkedCopy;
using ToolkitTest::InChild;
using ToolkitTest::LogFile;
using ToolkitTest::RecordingServer;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TemporaryFolder;

namespace
{

// A process that does its work, forks a child that lives as long as this object, and waits to be killed.
class Host
{
public:
    // `inChild` is what the forked child does before it waits.
    explicit Host(
        const std::function<bool(const std::function<void()>& forkAndWait)>& work,
        const std::function<void()>& inChild = [] {})
        : m_inChild(inChild),
          m_process(
              [this, work]() -> ChildAnswer
              {
                  close(m_ends.m_out[0]);
                  close(m_ends.m_in[1]);
                  return work([this] { ForkAndWait(); });
              })
    {
        close(m_ends.m_in[0]);
        close(m_ends.m_out[1]);
    }
    ~Host()
    {
        close(m_ends.m_in[1]);
        // The end of the file comes when the last child has ended.
        char byte = 0;
        while (read(m_ends.m_out[0], &byte, 1) > 0)
            continue;
        close(m_ends.m_out[0]);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // False when the work has failed.
    bool KillWhenReady()
    {
        char byte = 0;
        const bool ready = read(m_ends.m_out[0], &byte, 1) == 1;
        m_process.Kill();
        return ready;
    }

private:
    struct Ends
    {
        Ends()
        {
            EXPECT_EQ(0, pipe2(m_in, O_CLOEXEC));
            EXPECT_EQ(0, pipe2(m_out, O_CLOEXEC));
        }
        int m_in[2];
        int m_out[2];
    };

    void ForkAndWait()
    {
        if (fork() != 0)
        {
            pause();
            return;
        }
        m_inChild();
        char byte = 'r';
        static_cast<void>(write(m_ends.m_out[1], &byte, 1));
        while (read(m_ends.m_in[0], &byte, 1) > 0)
            continue;
        _exit(0);
    }

    Ends m_ends;
    const std::function<void()> m_inChild;
    ForkedCopy m_process;
};

} // namespace

TEST(ForkedChild, KeepsNoSocketOfAKilledServer)
{
    const TemporaryFolder folder;
    Host host(
        [&folder](const std::function<void()>& forkAndWait)
        {
            const ToolkitSession session;
            RecordingServer server(folder.Wide("s"));
            if (server.Run())
                forkAndWait();
            return false;
        });
    ASSERT_TRUE(host.KillWhenReady());
    const ToolkitSession session;
    RecordingServer server(folder.Wide("s"));
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(ToolkitTest::SendTo(folder.Wide("s"), L"open x"));
    EXPECT_TRUE(ToolkitTest::PumpUntil([&server] { return !server.Received().empty(); }));
}

TEST(ForkedChild, KeepsNoConnectionOfAKilledServer)
{
    const TemporaryFolder folder;
    const std::string marker = folder.Path("accepted");
    Host host(
        [&](const std::function<void()>& forkAndWait)
        {
            const ToolkitSession session;
            RecordingServer server(folder.Wide("s"));
            if (!server.Run())
                return false;
            ToolkitTest::WriteBytes(marker, "");
            if (ToolkitTest::PumpUntil([&server] { return !server.Received().empty(); }))
                forkAndWait();
            return false;
        });
    ASSERT_TRUE(ToolkitTest::WaitUntil([&marker] { return std::filesystem::exists(marker); }));
    ToolkitTest::RawClient client(folder.Path("s"));
    client.Send(ToolkitTest::ConnectBytes("t") + ToolkitTest::ExecuteBytes(1, "x"));
    ASSERT_TRUE(host.KillWhenReady());
    client.Receive();
    EXPECT_TRUE(ToolkitTest::WaitUntil([&client] { return client.IsClosed(); }));
}

TEST(ForkedChild, KeepsNoLogFileLocked)
{
    const LogFile log;
    Host host(
        [&log](const std::function<void()>& forkAndWait)
        {
            FileLogger logger(Toolkit::LogSeverity::Info, log.WideName(), 1000);
            logger.Write(L"first");
            if (ToolkitTest::WaitUntil([&log] { return log.Bytes() == "first"; }))
                forkAndWait();
            return false;
        });
    ASSERT_TRUE(host.KillWhenReady());
    {
        FileLogger logger(Toolkit::LogSeverity::Info, log.WideName(), 1000);
        logger.Write(L"second");
    }
    EXPECT_EQ("second", log.Bytes());
    EXPECT_TRUE(log.FallbackPaths().empty());
}

TEST(ForkedChild, KeepsNoFileOfARunInUse)
{
    const TemporaryFolder folder;
    const RunLogOptions options = RunLogOptions("run").Folder(folder.Path()).Keep(1);
    const auto files = [&folder]
    { return std::distance(std::filesystem::directory_iterator(folder.Path()), {}); };
    Host host(
        [&options](const std::function<void()>& forkAndWait)
        {
            const auto log = RunLog::Open(options);
            if (log)
                forkAndWait();
            return false;
        });
    ASSERT_TRUE(host.KillWhenReady());
    ASSERT_EQ(1, files());
    EXPECT_TRUE(RunLog::Open(options));
    EXPECT_EQ(1, files());
}

// As a program that goes on in the background does.
TEST(ForkedChild, KeepsTheFileOfARunThatItWrites)
{
    const TemporaryFolder folder;
    const RunLogOptions options = RunLogOptions("run").Folder(folder.Path()).Keep(1);
    std::shared_ptr<RunLog> log;
    Host host(
        [&](const std::function<void()>& forkAndWait)
        {
            log = RunLog::Open(options).value();
            forkAndWait();
            return false;
        },
        [&log] { log->Write(Toolkit::LogRecord()); });
    ASSERT_TRUE(host.KillWhenReady());
    const std::filesystem::path own = std::filesystem::directory_iterator(folder.Path())->path();
    EXPECT_TRUE(RunLog::Open(options));
    EXPECT_TRUE(std::filesystem::exists(own));
}

TEST(ForkedChild, KeepsNoInstanceAlive)
{
    const TemporaryFolder home;
    const ScopedEnvironment environment("HOME", home.Path().c_str());
    Host host(
        [](const std::function<void()>& forkAndWait)
        {
            const ToolkitSession session;
            if (!(*SingleApplicationInstance::s_pInstance)->IsAlreadyRunning())
                forkAndWait();
            return false;
        });
    ASSERT_TRUE(host.KillWhenReady());
    EXPECT_TRUE(InChild(
        []
        {
            const ToolkitSession session;
            return !(*SingleApplicationInstance::s_pInstance)->IsAlreadyRunning();
        }));
}

// The number of a descriptor that is not shared is nobody else's in the child.
TEST(ForkedChild, MayDropItsCopyOfAServer)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(InChild(
        [&folder]() -> ChildAnswer
        {
            const ToolkitSession session;
            auto server = std::make_unique<RecordingServer>(folder.Wide("s"));
            if (!server->Run())
                return "not run";
            const testing::AssertionResult dropped = InChild(
                [&server]
                {
                    const int own = open("/dev/null", O_RDONLY | O_CLOEXEC);
                    server.reset();
                    return fcntl(own, F_GETFD) != -1;
                });
            if (!dropped)
                return dropped.message();
            return ToolkitTest::SendTo(folder.Wide("s"), L"open x") ? ""
                                                                    : "the parent does not listen any more";
        }));
}
