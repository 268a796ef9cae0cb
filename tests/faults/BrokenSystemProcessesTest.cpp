// SPDX-License-Identifier: MIT
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/faults/BrokenSystem.h"
#include "tests/support/ForkedCopy.h"
#include "tests/support/IPCSupport.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/encoding/UTF8.h"

using namespace Toolkit;
using namespace ToolkitTest;

namespace
{

namespace fs = std::filesystem;

const unsigned int s_uPatience = 60000;
// For what need not succeed.
const unsigned int s_uImpatience = 50;

// What a signal interrupts, or what takes place in parts, is to be gone on with.
bool MustSucceed()
{
    const FailingSystem::Fault fault = FailingSystem::GetFault();
    return fault == FailingSystem::Interrupted || fault == FailingSystem::Short ||
           !FailingSystem::HasFailed();
}

// Once all goes wrong nobody is answered, which need not be waited for; a busy machine may be as slow.
bool IsHurried()
{
    return FailingSystem::IsOnwards() && FailingSystem::GetFault() != FailingSystem::Short;
}

// A home folder and a folder for what is tested. Whatever is said of errors fails the test.
class BrokenSystemProcesses : public testing::Test
{
protected:
    ~BrokenSystemProcesses() override { EXPECT_EQ("", m_errors.Stop()); }

    std::vector<std::string> Files() const
    {
        std::vector<std::string> files;
        for (const auto& entry : fs::directory_iterator(m_folder.Path()))
            if (!entry.is_directory())
                files.push_back(entry.path().filename().string());
        return files;
    }

    // What a call that fails to remove a file leaves behind.
    void RemoveFiles() const
    {
        for (const std::string& file : Files())
            fs::remove(m_folder.Path(file));
    }

    // No file is left, but one that could not be looked at, locked or removed.
    void ExpectNothingLeft() const
    {
        const bool excused = FailingSystem::HasFailed("unlink") || FailingSystem::HasFailed("fstat") ||
                             FailingSystem::HasFailed("lstat") || FailingSystem::HasFailed("flock");
        EXPECT_TRUE(Files().empty() || excused) << testing::PrintToString(Files());
        RemoveFiles();
    }

    const TemporaryFolder m_homeFolder;
    const TemporaryFolder m_folder;
    const ScopedEnvironment m_home{"HOME", m_homeFolder.Path().c_str()};
    const ScopedEnvironment m_temporary{"TMPDIR", m_folder.Path().c_str()};
    CapturedOutput m_errors{2};
};

// The path manager that the lock of the single instance has its name from.
class BrokenSystemSingleInstance : public BrokenSystemProcesses
{
protected:
    BrokenSystemSingleInstance() { PathManager::s_pInstance = new smart_ptr<PathManager>(new PathManager); }
    ~BrokenSystemSingleInstance() override
    {
        delete PathManager::s_pInstance;
        PathManager::s_pInstance = nullptr;
    }

    std::string Lock() const
    {
        return m_folder.Path(UTF8::ToUTF8((*PathManager::s_pInstance)->GetUniqueInstanceName()));
    }
    void LeaveLockOf(const std::string& process) const
    {
        WriteBytes(Lock(), process + std::string(1, '\0'));
        fs::permissions(Lock(), static_cast<fs::perms>(0600));
    }
    static std::string OwnNumber() { return std::to_string(getpid()) + std::string(1, '\0'); }

    // Without a fault the next object has the lock, and another process sees it.
    void ExpectLockIsToBeHad() const
    {
        const SingleApplicationInstance next;
        EXPECT_FALSE(next.IsAlreadyRunning());
        EXPECT_EQ(OwnNumber(), ReadBytes(Lock()));
        EXPECT_TRUE(InChild([] { return SingleApplicationInstance().IsAlreadyRunning(); }));
    }

