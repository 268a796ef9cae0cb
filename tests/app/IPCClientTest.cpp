// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCClient.h"

#include <chrono>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <wx/sckipc.h>

#include "tests/support/IPCSupport.h"
#include "tests/support/InChild.h"
#include "tests/support/OwnNetwork.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/internal/wx/WxText.h"

using testing::ElementsAre;
using testing::IsEmpty;
using Toolkit::IPCClient;
using Toolkit::ToolkitSession;
using namespace ToolkitTest;

namespace
{

using namespace std::string_literals;

const unsigned int s_uNoLimit = 4294967295U;

// What a server of wxWidgets itself gets.
struct Got
{
    std::vector<std::wstring> m_topics;
    std::vector<std::wstring> m_texts;
};

class PlainConnection : public wxTCPConnection
{
public:
    explicit PlainConnection(Got& got) : m_got(got) {}

    bool OnExec(const wxString& topic, const wxString& text) override
    {
        m_got.m_topics.push_back(Toolkit::FromWx(topic));
        m_got.m_texts.push_back(Toolkit::FromWx(text));
        return true;
    }

private:
    Got& m_got;
};

class PlainServer : public wxTCPServer
{
public:
    explicit PlainServer(Got& got, bool accepts = true) : m_got(got), m_bAccepts(accepts) {}

    wxConnectionBase* OnAcceptConnection(const wxString&) override
    {
        return m_bAccepts ? new PlainConnection(m_got) : nullptr;
    }

private:
    Got& m_got;
    const bool m_bAccepts;
};

// The descriptor of a socket at the path that listens and never answers.
int ListenSilently(const std::string& path, int backlog)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(0, bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    EXPECT_EQ(0, listen(listener, backlog));
    return listener;
}

} // namespace

class IPCClientTest : public testing::Test
{
protected:
    std::wstring Service(const std::string& name = "s") const { return m_folder.Wide(name); }
    std::string Path(const std::string& name = "s") const { return m_folder.Path(name); }

    const TemporaryFolder m_folder;
    const ToolkitSession m_session;
};

TEST_F(IPCClientTest, SendsTheTopicAsTheCommand)
{
    const std::wstring large(1000000, wchar_t(0x1f600));
    const std::wstring rows[] = {L"open x", L"", L"\u00e4\u4e2d\U0001f600", L"a\nb\t\x7f", large};
    for (const std::wstring& service : {Service(), FreePort()})
    {
        RecordingServer server(service);
        ASSERT_TRUE(server.Run());
        for (const std::wstring& row : rows)
            EXPECT_TRUE(SendTo(service, row));
        EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 5; }));
        EXPECT_TRUE(server.Received() == Commands(std::begin(rows), std::end(rows)));
    }
}

TEST_F(IPCClientTest, CutsTheTopicAtItsFirstZero)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(SendTo(Service(), L"cut\0off"s));
    EXPECT_TRUE(SendTo(Service(), L"\0off"s));
    EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 2; }));
    EXPECT_THAT(server.Received(), ElementsAre(L"cut", L""));
}

TEST_F(IPCClientTest, RefusesTopicsThatHaveNoUTF8OrTooMuchOfIt)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    EXPECT_FALSE(SendTo(Service(), L"a"s + wchar_t(0xd800)));
    EXPECT_FALSE(SendTo(Service(), L"a"s + wchar_t(0x110000)));
    EXPECT_FALSE(SendTo(Service(), L"a"s + static_cast<wchar_t>(0x80000041)));
    EXPECT_FALSE(SendTo(Service(), std::wstring(64 * 1024 * 1024, L'x')));
    EXPECT_TRUE(SendTo(Service(), L"last"));
    EXPECT_TRUE(PumpUntil([&server] { return !server.Received().empty(); }));
    EXPECT_THAT(server.Received(), ElementsAre(L"last"));
}

// In a network with one port for clients, theirs is the one that they connect to.
TEST(IPCClient, DoesNotTakeItselfForAServer)
{
    EXPECT_TRUE(InChild(
        []() -> ChildAnswer
        {
            const char* const range = "/proc/sys/net/ipv4/ip_local_port_range";
            if (!EnterOwnNetwork() || access(range, W_OK) != 0)
                return NotAllowed("a network of its own");
            WriteBytes(range, "40000 40000");
            const ToolkitSession session;
            return !SendTo(L"40000", L"open x");
        }));
}

TEST_F(IPCClientTest, AnswersFalseWithoutAServer)
{
    LeaveStaleSocket(Path("stale"));
    WriteBytes(Path("file"), "content");
    CapturedOutput errors(2);
    for (const std::wstring& service : {Service(), Service("stale"), Service("file"), Service("missing/s"),
                                        std::wstring(m_folder.Wide()), FreePort(), L"0"s, L"65536"s})
    {
        EXPECT_FALSE(IPCClient::Connect(service, L"open x")) << testing::PrintToString(service);
        EXPECT_FALSE(IPCClient::Connect(service, L"open x", 0));
        EXPECT_FALSE(IPCClient::Connect(service, L"open x", s_uNoLimit));
    }
    EXPECT_EQ("", errors.Stop());
}

TEST_F(IPCClientTest, FollowsNoLink)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    ASSERT_EQ(0, symlink(Path().c_str(), Path("link").c_str()));
    EXPECT_FALSE(SendTo(Service("link"), L"open x"));
    EXPECT_TRUE(SendTo(Service(), L"open x"));
}

TEST_F(IPCClientTest, WorksOnTheServersOwnThread)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(IPCClient::Connect(Service(), L"one"));
    EXPECT_TRUE(IPCClient::Connect(Service(), std::wstring(3000000, L'x')));
    EXPECT_THAT(server.Received(), IsEmpty()) << "the loop delivers";
    EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 2; }));
    EXPECT_EQ(3000000U, server.Received()[1].size());
}

