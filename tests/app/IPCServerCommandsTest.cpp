// SPDX-License-Identifier: MIT
// What a server hears of its clients, and what it does about those that mean harm.

#include "toolkit/app/IPCServer.h"

#include <atomic>
#include <ctime>
#include <filesystem>
#include <functional>
#include <future>
#include <list>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <wx/event.h>

#include "tests/support/IPCServerFixture.h"
#include "tests/support/InChild.h"
#include "tests/support/InstalledLogger.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/log/NullLogger.h"

using testing::ElementsAre;
using testing::IsEmpty;
using Toolkit::EventPump;
using Toolkit::ILogger;
using Toolkit::IPCClient;
using Toolkit::IPCServer;
using Toolkit::smart_ptr;
using Toolkit::ToolkitSession;
using Toolkit::TString;
using namespace ToolkitTest;

namespace
{

namespace fs = std::filesystem;

bool PumpUntilWithin(EventPump& pump, const std::function<bool()>& condition)
{
    for (int i = 0; i < 6000 && !condition(); ++i)
        pump.Run(10);
    return condition();
}

} // namespace

TEST_F(IPCServerTest, DeliversACommandToEveryListenerInTheirOrder)
{
    IPCServer server(Service());
    Commands heard;
    for (const std::wstring listener : {L"first: ", L"second: ", L"third: "})
        server.AddListener(Calling([&heard, listener](const TString<wchar_t>& command)
                                   { heard.push_back(listener + command); }));
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(SendTo(Service(), L"open x"));
    EXPECT_TRUE(PumpUntil([&heard] { return heard.size() >= 3; }));
    EXPECT_THAT(heard, ElementsAre(L"first: open x", L"second: open x", L"third: open x"));
}

TEST_F(IPCServerTest, AcceptsACommandWithoutAnyListener)
{
    IPCServer server(Service());
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(SendTo(Service(), L"open x"));
    EventPump().Run(0);
    Commands heard;
    server.AddListener(Calling([&heard](const TString<wchar_t>& command) { heard.push_back(command); }));
    EXPECT_TRUE(SendTo(Service(), L"open y"));
    EXPECT_TRUE(PumpUntil([&heard] { return !heard.empty(); }));
    EXPECT_EQ(L"open y", heard.back());
}

TEST_F(IPCServerTest, ExceptionOfAListenerPassesAndUnlocks)
{
    IPCServer server(Service());
    Commands heard;
    server.AddListener(Calling([](const TString<wchar_t>&) { throw std::runtime_error("refused"); }));
    server.AddListener(Calling([&heard](const TString<wchar_t>& command) { heard.push_back(command); }));
    EXPECT_THROW(server.SendExecuteEvent(L"open x"), std::runtime_error);
    EXPECT_THAT(heard, IsEmpty());
    // Another thread gets the mutex.
    std::thread([&server] { server.AddListener(Calling([](const TString<wchar_t>&) {})); }).join();
}

TEST_F(IPCServerTest, ExceptionOfAListenerIsLoggedAndTheNextCommandDelivered)
{
    Record record;
    ILogger::SetLogger(smart_ptr<ILogger>(new RecordingLogger(record)));
    RecordingServer server(Service());
    server.AddListener(Calling(
        [](const TString<wchar_t>& command)
        {
            if (command == L"throw")
                throw std::runtime_error("refused");
            if (command == L"throw else")
                throw 1;
        }));
    ASSERT_TRUE(server.Run());
    for (const wchar_t* const command : {L"throw", L"throw else", L"go on"})
        EXPECT_TRUE(SendTo(Service(), command));
    EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 3; }));
    EXPECT_THAT(server.Received(), ElementsAre(L"throw", L"throw else", L"go on"));
    const std::wstring text = record.Text();
    EXPECT_EQ(0U, text.find(L"0 "));
    EXPECT_NE(std::wstring::npos, text.find(L" : IPCEndpoint::HandOver : a listener failed: refused\n"));
    EXPECT_NE(std::wstring::npos, text.find(L" : a listener failed: unknown exception\n"));
}