    const ScopedEnvironment m_lockFolder{"HOME", m_folder.Path().c_str()};
};

// What several processes count together.
class Counter
{
public:
    Counter()
        : m_pMemory(mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                         MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
          m_pCount(new (m_pMemory) std::atomic<int>(0))
    {
    }
    ~Counter() { munmap(m_pMemory, sizeof(std::atomic<int>)); }
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    std::atomic<int>& operator*() const { return *m_pCount; }

private:
    void* const m_pMemory;
    std::atomic<int>* const m_pCount;
};

// A server, with all that wxWidgets keeps once it has had a loop.
class BrokenSystemIPC : public BrokenSystemProcesses
{
protected:
    BrokenSystemIPC()
    {
        RecordingServer first(m_service);
        EXPECT_TRUE(first.Run());
        EXPECT_TRUE(EventPump().Run(0));
    }

    static void ExpectServed(const RecordingServer& server, const std::wstring& service)
    {
        EXPECT_TRUE(IPCClient::Connect(service, L"last", s_uPatience));
        EXPECT_TRUE(
            PumpUntil([&] { return !server.Received().empty() && server.Received().back() == L"last"; }));
    }

    // Of one command and then the last.
    static void ExpectHeard(const RecordingServer& server, bool sent)
    {
        const Commands& heard = server.Received();
        const auto count = std::count(heard.begin(), heard.end(), L"open x");
        EXPECT_EQ(heard.size(), static_cast<std::size_t>(count) + 1);
        EXPECT_LE(count, sent ? 1 : 0);
        EXPECT_TRUE(count == 1 || !sent || !MustSucceed());
    }

