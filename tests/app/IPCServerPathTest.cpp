// SPDX-License-Identifier: MIT
// Where a server listens, and what may lie there already.

#include "toolkit/app/IPCServer.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/IPCServerFixture.h"
#include "tests/support/InChild.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Toolkit::IPCClient;
using Toolkit::IPCConnectionEvent;
using Toolkit::IPCServer;
using Toolkit::PathManager;
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

} // namespace

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

TEST_F(IPCServerTest, LeavesWhatIsAnotherUsersAtThePathAndWhereItsLockGoes)
{
    LeaveStaleSocket(Path());
    if (!GiveToAnotherUser(Path()))
        return;
    EXPECT_FALSE(IPCServer(Service()).Run());
    EXPECT_TRUE(fs::is_socket(Path()));
    fs::remove(Path());
    WriteBytes(Path("s.ipc-lock"), "");
    GiveToAnotherUser(Path("s.ipc-lock"));
    EXPECT_FALSE(IPCServer(Service()).Run());
    EXPECT_TRUE(fs::exists(Path("s.ipc-lock")));
    EXPECT_FALSE(fs::exists(Path()));
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

TEST_F(IPCServerTest, RunsOnTheMainThreadOnly)
{
    IPCServer server(Service());
    bool ran = true;
    std::thread([&] { ran = server.Run(); }).join();
    EXPECT_FALSE(ran);
    EXPECT_TRUE(server.Run());
}

TEST(IPCServer, DoesNotRunWithoutWxWidgets)
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
