#include "toolkit/app/IPCServer.h"

#include <atomic>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/event.h>
#include <wx/init.h>
#include <wx/ipcbase.h>

#include "tests/support/Child.h"
#include "tests/support/IPCSupport.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/encoding/UTF8.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Toolkit::EventPump;
using Toolkit::ILogger;
using Toolkit::IPCClient;
using Toolkit::IPCConnectionEvent;
using Toolkit::IPCServer;
using Toolkit::PathManager;
using Toolkit::smart_ptr;
using Toolkit::ToolkitSession;
using Toolkit::TString;
using namespace ToolkitTest;

static_assert(std::is_base_of_v<Toolkit::EventNotifier<IPCConnectionEvent>, IPCServer>);
static_assert(std::has_virtual_destructor_v<IPCServer>);
static_assert(!std::is_copy_constructible_v<IPCServer> &&
              !std::is_convertible_v<TString<wchar_t>, IPCServer>);

namespace
{

namespace fs = std::filesystem;

smart_ptr<IPCConnectionEvent> Calling(CommandCall::Call call)
{
    return smart_ptr<IPCConnectionEvent>(new CommandCall(std::move(call)));
}

// A host that brings the base library up with an application object of its own.
class HostApplication : public wxAppConsole
{
public:
    int OnRun() override { return 0; }
};

// The base library's formats, as bytes of the protocol know them.
const int s_iUTF8 = wxIPC_UTF8TEXT;

// The default channel is one for all tests of this program, and each may be a process of its own: only the
// one that has this at a time may listen there.
class DefaultChannel
{
public:
    DefaultChannel() : m_iProgram(open("/proc/self/exe", O_RDONLY | O_CLOEXEC))
    {
        EXPECT_EQ(0, flock(m_iProgram, LOCK_EX));
    }
    ~DefaultChannel()
    {
        flock(m_iProgram, LOCK_UN);
        close(m_iProgram);
    }
    DefaultChannel(const DefaultChannel&) = delete;
    DefaultChannel& operator=(const DefaultChannel&) = delete;

private:
    const int m_iProgram;
};

bool PumpUntilWithin(EventPump& pump, const std::function<bool()>& condition)
{
    for (int i = 0; i < 6000 && !condition(); ++i)
        pump.Run(10);
    return condition();
}

} // namespace

// Each test has a folder and, once it asks for it, the library.
class IPCServerTest : public testing::Test
{
protected:
    std::wstring Service(const std::string& name = "s") const { return m_folder.Wide(name); }
    std::string Path(const std::string& name = "s") const { return m_folder.Path(name); }

    const TemporaryFolder m_folder;
    const ToolkitSession m_session;
};

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

TEST_F(IPCServerTest, ListensOnAPortOfThisMachineAlone)
{
    const std::wstring port = FreePort();
    RecordingServer server(port);
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(SendTo(port, L"open x"));
    EXPECT_TRUE(PumpUntil([&server] { return !server.Received().empty(); }));
    EXPECT_THAT(server.Received(), ElementsAre(L"open x"));
    std::ifstream sockets("/proc/net/tcp");
    const std::string table{std::istreambuf_iterator<char>(sockets), std::istreambuf_iterator<char>()};
    char local[32];
    std::snprintf(local, sizeof local, ":%04lX 00000000:0000 0A", std::stoul(port));
    EXPECT_THAT(table, HasSubstr("0100007F" + std::string(local)));
    EXPECT_THAT(table, testing::Not(HasSubstr("00000000" + std::string(local))));
}

TEST_F(IPCServerTest, EmptyServiceIsTheDefaultChannelWhateverTheEnvironmentSays)
{
    const DefaultChannel channel;
    const ScopedEnvironment environment("TMPDIR", m_folder.Path().c_str());
    const TString<wchar_t> name = L"/tmp/" + (*PathManager::s_pInstance)->GetUniqueInstanceName() + L".ipc";
    const std::string path = Toolkit::UTF8::ToUTF8(name);
    // A longer one, of a program that lies deep, is cut; IPCAddress has its tests.
    const bool whole = path.size() <= 107;
    {
        RecordingServer server(L"");
        ASSERT_TRUE(server.Run());
        EXPECT_EQ(whole, fs::is_socket(path)) << path;
        EXPECT_TRUE(SendTo(name, L"by name"));
        EXPECT_TRUE(SendTo(L"", L"by default"));
        EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 2; }));
        EXPECT_THAT(server.Received(), ElementsAre(L"by name", L"by default"));
        EXPECT_TRUE(fs::is_empty(m_folder.Path()));
    }
    EXPECT_FALSE(fs::exists(fs::symlink_status(path)));
    EXPECT_TRUE(fs::is_empty(m_folder.Path()));
}