TEST_F(IPCServerTest, SinkThatFailsTooDoesNotEndTheLoop)
{
    class FailingLogger : public ILogger
    {
    public:
        FailingLogger() : ILogger(Toolkit::LogSeverity::Verbose) {}
        void Write(const TString<wchar_t>&) override { throw std::runtime_error("no sink"); }
    };
    RecordingServer server(Service());
    server.AddListener(Calling([](const TString<wchar_t>&) { throw std::runtime_error("refused"); }));
    ASSERT_TRUE(server.Run());
    ILogger::SetLogger(smart_ptr<ILogger>(new FailingLogger));
    EXPECT_TRUE(SendTo(Service(), L"throw"));
    EXPECT_TRUE(SendTo(Service(), L"go on"));
    EXPECT_NO_THROW(EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 2; })));
    ILogger::SetLogger(smart_ptr<ILogger>(new Toolkit::NullLogger));
}

TEST_F(IPCServerTest, ListenerMayRunALoopOfItsOwn)
{
    IPCServer server(Service());
    Commands heard;
    server.AddListener(Calling(
        [&heard](const TString<wchar_t>& command)
        {
            heard.push_back(command);
            EXPECT_TRUE(command != L"outer" || PumpUntil([&heard] { return heard.size() >= 3; }));
            heard.push_back(L"end of " + command);
        }));
    ASSERT_TRUE(server.Run());
    RawClient client(Path());
    client.Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "outer") + ExecuteBytes(s_iUTF8, "inner"));
    EXPECT_TRUE(PumpUntil([&heard] { return heard.size() >= 4; }));
    EXPECT_THAT(heard, ElementsAre(L"outer", L"inner", L"end of inner", L"end of outer"));
}

TEST_F(IPCServerTest, ListenerMayRunTheServerAnew)
{
    IPCServer server(Service());
    Commands heard;
    server.AddListener(Calling(
        [&](const TString<wchar_t>& command)
        {
            heard.push_back(command);
            fs::remove(Path());
            EXPECT_TRUE(server.Run());
        }));
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(SendTo(Service(), L"one"));
    EXPECT_TRUE(PumpUntil([&heard] { return heard.size() >= 1; }));
    EXPECT_TRUE(SendTo(Service(), L"two"));
    EXPECT_TRUE(PumpUntil([&heard] { return heard.size() >= 2; }));
    EXPECT_THAT(heard, ElementsAre(L"one", L"two"));
}

TEST_F(IPCServerTest, DecodesCommandsByTheirFormat)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    const wchar_t wide[] = L"wide \u4e2d";
    const std::string wideBytes(reinterpret_cast<const char*>(wide), sizeof wide);
    RawClient client(Path());
    client.Send(ConnectBytes("t") + ExecuteBytes(wxIPC_TEXT, "narrow") +
                ExecuteBytes(wxIPC_PRIVATE, "private") + ExecuteBytes(255, "none") +
                ExecuteBytes(wxIPC_UNICODETEXT, wideBytes) + ExecuteBytes(wxIPC_UTF8TEXT, "\xff") +
                ExecuteBytes(wxIPC_UNICODETEXT, wideBytes.substr(0, 11)) +
                ExecuteBytes(wxIPC_UTF8TEXT, std::string("cut\0off", 7)) + ExecuteBytes(wxIPC_UTF8TEXT, ""));
    EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 7; }));
    EXPECT_THAT(server.Received(),
                ElementsAre(L"narrow", L"private", L"none", L"wide \u4e2d", L"wi", L"cut", L""));
}

