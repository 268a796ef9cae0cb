// SPDX-License-Identifier: MIT
#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/utils.h>

#include "tests/faults/FailingSystem.h"
#include "tests/support/IPCSupport.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/app/Instance.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/core/ToolkitSession.h"

using namespace Toolkit;
using namespace ToolkitTest;

namespace
{

namespace fs = std::filesystem;

const unsigned long s_uMostCalls = 10000;
const unsigned int s_uPatience = 60000;

void Print(const char* name, unsigned long steps)
{
    std::cout << "  " << name << ", steps at which it was killed: " << steps << std::endl;
}

// What is to be done while a process runs that will be killed, and when it is gone.
struct Around
{
    std::function<void()> meanwhile;
    std::function<void()> afterwards;
};

// Does the work in a process that is killed before its first call of the system, then in another before the
// second and so on, until one comes to its end. Prints how many were killed.
void KillAtEachCall(const char* name, const ChildWork& work, const Around& around)
{
    for (unsigned long call = 1; call < s_uMostCalls && !testing::Test::HasFailure(); ++call)
    {
        FailingSystem::Set(call, FailingSystem::Killed, false);
        ForkedCopy child(
            [&work]
            {
                FailingSystem::Arm();
                const ChildAnswer answer = work();
                FailingSystem::Disarm();
                return answer;
            });
        around.meanwhile();
        const std::string wrong = child.Wait();
        const bool killed = FailingSystem::HasFailed();
        around.afterwards();
        if (testing::Test::HasFailure())
            std::cout << name << " failed after call " << call << ", " << FailingSystem::GetFailed()
                      << std::endl;
        if (killed)
            continue;
        EXPECT_EQ("", wrong);
        return Print(name, call - 1);
    }
    EXPECT_TRUE(testing::Test::HasFailure()) << name << " never ends";
}

bool IsFirst()
{
    return !(*SingleApplicationInstance::s_pInstance)->IsAlreadyRunning();
}

// Folders of the test's own, in which the applications find nothing of another's.
class KilledAtEachCall : public testing::Test
{
protected:
    // The files in the home folder, which the application's data folder is none of.
    std::vector<std::string> Files() const
    {
        std::vector<std::string> files;
        for (const auto& entry : fs::directory_iterator(m_home.Path()))
            if (!entry.is_directory())
                files.push_back(entry.path());
        return files;
    }

    // The next start is the first, and one beside it is not; both leave nothing behind, of the killed one
    // neither.
    void ExpectNextIsFirst() const
    {
        EXPECT_TRUE(InChild(
            [this]() -> ChildAnswer
            {
                const ToolkitSession session;
                if (!IsFirst())
                    return "not the first";
                const ChildAnswer second = SecondStart();
                if (const std::vector<std::string> files = Files();
                    files.size() != 1 ||
                    ReadBytes(files[0]) != std::to_string(getpid()) + std::string(1, '\0'))
                    return "no lock of its own alone";
                return second;
            }));
        EXPECT_THAT(Files(), testing::IsEmpty());
    }

    static ChildAnswer SecondStart()
    {
        return ForkedCopy(
                   []() -> ChildAnswer
                   {
                       const bool isSecond = SingleApplicationInstance().IsAlreadyRunning();
                       // How the test's own process ends is none of it.
                       FailingSystem::Disarm();
                       return isSecond;
                   })
            .Wait();
    }

    const TemporaryFolder m_home;
    const TemporaryFolder m_folder;
    const ScopedEnvironment m_environment{"HOME", m_home.Path().c_str()};
    const ScopedEnvironment m_temporary{"TMPDIR", m_folder.Path().c_str()};
};

// Starts, is the first, and ends.
ChildAnswer StartAndEnd()
{
    const ToolkitSession session;
    return IsFirst();
}

// A server that hears one command.
ChildAnswer ServeOne(const std::wstring& service, const std::wstring& expected)
{
    const ToolkitSession session;
    RecordingServer server(service);
    if (!server.Run())
        return "not run";
    if (!PumpUntil([&server] { return !server.Received().empty(); }))
        return "nothing heard";
    return server.Received() == Commands{expected};
}

bool SendWhenServed(const std::wstring& service, const std::wstring& command)
{
    return WaitUntil([&] { return IPCClient::Connect(service, command, s_uPatience); });
}

// A server of this service is killed at each call, while a client tries to reach it.
void KillServer(const char* name, const std::wstring& service, const std::function<void()>& prepare)
{
    prepare();
    const auto isEnded = [&service]
    { return IPCClient::Connect(service, L"x", s_uPatience) || FailingSystem::HasFailed(); };
    const auto expectNextServes = [&]
    {
        ForkedCopy next([&service] { return ServeOne(service, L"later"); });
        EXPECT_TRUE(SendWhenServed(service, L"later"));
        EXPECT_EQ("", next.Wait());
        EXPECT_FALSE(IPCClient::Connect(service, L"nobody"));
        prepare();
    };
    KillAtEachCall(name, [&service] { return ServeOne(service, L"x"); },
                   {[&isEnded] { EXPECT_TRUE(WaitUntil(isEnded)); }, expectNextServes});
}

} // namespace