TEST_F(IPCServerTest, RunningServerRunsOn)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    RawClient client(Path());
    EXPECT_TRUE(server.Run());
    EXPECT_TRUE(client.Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "go")));
    EXPECT_TRUE(PumpUntil([&server] { return !server.Received().empty(); }));
}

TEST_F(IPCServerTest, RunsAnewWhenItsSocketFileIsGone)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    fs::remove(Path());
    EXPECT_FALSE(SendTo(Service(), L"lost"));
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(SendTo(Service(), L"found"));
    EXPECT_TRUE(PumpUntil([&server] { return !server.Received().empty(); }));
    EXPECT_THAT(server.Received(), ElementsAre(L"found"));
}

TEST_F(IPCServerTest, RunsAfterItFailed)
{
    IPCServer server(Service("missing/s"));
    EXPECT_FALSE(server.Run());
    EXPECT_FALSE(server.Run());
    fs::create_directory(Path("missing"));
    EXPECT_TRUE(server.Run());
    EXPECT_TRUE(SendTo(Service("missing/s"), L"open x"));
}

TEST_F(IPCServerTest, SecondServerOfAServiceDoesNotRun)
{
    for (const std::wstring& service : {Service(), FreePort()})
    {
        auto first = std::make_unique<RecordingServer>(service);
        RecordingServer second(service);
        ASSERT_TRUE(first->Run());
        EXPECT_FALSE(second.Run());
        EXPECT_TRUE(SendTo(service, L"open x"));
        EXPECT_TRUE(PumpUntil([&first] { return !first->Received().empty(); }));
        EXPECT_THAT(second.Received(), IsEmpty());
        first.reset();
        EXPECT_TRUE(second.Run());
        EXPECT_TRUE(SendTo(service, L"open y"));
    }
}

TEST_F(IPCServerTest, TakesOverAStaleSocket)
{
    LeaveStaleSocket(Path());
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(SendTo(Service(), L"open x"));
    EXPECT_TRUE(PumpUntil([&server] { return !server.Received().empty(); }));
}

TEST_F(IPCServerTest, LeavesWhateverElseLiesAtThePath)
{
    LeaveStaleSocket(Path("stale"));
    WriteBytes(Path("target"), "content");
    const sockaddr_un datagrams = [this]
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        Path("datagrams").copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }();
    const int receiver = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const std::function<void(const std::string&)> makers[] = {
        [](const std::string& path) { WriteBytes(path, "content"); },
        [](const std::string& path) { WriteBytes(path, ""); },
        [](const std::string& path) { fs::create_directory(path); },
        [](const std::string& path) { mkfifo(path.c_str(), 0600); },
        [this](const std::string& path) { fs::create_symlink(Path("target"), path); },
        [this](const std::string& path) { fs::create_symlink(Path("stale"), path); },
        [this](const std::string& path) { fs::create_symlink(Path("nothing"), path); },
        [&](const std::string& path)
        {
            ASSERT_EQ(0, bind(receiver, reinterpret_cast<const sockaddr*>(&datagrams), sizeof datagrams));
            fs::rename(Path("datagrams"), path);
        }};
    for (std::size_t i = 0; i < std::size(makers); ++i)
    {
        makers[i](Path());
        struct stat before = {};
        ASSERT_EQ(0, lstat(Path().c_str(), &before));
        {
            IPCServer server(Service());
            EXPECT_FALSE(server.Run()) << "row " << i;
        }
        struct stat after = {};
        EXPECT_EQ(0, lstat(Path().c_str(), &after)) << "row " << i;
        EXPECT_EQ(before.st_ino, after.st_ino);
        EXPECT_EQ(before.st_mode, after.st_mode);
        EXPECT_FALSE(fs::exists(Path("nothing")));
        fs::remove(Path());
    }
    close(receiver);
    EXPECT_EQ("content", ReadBytes(Path("target")));
    EXPECT_TRUE(fs::is_socket(Path("stale")));
    EXPECT_EQ(2, std::distance(fs::directory_iterator(m_folder.Path()), fs::directory_iterator()));
}