TEST_F(IPCServerTest, AnswersTheProtocol)
{
    struct Row
    {
        std::string m_strSent;
        std::string m_strAnswer;
        bool m_bClosed;
    };
    const std::string start = ConnectBytes("t");
    const std::string item = Sized("i");
    const Row rows[] = {{start, "\x0a", false},
                        {ConnectBytes(""), "\x0a", false},
                        {ConnectBytes("\xff"), "\x0a", false},
                        {start + "\x02" + item + "\x01", "\x0a\x09", false},
                        {start + "\x04" + item, "\x0a\x09", false},
                        {start + "\x07" + item, "\x0a\x09", false},
                        {start + "\x03" + item + "\x01" + Sized("data"), "\x0a", false},
                        {start + "\x06" + item + "\x01" + Sized("data"), "\x0a", false},
                        {start + "\x0b", "\x0a", true},
                        {start + "\x09", "\x0a", true},
                        {start + start, "\x0a", true},
                        {start + "\x0c", "\x0a\x09", true},
                        {start + std::string("\x01\x11\xff\xff\xff\xff"), "\x0a\x09", true},
                        {ExecuteBytes(s_iUTF8, "go"), "\x09", true},
                        {"\x0b", "\x09", true},
                        {"GET / HTTP/1.1\r\n\r\n", "\x09", true},
                        {std::string("\x0a\xff\xff\xff\xff"), "\x09", true}};
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    for (const Row& row : rows)
    {
        RawClient client(Path());
        client.Send(row.m_strSent);
        std::string answer;
        EXPECT_TRUE(PumpUntil(
            [&]
            {
                answer += client.Receive();
                return answer.size() >= row.m_strAnswer.size() && (!row.m_bClosed || client.IsClosed());
            }));
        EXPECT_EQ(row.m_strAnswer, answer) << testing::PrintToString(row.m_strSent);
        EXPECT_EQ(row.m_bClosed, client.IsClosed()) << testing::PrintToString(row.m_strSent);
    }
    EXPECT_THAT(server.Received(), IsEmpty());
}

TEST_F(IPCServerTest, DeliversWhatCameBeforeTheDisconnection)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    RawClient(Path()).Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "one") + ExecuteBytes(s_iUTF8, "two"));
    RawClient(Path()).Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "half").substr(0, 8));
    EXPECT_TRUE(SendTo(Service(), L"last"));
    EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 3; }));
    EXPECT_THAT(server.Received(), ElementsAre(L"one", L"two", L"last"));
}

TEST_F(IPCServerTest, KeepsEverySilentClientAndHearsAllOfThem)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    const std::size_t count = 300;
    std::vector<RawClient> clients;
    for (std::size_t i = 0; i < count; ++i)
    {
        clients.emplace_back(Path());
        clients.back().Send(ConnectBytes("t"));
        EXPECT_TRUE(PumpUntil([&clients] { return !clients.back().Receive().empty(); }));
    }
    for (RawClient& client : clients)
        EXPECT_FALSE(client.IsClosed());
    for (std::size_t i = 0; i < count; ++i)
        EXPECT_TRUE(clients[i].Send(ExecuteBytes(s_iUTF8, std::to_string(i))));
    EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= count; }));
    EXPECT_TRUE(SendTo(Service(), L"open x"));
    for (RawClient& client : clients)
        EXPECT_FALSE(client.IsClosed());
}

TEST_F(IPCServerTest, HearsACommandBeforeAnyNumberOfNewClients)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(IPCClient::Connect(Service(), L"open x"));
    std::vector<RawClient> others;
    for (int i = 0; i < 300; ++i)
        others.emplace_back(Path());
    EXPECT_TRUE(PumpUntil([&server] { return !server.Received().empty(); }));
    EXPECT_THAT(server.Received(), ElementsAre(L"open x"));
}

// The memory that this process has in use, in bytes.
long long MemoryInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks + info.hblkhd);
}

TEST_F(IPCServerTest, KeepsNoMoreOfALongTopicThanItNeeds)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    const std::size_t size = 32 * 1024 * 1024;
    std::vector<RawClient> clients;
    const auto connect = [&](const std::string& topic)
    {
        const std::string bytes = ConnectBytes(topic);
        clients.emplace_back(Path());
        std::future<bool> sent =
            std::async(std::launch::async, [&] { return clients.back().SendAll(bytes); });
        EXPECT_TRUE(PumpUntil([&clients] { return !clients.back().Receive().empty(); }));
        EXPECT_TRUE(sent.get());
    };
    connect("t");
    const long long before = MemoryInUse();
    connect(std::string(size, 't'));
    connect(std::string(size, 't'));
    EXPECT_LT(MemoryInUse() - before, static_cast<long long>(size / 4));
    EXPECT_TRUE(clients.back().Send(ExecuteBytes(s_iUTF8, "open x")));
    EXPECT_TRUE(PumpUntil([&server] { return !server.Received().empty(); }));
}