TEST_F(KilledAtEachCall, FirstInstanceLeavesTheWayFree)
{
    KillAtEachCall("first instance", StartAndEnd, {[] {}, [this] { ExpectNextIsFirst(); }});
}

TEST_F(KilledAtEachCall, InstanceThatTakesALockOverLeavesTheWayFree)
{
    EXPECT_TRUE(InChild(
        [&]() -> ChildAnswer
        {
            const ToolkitSession session;
            WriteBytes(m_folder.Path("name"), Files().at(0));
            return true;
        }));
    const auto leaveLock = [lock = ReadBytes(m_folder.Path("name"))]
    {
        // No process has a number this large.
        WriteBytes(lock, "999999999");
        fs::permissions(lock, static_cast<fs::perms>(0600));
    };
    leaveLock();
    KillAtEachCall("instance that takes a lock over", StartAndEnd,
                   {[] {},
                    [&]
                    {
                        ExpectNextIsFirst();
                        leaveLock();
                    }});
}

TEST_F(KilledAtEachCall, SecondInstanceLeavesTheFirstAlone)
{
    EXPECT_TRUE(InChild(
        [this]() -> ChildAnswer
        {
            const ToolkitSession session;
            const std::string lock = Files().at(0);
            const std::string content = ReadBytes(lock);
            KillAtEachCall("second instance", SecondStart,
                           {[] {},
                            [&]
                            {
                                EXPECT_EQ("", SecondStart().m_strWrong);
                                EXPECT_EQ(content, ReadBytes(lock));
                                EXPECT_EQ(1U, Files().size());
                            }});
            return IsFirst() && !HasFailure();
        }));
    EXPECT_THAT(Files(), testing::IsEmpty());
}