TEST_F(IPCClientTest, SendsToAServerOfWxWidgets)
{
    for (const std::wstring& service : {Service(), FreePort()})
    {
        Got got;
        PlainServer server(got);
        ASSERT_TRUE(server.Create(service));
        EXPECT_TRUE(SendTo(service, L"open \u4e2d\U0001f600"));
        EXPECT_TRUE(PumpUntil([&got] { return !got.m_texts.empty(); }));
        EXPECT_THAT(got.m_topics, ElementsAre(L"open \u4e2d\U0001f600"));
        EXPECT_THAT(got.m_texts, ElementsAre(L"open \u4e2d\U0001f600"));
    }
}

TEST_F(IPCClientTest, AnswersFalseWhenTheTopicIsNotAccepted)
{
    Got got;
    PlainServer server(got, false);
    ASSERT_TRUE(server.Create(Service()));
    EXPECT_FALSE(SendTo(Service(), L"open x"));
    EXPECT_THAT(got.m_texts, IsEmpty());
}

TEST(IPCClient, OfWxWidgetsIsTaken)
{
    const TemporaryFolder folder;
    for (const std::wstring& service : {std::wstring(folder.Wide("s")), FreePort()})
    {
        ForkedCopy client(
            [&]() -> ChildAnswer
            {
                const bool local = service == folder.Wide("s");
                if (!WaitUntil(
                        [&]
                        {
                            return (local ? RawClient(folder.Path("s"))
                                          : RawClient(static_cast<unsigned short>(std::stoul(service))))
                                .IsConnected();
                        }))
                    return "there is no server";
                const ToolkitSession session;
                wxTCPClient plain;
                wxConnectionBase* const connection = plain.MakeConnection("localhost", service, "topic");
                const bool sent = connection != nullptr && connection->Execute(wxString(L"text \u4e2d")) &&
                                  connection->Execute("narrow") && connection->Execute(L"wide \u4e2d") &&
                                  connection->Request("item") == nullptr &&
                                  !connection->StartAdvise("item") && connection->Poke("item", "data") &&
                                  connection->Execute("last");
                delete connection;
                return sent;
            });
        const ToolkitSession session;
        RecordingServer server(service);
        ASSERT_TRUE(server.Run());
        EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 4; }));
        EXPECT_THAT(server.Received(), ElementsAre(L"text \u4e2d", L"narrow", L"wide \u4e2d", L"last"));
        EXPECT_EQ("", client.Wait());
    }
}

TEST_F(IPCClientTest, TrustsNoSocketOfAnotherUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may become another user";
    ASSERT_EQ(0, chmod(m_folder.Path().c_str(), 0777));
    const std::wstring service = Service();
    EXPECT_TRUE(AsNobody(
        [this]() -> ChildAnswer
        {
            const int listener = ListenSilently(Path(), 5);
            return listener != -1;
        }));
    struct stat before = {};
    ASSERT_EQ(0, lstat(Path().c_str(), &before));
    EXPECT_FALSE(IPCClient::Connect(service, L"open x", 1000));
    Toolkit::IPCServer server(service);
    EXPECT_FALSE(server.Run()) << "nor is it taken over";
    struct stat after = {};
    ASSERT_EQ(0, lstat(Path().c_str(), &after));
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(IPCClientTest, TrustsNoProcessOfAnotherUserBehindItsOwnSocket)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root may become another user";
    ASSERT_EQ(0, chmod(m_folder.Path().c_str(), 0777));
    EXPECT_TRUE(InChild(
        [this]() -> ChildAnswer
        {
            const int listener = ListenSilently(Path(), 5);
            if (chown(Path().c_str(), 12345, 12345) != 0 || seteuid(12345) != 0)
                return "not prepared";
            const bool answer = IPCClient::Connect(Service(), L"open x", 60000);
            close(listener);
            return !answer;
        }));
}

TEST(IPCClient, WorksWithoutWxWidgets)
{
    const TemporaryFolder folder;
    CapturedOutput errors(2);
    EXPECT_FALSE(IPCClient::Connect(L"", L"open x")) << "there is no default yet";
    EXPECT_FALSE(IPCClient::Connect(folder.Wide("s"), L"open x"));
    bool answer = true;
    std::thread([&] { answer = IPCClient::Connect(folder.Wide("s"), L"open x"); }).join();
    EXPECT_FALSE(answer);
    EXPECT_EQ("", errors.Stop());
}

TEST(IPCClientTiming, GivesUpASilentServerInTime)
{
    const TemporaryFolder folder;
    const int listener = ListenSilently(folder.Path("s"), 5);
    const auto taken = [&folder](auto... timeout)
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(IPCClient::Connect(folder.Wide("s"), L"open x", timeout...));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    EXPECT_LT(taken(0U), 1);
    const double limited = taken(200U);
    EXPECT_GE(limited, 0.2);
    EXPECT_LT(limited, 2);
    const double byDefault = taken();
    EXPECT_GE(byDefault, 10);
    EXPECT_LT(byDefault, 12);
    close(listener);
}

TEST(IPCClientTiming, GivesUpAFullServerInTime)
{
    const TemporaryFolder folder;
    const int listener = ListenSilently(folder.Path("s"), 0);
    const RawClient first(folder.Path("s"));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(IPCClient::Connect(folder.Wide("s"), L"open x", 200));
    EXPECT_FALSE(IPCClient::Connect(folder.Wide("s"), L"open x", 0));
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken.count(), 0.2);
    EXPECT_LT(taken.count(), 2);
    close(listener);
}