TEST_F(IPCServerTest, GivesTheMemoryOfALargeCommandBackThoughMoreHasBegun)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    const std::size_t size = 32 * 1024 * 1024;
    RawClient client(Path());
    // What is no text is no event, and the last message is never whole.
    const std::string bytes =
        ExecuteBytes(s_iUTF8, std::string(size, '\xff')) + ExecuteBytes(s_iUTF8, "end") + "\x01";
    client.Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "small"));
    ASSERT_TRUE(PumpUntil([&server] { return server.Received().size() == 1; }));
    const long long before = MemoryInUse();
    std::future<bool> sent = std::async(std::launch::async, [&] { return client.SendAll(bytes); });
    ASSERT_TRUE(PumpUntil([&server] { return server.Received().size() == 2; }));
    EXPECT_TRUE(sent.get());
    EXPECT_LT(MemoryInUse() - before, static_cast<long long>(size / 4));
}

// A listener that connects somewhere else lets the clients be served meanwhile, but not without a limit.
TEST_F(IPCServerTest, CountsCommandsWithoutDataWhileNoneIsHandedOver)
{
    const std::string other = Path("other");
    const int silent = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    other.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(0, bind(silent, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    ASSERT_EQ(0, listen(silent, 1));
    {
        RecordingServer server(Service());
        ASSERT_TRUE(server.Run());
        RawClient client(Path());
        std::string bytes = ConnectBytes("t");
        for (int i = 0; i < 100000; ++i)
            bytes += ExecuteBytes(s_iUTF8, "");
        std::atomic<bool> stop{false};
        std::thread flood(
            [&]
            {
                client.Send(bytes);
                const std::string more = bytes.substr(ConnectBytes("t").size());
                for (int i = 0; i < 100 && !stop && client.SendAll(more); ++i)
                    continue;
            });
        const long long before = MemoryInUse();
        EXPECT_FALSE(IPCClient::Connect(Service("other"), L"never", 3000));
        EXPECT_LT(MemoryInUse() - before, 200 * 1024 * 1024);
        stop = true;
        client.Shut();
        flood.join();
    }
    close(silent);
}

TEST_F(IPCServerTest, IsSilentWhateverFails)
{
    CapturedOutput errors(2);
    WriteBytes(Path("file"), "");
    {
        IPCServer server(Service());
        IPCServer second(Service());
        IPCServer blocked(Service("file"));
        EXPECT_TRUE(server.Run());
        EXPECT_FALSE(second.Run());
        EXPECT_FALSE(blocked.Run());
        RawClient(Path()).Send("garbage");
        EXPECT_TRUE(SendTo(Service(), L"open x"));
        EXPECT_FALSE(SendTo(Service("nobody"), L"open x"));
    }
    EXPECT_EQ("", errors.Stop());
}

// Runs a server in a process of its own; `work` is done within the pump's run, which needs descriptors of its
// own, so that it may use them up. What is wrong, or nothing.
testing::AssertionResult WithinThePump(const TemporaryFolder& folder,
                                       const std::function<std::string(RecordingServer&, EventPump&)>& work)
{
    return InChild(
        [&]() -> ChildAnswer
        {
            const ToolkitSession session;
            RecordingServer server(folder.Wide("s"));
            EventPump pump;
            if (!server.Run())
                return "not run";
            std::string wrong = "not done";
            wxEvtHandler handler;
            handler.CallAfter([&] { wrong = work(server, pump); });
            return pump.Run(0) ? wrong : "not pumped";
        });
}

TEST(IPCServer, ServesOnWhenTheDescriptorsWereUsedUp)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(WithinThePump(
        folder,
        [&folder](RecordingServer& server, EventPump& pump) -> std::string
        {
            const rlimit limit = {64, 64};
            setrlimit(RLIMIT_NOFILE, &limit);
            RawClient client(folder.Path("s"));
            std::vector<int> taken;
            for (int copy; (copy = fcntl(0, F_DUPFD_CLOEXEC, 0)) != -1;)
                taken.push_back(copy);
            const bool refused = PumpUntilWithin(pump, [&client] { return client.IsClosed(); });
            for (const int copy : taken)
                close(copy);
            if (!refused)
                return "not refused";
            return SendTo(folder.Wide("s"), L"open x") &&
                           PumpUntilWithin(pump, [&server] { return !server.Received().empty(); })
                       ? ""
                       : "not served";
        }));
}

// Clients that have said nothing new for a while make room, and what they sent whole is heard.
TEST(IPCServer, DropsTheMostSilentWhenThereAreNoDescriptors)
{
    const TemporaryFolder folder;
    const auto dropTheFirst = [&folder](RecordingServer& server, EventPump& pump) -> std::string
    {
        if (!SendTo(folder.Wide("s"), L"first") ||
            !PumpUntilWithin(pump, [&server] { return !server.Received().empty(); }))
            return "the first command is lost";
        std::list<RawClient> clients;
        for (int i = 0; i < 30; ++i)
        {
            clients.emplace_back(folder.Path("s")).Send(ConnectBytes("t"));
            bool begun = false;
            if (!PumpUntilWithin(pump, [&] { return begun = begun || !clients.back().Receive().empty(); }))
                return "not begun";
        }
        RawClient next(folder.Path("s"));
        next.Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "next"));
        const int lowest = fcntl(0, F_DUPFD_CLOEXEC, 0);
        close(lowest);
        const rlimit limit = {static_cast<rlim_t>(lowest), static_cast<rlim_t>(lowest)};
        setrlimit(RLIMIT_NOFILE, &limit);
        if (!PumpUntilWithin(pump, [&server] { return server.Received().size() >= 2; }))
            return "the next client is not served";
        if (!clients.front().IsClosed())
            return "the most silent one stays";
        return clients.back().IsClosed() ? "the least silent one is dropped" : "";
    };
    EXPECT_TRUE(WithinThePump(folder, dropTheFirst));
}