TEST_F(IPCServerTest, HarmsNothingThatLiesWhereItsLockGoes)
{
    const std::string lock = Path("s.ipc-lock");
    WriteBytes(lock, "content");
    EXPECT_TRUE(IPCServer(Service()).Run());
    EXPECT_EQ("content", ReadBytes(lock));
    fs::remove(lock);
    WriteBytes(Path("target"), "content");
    fs::create_symlink(Path("target"), lock);
    EXPECT_FALSE(IPCServer(Service()).Run());
    EXPECT_EQ("content", ReadBytes(Path("target")));
    fs::remove(lock);
    fs::create_symlink(Path("nothing"), lock);
    EXPECT_FALSE(IPCServer(Service()).Run());
    EXPECT_FALSE(fs::exists(Path("nothing")));
    fs::remove(lock);
    fs::create_directory(lock);
    EXPECT_FALSE(IPCServer(Service()).Run());
    fs::remove(lock);
    ASSERT_EQ(0, mkfifo(lock.c_str(), 0600));
    EXPECT_FALSE(IPCServer(Service()).Run());
    EXPECT_TRUE(fs::is_fifo(lock));
    fs::remove(lock);
    WriteBytes(lock, "");
    EXPECT_TRUE(IPCServer(Service()).Run()) << "left by a server that was killed";
    EXPECT_FALSE(fs::exists(lock));
}

TEST_F(IPCServerTest, RefusesServicesThatCanBeNone)
{
    const std::wstring rows[] = {L"0",
                                 L"65536",
                                 L"99999999999999999999",
                                 std::wstring(Service()).append(1, L'\0').append(L"x"),
                                 Service() + wchar_t(0xd800),
                                 Service("missing/s"),
                                 Service("s/"),
                                 m_folder.Wide(),
                                 L"/"};
    for (const std::wstring& row : rows)
    {
        IPCServer server(row);
        EXPECT_FALSE(server.Run()) << testing::PrintToString(row);
        EXPECT_FALSE(IPCClient::Connect(row, L"x", 100)) << testing::PrintToString(row);
    }
    EXPECT_TRUE(fs::is_empty(m_folder.Path()));
}

TEST_F(IPCServerTest, LeavesNothingBehind)
{
    {
        IPCServer server(Service());
        ASSERT_TRUE(server.Run());
        EXPECT_EQ(1, std::distance(fs::directory_iterator(m_folder.Path()), fs::directory_iterator()));
    }
    EXPECT_TRUE(fs::is_empty(m_folder.Path()));
}