    const std::wstring m_service = m_folder.Wide("s");
    const ToolkitSession m_session;
};

} // namespace

// Without a path manager there is nothing that could be started.
TEST_F(BrokenSystemProcesses, RestartIsTriedWhateverFails)
{
    FailEachCall({
        {"RestartManagment::ActivateRestartProcess",
         [&](const Faults& faults)
         {
             const wchar_t* const arguments[] = {L"tool", L"a"};
             const std::string lock = UTF8::ToUTF8(RestartManagment::GetLockFileName());
             WriteBytes(lock, "left behind");
             fs::permissions(lock, fs::perms::owner_all);
             bool started = false;
             faults(
                 [&]
                 {
                     const wchar_t* vector[] = {arguments[0], arguments[1]};
                     started = RestartManagment::ActivateRestartProcess(2, vector);
                 });
             EXPECT_TRUE(started);
             EXPECT_TRUE(RestartManagment::IsLocked());
             EXPECT_TRUE(ReadBytes(lock).empty() || !MustSucceed());
             int status = 0;
             EXPECT_TRUE(waitpid(-1, &status, 0) > 0 || FailingSystem::HasFailed("fork"));
             RestartManagment::RemoveLock();
             ExpectNothingLeft();
         }},
        {"RestartManagment::IsLocked, RemoveLock",
         [&](const Faults& faults)
         {
             WriteBytes(UTF8::ToUTF8(RestartManagment::GetLockFileName()), "");
             bool locked = false;
             faults(
                 [&]
                 {
                     locked = RestartManagment::IsLocked();
                     RestartManagment::RemoveLock();
                 });
             EXPECT_TRUE(locked || !MustSucceed());
             EXPECT_TRUE(!RestartManagment::IsLocked() || !MustSucceed());
             RestartManagment::RemoveLock();
             EXPECT_THAT(Files(), testing::IsEmpty());
         }},
    });
}

TEST_F(BrokenSystemSingleInstance, NobodyElseRunsWhereTheLockCannotBeHad)
{
    FailEachCall({
        {"SingleApplicationInstance",
         [&](const Faults& faults)
         {
             bool another = true;
             faults([&] { another = SingleApplicationInstance().IsAlreadyRunning(); });
             EXPECT_FALSE(another);
             ExpectNothingLeft();
             ExpectLockIsToBeHad();
             EXPECT_THAT(Files(), testing::IsEmpty());
         }},
        {"SingleApplicationInstance, made",
         [&](const Faults& faults)
         {
             std::unique_ptr<SingleApplicationInstance> instance;
             faults([&] { instance = std::make_unique<SingleApplicationInstance>(); });
             EXPECT_FALSE(instance->IsAlreadyRunning());
             EXPECT_TRUE(ReadBytes(Lock()) == OwnNumber() || !MustSucceed());
             // What went wrong then does not take another's lock away now.
             WriteBytes(m_folder.Path("another"), "another");
             fs::rename(m_folder.Path("another"), Lock());
             instance.reset();
             EXPECT_TRUE(fs::exists(Lock()));
             RemoveFiles();
         }},
        {"SingleApplicationInstance, a dead one's lock",
         [&](const Faults& faults)
         {
             // No process has a number this large.
             LeaveLockOf("999999999");
             std::unique_ptr<SingleApplicationInstance> instance;
             faults([&] { instance = std::make_unique<SingleApplicationInstance>(); });
             EXPECT_FALSE(instance->IsAlreadyRunning());
             instance.reset();
             ExpectLockIsToBeHad();
             RemoveFiles();
         }},
    });
}

TEST_F(BrokenSystemSingleInstance, LivingOnesLockStays)
{
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
    ForkedCopy living(
        [&]
        {
            close(ends[1]);
            const SingleApplicationInstance first;
            char byte = 0;
            return read(ends[0], &byte, 1) == 0 && !first.IsAlreadyRunning();
        });
    close(ends[0]);
    const std::string content = std::to_string(living.Id()) + std::string(1, '\0');
    ASSERT_TRUE(WaitUntil([&] { return ReadBytes(Lock()) == content && Files().size() == 1; }));
    FailEachCall({{"SingleApplicationInstance, a living one's lock", [&](const Faults& faults)
                   {
                       bool another = false;
                       faults([&] { another = SingleApplicationInstance().IsAlreadyRunning(); });
                       EXPECT_TRUE(another || !MustSucceed());
                       EXPECT_EQ(content, ReadBytes(Lock()));
                       EXPECT_TRUE(SingleApplicationInstance().IsAlreadyRunning());
                       EXPECT_EQ(1U, Files().size());
                   }}});
    close(ends[1]);
    EXPECT_EQ("", living.Wait());
    EXPECT_THAT(Files(), testing::IsEmpty());
}

// The clock was wrong when the lock was written, and nobody can tell whether it is held.
TEST_F(BrokenSystemSingleInstance, LivingOnesLockStaysWhateverItsDateWithoutLocksOfTheSystem)
{
    const SingleApplicationInstance first;
    const timespec longAgo[] = {{1, 0}, {1, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, Lock().c_str(), longAgo, 0));
    FailingSystem::SetAlways("flock", FailingSystem::NoSpace);
    EXPECT_TRUE(InChild(
        []
        {
            FailingSystem::Arm();
            const bool another = SingleApplicationInstance().IsAlreadyRunning();
            FailingSystem::Disarm();
            return another && FailingSystem::HasFailed("flock");
        }));
    EXPECT_EQ(OwnNumber(), ReadBytes(Lock()));
}

// As many rounds as TOOLKIT_TEST_INSTANCES says, a few on every day.
TEST_F(BrokenSystemSingleInstance, TwentyStartsAtOnceWithoutLocksOfTheSystemGiveOneFirst)
{
    const int starts = 20;
    FailingSystem::SetAlways("flock", FailingSystem::NoSpace);
    const char* const wanted = std::getenv("TOOLKIT_TEST_INSTANCES");
    const long rounds = wanted == nullptr ? 3 : std::max(1L, std::atol(wanted) / starts);
    for (long round = 0; round < rounds && !HasFailure(); ++round)
    {
        int go[2];
        int end[2];
        ASSERT_TRUE(pipe2(go, O_CLOEXEC) == 0 && pipe2(end, O_CLOEXEC) == 0);
        const Counter firsts;
        const Counter asked;
        // Each asks when all are there, and ends when all have asked.
        const auto start = [&]
        {
            close(go[1]);
            close(end[1]);
            char byte = 0;
            bool right = read(go[0], &byte, 1) == 0;
            FailingSystem::Arm();
            const SingleApplicationInstance instance;
            FailingSystem::Disarm();
            *firsts += instance.IsAlreadyRunning() ? 0 : 1;
            ++*asked;
            right = read(end[0], &byte, 1) == 0 && right;
            return right;
        };
        std::vector<std::unique_ptr<ForkedCopy>> children;
        for (int i = 0; i < starts; ++i)
            children.push_back(std::make_unique<ForkedCopy>(start));
        close(go[0]);
        close(end[0]);
        close(go[1]);
        EXPECT_TRUE(WaitUntil([&] { return *asked == starts; }));
        close(end[1]);
        for (const auto& child : children)
            EXPECT_EQ("", child->Wait());
        EXPECT_EQ(1, *firsts);
        EXPECT_TRUE(FailingSystem::HasFailed("flock"));
        EXPECT_FALSE(fs::exists(Lock()));
        // Who cannot lock the file of the turn does not know whether another has.
        const std::string turn = fs::path(Lock()).filename().string() + ".turn";
        EXPECT_THAT(Files(), testing::Each(turn));
        // A later start that can lock it removes it.
        const auto second = [] { return SingleApplicationInstance().IsAlreadyRunning(); };
        EXPECT_EQ("", ForkedCopy(
                          [&second]
                          {
                              const SingleApplicationInstance first;
                              return !first.IsAlreadyRunning() && ForkedCopy(second).Wait().empty();
                          })
                          .Wait());
        EXPECT_THAT(Files(), testing::IsEmpty());
    }
}

TEST_F(BrokenSystemIPC, ServerListensAgain)
{
    const std::wstring port = FreePort();
    const auto run = [](const std::wstring& service, const Faults& faults)
    {
        RecordingServer server(service);
        bool runs = false;
        faults([&] { runs = server.Run(); });
        EXPECT_TRUE(runs || !MustSucceed());
        EXPECT_TRUE(server.Run());
        ExpectServed(server, service);
    };
    FailEachCall({
        {"IPCServer::Run, a socket file",
         [&](const Faults& faults)
         {
             run(m_service, faults);
             ExpectNothingLeft();
         }},
        {"IPCServer::Run, a socket file that was left behind",
         [&](const Faults& faults)
         {
             LeaveStaleSocket(m_folder.Path("s"));
             run(m_service, faults);
             ExpectNothingLeft();
         }},
        {"IPCServer::Run, a port", [&](const Faults& faults) { run(port, faults); }},
        {"IPCServer::~IPCServer",
         [&](const Faults& faults)
         {
             auto server = std::make_unique<RecordingServer>(m_service);
             ASSERT_TRUE(server->Run());
             RawClient client(m_folder.Path("s"));
             client.Send(ConnectBytes("t"));
             EXPECT_TRUE(PumpUntil([&client] { return !client.Receive().empty(); }));
             faults([&] { server.reset(); });
             EXPECT_TRUE(client.IsClosed());
             ExpectNothingLeft();
             EXPECT_TRUE(RecordingServer(m_service).Run());
             RemoveFiles();
         }},
    });
}

TEST_F(BrokenSystemIPC, CommandArrivesOnceOrTheAnswerIsFalse)
{
    const std::wstring port = FreePort();
    const auto connect = [](const std::wstring& service, const Faults& faults)
    {
        RecordingServer server(service);
        ASSERT_TRUE(server.Run());
        bool sent = false;
        // On this thread the server takes its clients while they wait.
        faults([&]
               { sent = IPCClient::Connect(service, L"open x", IsHurried() ? s_uImpatience : s_uPatience); });
        EXPECT_TRUE(sent || !MustSucceed() || IsHurried());
        ExpectServed(server, service);
        ExpectHeard(server, sent);
    };
    FailEachCall({
        {"IPCClient::Connect, a socket file", [&](const Faults& faults) { connect(m_service, faults); }},
        {"IPCClient::Connect, a port", [&](const Faults& faults) { connect(port, faults); }},
        {"IPCServer, EventPump",
         [&](const Faults& faults)
         {
             RecordingServer server(m_service);
             ASSERT_TRUE(server.Run());
             RawClient client(m_folder.Path("s"));
             client.Send(ConnectBytes("t") + ExecuteBytes(17, "open x"));
             bool ran = false;
             faults(
                 [&]
                 {
                     EventPump pump;
                     ran = pump.Run(0) && pump.Run(0);
                 });
             EXPECT_TRUE(ran || !MustSucceed());
             ExpectServed(server, m_service);
             ExpectHeard(server, true);
             EXPECT_TRUE(!client.Receive().empty() || client.IsClosed()) << "it would wait for ever";
         }},
    });
}