TEST(IPCServer, ServesMoreClientsThanItHasDescriptors)
{
    const TemporaryFolder folder;
    const auto serveMany = [&folder](RecordingServer& server, EventPump& pump) -> std::string
    {
        // A sanitizer takes a descriptor for its first look at a type: let it look before there is none.
        if (!SendTo(folder.Wide("s"), L"first") ||
            !PumpUntilWithin(pump, [&server] { return !server.Received().empty(); }))
            return "the first command is lost";
        const std::size_t count = 40;
        std::list<RawClient> clients;
        for (std::size_t i = 0; i < count; ++i)
            clients.emplace_back(folder.Path("s"))
                .Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, std::to_string(i)));
        const int lowest = fcntl(0, F_DUPFD_CLOEXEC, 0);
        close(lowest);
        const rlim_t end = static_cast<rlim_t>(lowest) + 8;
        const rlimit limit = {end, end};
        setrlimit(RLIMIT_NOFILE, &limit);
        PumpUntilWithin(pump, [&] { return server.Received().size() > count; });
        const std::size_t served = server.Received().size() - 1;
        return served == count ? std::string() : "served " + std::to_string(served);
    };
    EXPECT_TRUE(WithinThePump(folder, serveMany));
}

TEST(IPCServerTiming, RestsWhileThereIsNoDescriptorEvenToRefuseAClient)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(InChild(
        [&folder]() -> ChildAnswer
        {
            const ToolkitSession session;
            RecordingServer server(folder.Wide("s"));
            EventPump pump;
            if (!server.Run())
                return "not run";
            // A sanitizer takes a descriptor for its first look at a type: let it look before there is none.
            if (!SendTo(folder.Wide("s"), L"first") ||
                !PumpUntil([&server] { return !server.Received().empty(); }))
                return "the first command is lost";
            RawClient begun(folder.Path("s"));
            begun.Send(ConnectBytes("t"));
            if (!PumpUntil([&begun] { return !begun.Receive().empty(); }))
                return "not begun";
            begun.Send(ExecuteBytes(s_iUTF8, "sent before"));
            RawClient waiting(folder.Path("s"));
            waiting.Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "waits"));
            rlimit limit = {};
            getrlimit(RLIMIT_NOFILE, &limit);
            double seconds = 0;
            wxEvtHandler handler;
            handler.CallAfter(
                [&]
                {
                    const rlimit none = {3, limit.rlim_max};
                    setrlimit(RLIMIT_NOFILE, &none);
                    const std::clock_t start = std::clock();
                    pump.Run(1000);
                    seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
                    setrlimit(RLIMIT_NOFILE, &limit);
                });
            if (!pump.Run(0) || seconds > 0.5)
                return "busy for " + std::to_string(seconds) + " s";
            return PumpUntil([&server] { return server.Received().size() >= 3; });
        }));
}