TEST_F(IPCServerTest, LetsOnlyItsUserConnect)
{
    IPCServer server(Service());
    ASSERT_TRUE(server.Run());
    struct stat status = {};
    ASSERT_EQ(0, lstat(Path().c_str(), &status));
    EXPECT_EQ(0600U, status.st_mode & 07777U);
    fs::permissions(m_folder.Path(), fs::perms::all);
    EXPECT_TRUE(AsNobody([&] { return RawClient(Path()).IsConnected() == (geteuid() == status.st_uid); }));
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

TEST_F(IPCServerTest, ShortensPathsLikeItsClients)
{
    const std::wstring stem(250, L'n');
    fs::create_directories(Path("f"));
    for (const std::wstring& folder :
         {Service("f/"), std::wstring(L"/nowhere/" + std::wstring(300, L'f') + L"/")})
    {
        RecordingServer a(folder + stem + L"a");
        RecordingServer b(folder + stem + L"b");
        ASSERT_TRUE(a.Run() && b.Run());
        EXPECT_TRUE(SendTo(folder + stem + L"a", L"to a"));
        EXPECT_TRUE(SendTo(folder + stem + L"b", L"to b"));
        EXPECT_FALSE(SendTo(folder + stem + L"c", L"to c"));
        EXPECT_TRUE(PumpUntil([&] { return !a.Received().empty() && !b.Received().empty(); }));
        EXPECT_THAT(a.Received(), ElementsAre(L"to a"));
        EXPECT_THAT(b.Received(), ElementsAre(L"to b"));
    }
    EXPECT_TRUE(fs::is_empty(Path("f")));
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

TEST_F(IPCServerTest, ClosesItsDescriptorsInOtherPrograms)
{
    const auto openInPrograms = []
    {
        int count = 0;
        for (int descriptor = 0; descriptor < 256; ++descriptor)
            if (const int flags = fcntl(descriptor, F_GETFD); flags != -1 && (flags & FD_CLOEXEC) == 0)
                ++count;
        return count;
    };
    const int before = openInPrograms();
    IPCServer server(Service());
    ASSERT_TRUE(server.Run());
    EXPECT_EQ(before, openInPrograms());
    int within = 0;
    server.AddListener(Calling([&](const TString<wchar_t>&) { within = openInPrograms(); }));
    RawClient client(Path());
    client.Send(ConnectBytes("t") + ExecuteBytes(s_iUTF8, "within the pump"));
    EXPECT_TRUE(PumpUntil([&within] { return within != 0; }));
    EXPECT_EQ(before, within);
    EXPECT_EQ(before, openInPrograms());
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

TEST_F(IPCServerTest, DropsTheMostSilentOfTooManyClients)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    std::vector<RawClient> clients;
    for (int i = 0; i < 300; ++i)
    {
        clients.emplace_back(Path());
        EventPump().Run(0);
    }
    EXPECT_TRUE(clients.front().IsClosed());
    EXPECT_FALSE(clients.back().IsClosed());
    EXPECT_TRUE(SendTo(Service(), L"open x"));
    EXPECT_TRUE(PumpUntil([&server] { return !server.Received().empty(); }));
}

TEST_F(IPCServerTest, HearsWhatTheClientsThatItDropsHadSent)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    std::vector<RawClient> clients;
    for (int i = 0; i < 256; ++i)
    {
        clients.emplace_back(Path());
        clients.back().Send(ConnectBytes("t"));
        EXPECT_TRUE(PumpUntil([&clients] { return !clients.back().Receive().empty(); }));
    }
    // They wait to be accepted before the others have said anything more.
    std::vector<RawClient> others;
    for (int i = 0; i < 300; ++i)
        others.emplace_back(Path());
    for (RawClient& client : clients)
        EXPECT_TRUE(client.Send(ExecuteBytes(s_iUTF8, "one") +
                                ExecuteBytes(s_iUTF8, std::string(50000, 'x')) +
                                ExecuteBytes(s_iUTF8, "half").substr(0, 8)));
    EXPECT_TRUE(PumpUntil([&server] { return server.Received().size() >= 512; }));
    EXPECT_EQ(512U, server.Received().size());
    EXPECT_TRUE(clients.front().IsClosed());
    EXPECT_FALSE(others.back().IsClosed());
}

TEST_F(IPCServerTest, HearsACommandBeforeAnyNumberOfNewClients)
{
    RecordingServer server(Service());
    ASSERT_TRUE(server.Run());
    EXPECT_TRUE(IPCClient::Connect(Service(), L"open x"));
    std::vector<RawClient> others;
    for (int i = 0; i < 300; ++i)
        others.emplace_back(Path());
    EXPECT_TRUE(PumpUntil([&others] { return others.front().IsClosed(); }));
    EXPECT_THAT(server.Received(), ElementsAre(L"open x"));
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

TEST_F(IPCServerTest, RunsOnTheMainThreadOnly)
{
    IPCServer server(Service());
    bool ran = true;
    std::thread([&] { ran = server.Run(); }).join();
    EXPECT_FALSE(ran);
    EXPECT_TRUE(server.Run());
}

TEST(IPCServer, ServesOnWhenTheDescriptorsWereUsedUp)
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
            bool refused = false;
            wxEvtHandler handler;
            handler.CallAfter(
                [&]
                {
                    // Within the pump's run, which needs descriptors of its own.
                    const rlimit limit = {64, 64};
                    setrlimit(RLIMIT_NOFILE, &limit);
                    RawClient client(folder.Path("s"));
                    std::vector<int> taken;
                    for (int copy; (copy = fcntl(0, F_DUPFD_CLOEXEC, 0)) != -1;)
                        taken.push_back(copy);
                    refused = PumpUntilWithin(pump, [&client] { return client.IsClosed(); });
                    for (const int copy : taken)
                        close(copy);
                });
            if (!pump.Run(0) || !refused)
                return "not refused";
            return SendTo(folder.Wide("s"), L"open x") &&
                   PumpUntil([&server] { return !server.Received().empty(); });
        }));
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

TEST(IPCServer, DoesNotRunWithoutTheBaseLibrary)
{
    const TemporaryFolder folder;
    const DefaultChannel channel;
    CapturedOutput errors(2);
    {
        IPCServer server(folder.Wide("s"));
        EXPECT_FALSE(server.Run());
        IPCServer byDefault(L"");
        EXPECT_FALSE(byDefault.Run());
        const ToolkitSession session;
        EXPECT_TRUE(server.Run());
        EXPECT_TRUE(byDefault.Run()) << "the default is looked up again";
    }
    EXPECT_EQ("", errors.Stop());
}

TEST(IPCServer, KeepsTheBaseLibraryWhileItListens)
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
