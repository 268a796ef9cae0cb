// SPDX-License-Identifier: MIT
// What is left when a server goes, or the process of which it is a copy, or wxWidgets.

#include "toolkit/app/IPCServer.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <wx/app.h>
#include <wx/init.h>

#include "tests/support/IPCServerFixture.h"
#include "tests/support/InChild.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/app/IPCClient.h"

using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Toolkit::EventPump;
using Toolkit::IPCClient;
using Toolkit::IPCServer;
using Toolkit::ToolkitSession;
using Toolkit::TString;
using namespace ToolkitTest;

namespace
{

namespace fs = std::filesystem;

// A host that brings wxWidgets up with an application object of its own.
class HostApplication : public wxAppConsole
{
public:
    int OnRun() override { return 0; }
};

} // namespace

TEST_F(IPCServerTest, LeavesNothingBehind)
{
    {
        IPCServer server(Service());
        ASSERT_TRUE(server.Run());
        EXPECT_EQ(1, std::distance(fs::directory_iterator(m_folder.Path()), fs::directory_iterator()));
    }
    EXPECT_TRUE(fs::is_empty(m_folder.Path()));
}

TEST_F(IPCServerTest, RemovesNoFileButItsOwn)
{
    auto server = std::make_unique<IPCServer>(Service());
    ASSERT_TRUE(server->Run());
    fs::remove(Path());
    WriteBytes(Path(), "content");
    server.reset();
    EXPECT_EQ("content", ReadBytes(Path()));
}

TEST_F(IPCServerTest, RemovesItsFileWhateverTheWorkingFolderBecame)
{
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.Path());
    auto server = std::make_unique<IPCServer>(L"relative");
    ASSERT_TRUE(server->Run());
    EXPECT_TRUE(fs::is_socket(Path("relative")));
    EXPECT_TRUE(SendTo(L"relative", L"open x"));
    fs::current_path(before);
    server.reset();
    EXPECT_TRUE(fs::is_empty(m_folder.Path()));
}

TEST_F(IPCServerTest, ForkedCopyLeavesTheServerAlone)
{
    auto server = std::make_unique<RecordingServer>(Service());
    ASSERT_TRUE(server->Run());
    EXPECT_TRUE(InChild(
        [&server]
        {
            server.reset();
            return true;
        }));
    EXPECT_TRUE(fs::is_socket(Path()));
    EXPECT_TRUE(SendTo(Service(), L"open x"));
    EXPECT_TRUE(PumpUntil([&server] { return !server->Received().empty(); }));
}

TEST_F(IPCServerTest, ForkedCopyTakesNoneOfTheClientsAndDeliversNothing)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    RawClient begun(Path());
    begun.Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "read before"));
    // Both are served while this thread connects, and delivered later.
    EXPECT_TRUE(IPCClient::Connect(Service(), L"sent before"));
    EXPECT_EQ("\x0a", begun.Receive());
    EXPECT_TRUE(begun.Send(ExecuteBytes(s_iUTF8, "read later")));
    RawClient waiting(Path());
    EXPECT_TRUE(waiting.Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "accepted later")));
    EXPECT_TRUE(InChild(
        [&]() -> ChildAnswer
        {
            if (IPCClient::Connect(Service(), L"never accepted", 200))
                return "served by the copy";
            EventPump().Run(0);
            if (server.Run())
                return "listens as well";
            EventPump().Run(0);
            return server.Received().empty();
        }));
    EXPECT_TRUE(SendTo(Service(), L"last"));
    EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 5; }));
    EXPECT_THAT(server.Received(), UnorderedElementsAre(L"read before", L"sent before", L"read later",
                                                        L"accepted later", L"last"));
    EXPECT_FALSE(begun.IsClosed());
    EXPECT_FALSE(waiting.IsClosed());
}

TEST_F(IPCServerTest, ThatNeverListenedGoesOnAnyThread)
{
    std::atomic<bool> ended{false};
    std::thread worker(
        [&]
        {
            for (int i = 0; i < 2000; ++i)
            {
                IPCServer server(Service("other"));
                server.SendExecuteEvent(L"nobody hears");
            }
            ended = true;
        });
    while (!ended)
    {
        RecordingServer server(Service());
        EXPECT_TRUE(server.Run());
        EXPECT_TRUE(IPCClient::Connect(Service(), L"open x"));
    }
    worker.join();
}

TEST_F(IPCServerTest, ConnectionsEndWithTheServer)
{
    auto server = std::make_unique<RecordingServer>(Service());
    ASSERT_TRUE(server->Run());
    RawClient begun(Path());
    RawClient silent(Path());
    begun.Send(ConnectBytes("t"));
    EXPECT_TRUE(PumpUntil([&begun] { return begun.Receive() == "\x0a"; }));
    EXPECT_FALSE(begun.IsClosed());
    server.reset();
    EXPECT_TRUE(begun.IsClosed());
    EXPECT_TRUE(silent.IsClosed());
    EXPECT_TRUE(EventPump().Run(0));
}

TEST_F(IPCServerTest, CommandsThatWaitEndWithTheServer)
{
    auto server = std::make_unique<IPCServer>(Service());
    Commands heard;
    server->AddListener(Calling([&heard](const TString<wchar_t>& command) { heard.push_back(command); }));
    ASSERT_TRUE(server->Run());
    // On this thread the client serves itself; the command waits for the loop.
    EXPECT_TRUE(IPCClient::Connect(Service(), L"open x", 5000));
    EXPECT_TRUE(IPCClient::Connect(Service(), L"open y", 5000));
    server.reset();
    EXPECT_TRUE(EventPump().Run(0));
    EXPECT_THAT(heard, IsEmpty());
}

TEST(IPCServer, KeepsWxWidgetsWhileItListens)
{
    const TemporaryFolder folder;
    std::optional<RecordingServer> server;
    {
        const ToolkitSession session;
        server.emplace(folder.Wide("s"));
        ASSERT_TRUE(server->Run());
    }
    EXPECT_TRUE(SendTo(folder.Wide("s"), L"open x"));
    EXPECT_TRUE(PumpUntil([&server] { return !server->Received().empty(); }));
    server.reset();
    EXPECT_FALSE(EventPump().Run(0)) << "it is stopped with the server";
}

TEST(IPCServer, SurvivesTheApplicationObjectOfTheHost)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(InChild(
        [&folder]() -> ChildAnswer
        {
            RecordingServer server(folder.Wide("s"));
            for (int start = 0; start < 2; ++start)
            {
                int count = 0;
                wxAppConsole::SetInstance(new HostApplication);
                if (!wxEntryStart(count, static_cast<char**>(nullptr)))
                    return "not started";
                if (!server.Run() || !SendTo(folder.Wide("s"), L"open x"))
                    return "not run";
                if (!PumpUntil([&] { return server.Received().size() > static_cast<std::size_t>(start); }))
                    return "nothing received";
                fs::remove(folder.Path("s"));
                wxEntryCleanup();
            }
            return !server.Run();
        }));
}