TEST_F(KilledAtEachCall, ServerLeavesTheWayFree)
{
    const TemporaryFolder folder;
    KillServer("server at a socket file", folder.Wide("s"), [] {});
    EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST_F(KilledAtEachCall, ServerThatTakesASocketOverLeavesTheWayFree)
{
    const TemporaryFolder folder;
    KillServer("server that takes a socket file over", folder.Wide("s"),
               [&folder] { LeaveStaleSocket(folder.Path("s")); });
    fs::remove(folder.Path("s"));
    EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST_F(KilledAtEachCall, ServerOfAPortLeavesTheWayFree)
{
    KillServer("server of a port", FreePort(), [] {});
}

TEST_F(KilledAtEachCall, ClientIsHeardWholeOrNotAtAll)
{
    const TemporaryFolder folder;
    const std::wstring service = folder.Wide("s");
    // More than is sent at once.
    const std::wstring text(300000, L'x');
    ForkedCopy served(
        [&]() -> ChildAnswer
        {
            const ToolkitSession session;
            RecordingServer server(service);
            if (!server.Run())
                return "not run";
            const Commands& heard = server.Received();
            // What is long may be heard after it.
            if (!PumpUntil([&heard] { return std::find(heard.begin(), heard.end(), L"end") != heard.end(); }))
                return "not ended";
            std::size_t later = 0;
            for (const std::wstring& command : heard)
                if (command != text && command != L"end" && command != L"later " + std::to_wstring(later++))
                    return "cut short or lost: " + std::to_string(later);
            return true;
        });
    EXPECT_TRUE(SendWhenServed(service, text));
    int later = 0;
    KillAtEachCall(
        "client", [&]() -> ChildAnswer { return IPCClient::Connect(service, text, s_uPatience); },
        {[] {}, [&]
         { EXPECT_TRUE(IPCClient::Connect(service, L"later " + std::to_wstring(later++), s_uPatience)); }});
    EXPECT_TRUE(IPCClient::Connect(service, L"end", s_uPatience));
    EXPECT_EQ("", served.Wait());
}

// The next one is first and served, whatever the one before had done of its life.
TEST_F(KilledAtEachCall, FirstInstanceOfNewCodeLeavesTheWayFree)
{
    const TemporaryFolder folder;
    fs::permissions(folder.Path(), fs::perms::owner_all);
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder.Path().c_str());
    const auto live = []() -> ChildAnswer
    {
        Result<Instance> instance = Instance::Claim("org.example.watch");
        if (!instance || !instance->IsFirst())
            return instance ? "not the first" : instance.error().Message();
        instance->Serve([](const Instance::Command& command)
                        { return Instance::Answer(0, command.Arguments().at(0)); });
        const Result<Instance::Answer> answer = instance->Ask({"text"}, std::chrono::minutes(1));
        return answer ? ChildAnswer(answer->Text() == "text") : ChildAnswer(answer.error().Message());
    };
    KillAtEachCall("first instance of new code", live, {[] {}, [&live] { EXPECT_TRUE(InChild(live)); }});
}

// The old process and the new one, each in turn.
class RestartKilledAtEachCall : public testing::TestWithParam<const char*>
{
protected:
    RestartKilledAtEachCall()
    {
        fs::copy_file(TOOLKIT_RESTART_KILLED, m_program.Path("Tool"));
        // What the old process leaves behind is a child of this one.
        EXPECT_EQ(0, prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0));
    }
    ~RestartKilledAtEachCall() override { prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0); }

    // True when one of the processes was killed.
    bool RestartAndKill(unsigned long old, unsigned long fresh) const
    {
        const std::string program = m_program.Path("Tool");
        const std::string numbers[] = {std::to_string(old), std::to_string(fresh)};
        const pid_t child = fork();
        if (child == 0)
        {
            execl(program.c_str(), program.c_str(), numbers[0].c_str(), numbers[1].c_str(), Report().c_str(),
                  nullptr);
            _exit(1);
        }
        bool killed = false;
        for (int status = 0; waitpid(-1, &status, 0) > 0;)
        {
            killed = killed || (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
            EXPECT_TRUE(killed || status == 0) << status;
        }
        return killed;
    }

    std::string Report() const { return m_program.Path("report"); }
    std::string Lock() const { return m_temporary.Path("Tool" + wxGetUserId().utf8_string() + ".restart"); }

    // What may be left is the lock, as it is made.
    void ExpectNothingButTheLock() const
    {
        for (const auto& entry : fs::directory_iterator(m_temporary.Path()))
        {
            EXPECT_EQ(Lock(), entry.path());
            EXPECT_TRUE(entry.is_regular_file());
            EXPECT_EQ(0U, entry.file_size());
        }
    }

    const TemporaryFolder m_program;
    const TemporaryFolder m_temporary;
    const TemporaryFolder m_home;
    const ScopedEnvironment m_homeVariable{"HOME", m_home.Path().c_str()};
    const ScopedEnvironment m_tmpdir{"TMPDIR", m_temporary.Path().c_str()};
};

TEST_P(RestartKilledAtEachCall, NextRestartTakesPlace)
{
    const bool isOld = GetParam() == std::string("Old");
    for (unsigned long call = 1; call < s_uMostCalls && !HasFailure(); ++call)
    {
        const bool killed = RestartAndKill(isOld ? call : 0, isOld ? 0 : call);
        EXPECT_TRUE(killed || ReadBytes(Report()) == "locked");
        ExpectNothingButTheLock();
        fs::remove(Report());
        // The lock that was left behind is the next one's.
        EXPECT_FALSE(RestartAndKill(0, 0));
        EXPECT_EQ("locked", ReadBytes(Report()));
        EXPECT_TRUE(fs::is_empty(m_temporary.Path()));
        fs::remove(Report());
        EXPECT_FALSE(HasFailure()) << "after call " << call;
        if (!killed)
            return Print(isOld ? "restart, old process" : "restart, new process", call - 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Process, RestartKilledAtEachCall, testing::Values("Old", "New"),
                         [](const testing::TestParamInfo<const char*>& process)
                         { return std::string(process.param); });
