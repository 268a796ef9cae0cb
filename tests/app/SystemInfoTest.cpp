// SPDX-License-Identifier: MIT
#include "toolkit/app/SystemInfo.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/init.h>
#include <wx/platinfo.h>

#include "tests/support/InChild.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/ScopedSignal.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/CmdLineParser.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::SystemInfo;
using Toolkit::TString;
using Toolkit::UTF8;
using ToolkitTest::CapturedOutput;
using ToolkitTest::InstalledLogger;
using ToolkitTest::ReadBytes;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::ScopedSignal;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

static_assert(std::is_same_v<std::underlying_type_t<SystemInfo::Platform>, unsigned int>);
static_assert(std::is_same_v<std::underlying_type_t<SystemInfo::Endian>, unsigned int>);
static_assert(std::is_same_v<decltype(SystemInfo::s_pInstance),
                             Toolkit::smart_ptr<SystemInfo, Toolkit::smart_ptr_policy>*>);

namespace
{

using Wide = TString<wchar_t>;

// The child's exit code; -1 when it cannot be waited for or did not end by itself.
int ExitCodeOf(int child)
{
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

bool HasChildren()
{
    return waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

// How many descriptors beyond the standard ones this process leaves to its children, all of them its own
// parent's.
int InheritableDescriptors()
{
    int count = 0;
    for (int descriptor = 3; descriptor < 1024; ++descriptor)
        count += fcntl(descriptor, F_GETFD) == 0 ? 1 : 0;
    return count;
}

// What the real program was given: its vector behind the file's name, its inherited descriptors, its
// environment.
std::string GivenFor(const Wide& arguments)
{
    const TemporaryFolder folder;
    const Wide output = folder.Wide("out");
    EXPECT_GT(SystemInfo::StartProcess(UTF8::ToUNICODE(TString<char>(TOOLKIT_WRITE_ARGUMENTS)),
                                       output + arguments, true),
              0);
    const std::string written = ReadBytes(folder.Path("out"));
    const std::string head = std::string("[") + TOOLKIT_WRITE_ARGUMENTS + "]\n[" + folder.Path("out") + "]\n";
    EXPECT_EQ(written.substr(0, head.size()), head);
    return written.size() < head.size() ? written : written.substr(head.size());
}

// The last lines of the real program: descriptors and environment, as this process leaves them to it.
std::string Inheritance()
{
    const char* const variable = std::getenv("TOOLKIT_TEST");
    return std::to_string(InheritableDescriptors()) + "\n" + (variable != nullptr ? variable : "") + "\n";
}

volatile sig_atomic_t s_iAlarms = 0;

int* s_pExits = nullptr;

void CountExit()
{
    if (s_pExits != nullptr)
        ++*s_pExits;
}

// Shared with children: whom the handler belongs to, and how often it ran elsewhere.
struct HandlerRuns
{
    pid_t host;
    volatile int strange;
};
HandlerRuns* s_pHandlerRuns = nullptr;

void NoteWhoHandles(int)
{
    if (getpid() != s_pHandlerRuns->host)
        s_pHandlerRuns->strange = s_pHandlerRuns->strange + 1;
}

// The mask behind `name` in the status of a process.
unsigned long long SignalsIn(const std::string& status, const std::string& name)
{
    const std::size_t start = status.find("\n" + name + ":");
    EXPECT_NE(start, status.npos) << status;
    return start == status.npos ? ~0ULL : std::stoull(status.substr(start + name.size() + 2), nullptr, 16);
}

unsigned long long Bit(int number)
{
    return 1ULL << (number - 1);
}

void CountAlarm(int)
{
    s_iAlarms = s_iAlarms + 1;
}

} // namespace

TEST(SystemInfo, NumbersItsCodes)
{
    EXPECT_EQ(SystemInfo::PlatformUnknown, 0U);
    EXPECT_EQ(SystemInfo::PlatformWindows, 1U);
    EXPECT_EQ(SystemInfo::PlatformMac, 2U);
    EXPECT_EQ(SystemInfo::PlatformUnix, 3U);
    EXPECT_EQ(SystemInfo::EndianUnknown, 0U);
    EXPECT_EQ(SystemInfo::EndianBig, 1U);
    EXPECT_EQ(SystemInfo::EndianLittle, 2U);
    EXPECT_EQ(SystemInfo::EndianMiddle, 3U);
}

TEST(SystemInfo, HasNoInstanceBeforeTheModules)
{
    EXPECT_EQ(SystemInfo::s_pInstance, nullptr);
}

TEST(SystemInfo, KnowsTheVersionOfTheKernel)
{
    utsname kernel = {};
    ASSERT_EQ(uname(&kernel), 0);
    unsigned int major = 0;
    unsigned int minor = 0;
    ASSERT_EQ(std::sscanf(kernel.release, "%u.%u", &major, &minor), 2);
    EXPECT_EQ(SystemInfo::GetOSMajorVersion(), major);
    EXPECT_EQ(SystemInfo::GetOSMinorVersion(), minor);
    EXPECT_EQ(SystemInfo::GetOperatingSystemId(), major * 100 + minor * 10);
}

TEST(SystemInfo, KnowsThePlatformAndItsByteOrder)
{
    EXPECT_EQ(SystemInfo::GetPlatform(), SystemInfo::PlatformUnix);
    const unsigned int one = 1;
    EXPECT_EQ(SystemInfo::GetEndian(), *reinterpret_cast<const unsigned char*>(&one) == 1
                                           ? SystemInfo::EndianLittle
                                           : SystemInfo::EndianBig);
}

TEST(SystemInfo, AgreesWithWxWidgets)
{
    const wxInitializer started;
    const wxPlatformInfo& platform = wxPlatformInfo::Get();
    EXPECT_EQ(SystemInfo::GetOSMajorVersion(), static_cast<unsigned int>(platform.GetOSMajorVersion()));
    EXPECT_EQ(SystemInfo::GetOSMinorVersion(), static_cast<unsigned int>(platform.GetOSMinorVersion()));
    EXPECT_EQ(platform.GetOperatingSystemId(), wxOS_UNIX_LINUX);
    EXPECT_EQ(SystemInfo::GetEndian() == SystemInfo::EndianLittle,
              platform.GetEndianness() == wxENDIAN_LITTLE);
}

TEST(SystemInfo, AnswersQuietlyWithoutWxWidgetsAndAnySearchPath)
{
    const ScopedEnvironment path("PATH", "/nowhere");
    CapturedOutput errors(2);
    EXPECT_GT(SystemInfo::GetOSMajorVersion(), 0U);
    EXPECT_EQ(SystemInfo::GetPlatform(), SystemInfo::PlatformUnix);
    EXPECT_NE(SystemInfo::GetEndian(), SystemInfo::EndianUnknown);
    EXPECT_EQ(errors.Stop(), "");
}

TEST(SystemInfo, AnswersOnSeveralThreadsAtOnce)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            []
            {
                EXPECT_EQ(SystemInfo::GetOperatingSystemId(),
                          SystemInfo::GetOSMajorVersion() * 100 + SystemInfo::GetOSMinorVersion() * 10);
                EXPECT_EQ(SystemInfo::GetPlatform(), SystemInfo::PlatformUnix);
                EXPECT_NE(SystemInfo::GetEndian(), SystemInfo::EndianUnknown);
            });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(SystemInfo, HasFixedAnswersAboutRights)
{
    EXPECT_FALSE(SystemInfo::HasAdministratorCredentials());
    EXPECT_FALSE(SystemInfo::HasPowerUserCredentials());
    EXPECT_TRUE(SystemInfo::CanElevateCredentialsUsingUAC());
}

TEST(SystemInfo, StartsAProcessWithItsArguments)
{
    const struct
    {
        const wchar_t* arguments;
        const char* given;
    } rows[] = {
        {L"", ""},
        {L" \t ", ""},
        {L" a \t b", "[a]\n[b]\n"},
        {L" \"a b\" \"\" c", "[a b]\n[]\n[c]\n"},
        {L" a\"b c\"", "[a\"b]\n[c\"]\n"},
        {L" \"a b\"c", "[a b]\n[c]\n"},
        {L" a \"b c", "[a]\n"},
        {L" \u00E4\u0416\U0001F600", "[\xC3\xA4\xD0\x96\xF0\x9F\x98\x80]\n"},
        {L" $HOME * `x` ;", "[$HOME]\n[*]\n[`x`]\n[;]\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(GivenFor(row.arguments), row.given + Inheritance());
}

TEST(SystemInfo, CutsArgumentsAtTheirFirstZero)
{
    EXPECT_EQ(GivenFor(std::wstring(L" a\0b c", 6)), "[a]\n[c]\n" + Inheritance());
}

TEST(SystemInfo, GivesAnArgumentWithoutUtf8FormAsAnEmptyOne)
{
    EXPECT_EQ(GivenFor(Wide(L" a") + static_cast<wchar_t>(0xD800) + L" c"), "[]\n[c]\n" + Inheritance());
}

TEST(SystemInfo, LeavesTheEnvironmentToTheChild)
{
    const ScopedEnvironment environment("TOOLKIT_TEST", "\xC3\xA4 value");
    EXPECT_EQ(GivenFor(L""), Inheritance());
}

TEST(SystemInfo, GivesOnlyThePathWhenThereAreNoArguments)
{
    const int child =
        SystemInfo::StartProcess(UTF8::ToUNICODE(TString<char>(TOOLKIT_WRITE_ARGUMENTS)), L"", false);
    EXPECT_EQ(ExitCodeOf(child), 1) << "the program answers the length of its vector";
}

TEST(SystemInfo, StartsAProgramInANonAsciiFolder)
{
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.Path("\xC3\xA4 b"));
    std::filesystem::copy_file(TOOLKIT_WRITE_ARGUMENTS, folder.Path("\xC3\xA4 b/pr\xC3\xB6g"));
    const Wide program = folder.Wide("\xC3\xA4 b/pr\xC3\xB6g");
    ASSERT_GT(SystemInfo::StartProcess(program, folder.Wide("out"), true), 0);
    const std::string head =
        "[" + folder.Path("\xC3\xA4 b/pr\xC3\xB6g") + "]\n[" + folder.Path("out") + "]\n";
    EXPECT_EQ(ReadBytes(folder.Path("out")).substr(0, head.size()), head);
}

TEST(SystemInfo, AnswersTheChildAtOnceWithoutWaiting)
{
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    const Wide descriptor = std::to_wstring(ends[0]);
    // The child reads until the writing end is closed, which happens below, after the call has come back.
    fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    const int child = SystemInfo::StartProcess(L"/bin/cat", L"/dev/fd/" + descriptor, false);
    ASSERT_GT(child, 0);
    EXPECT_EQ(waitpid(child, nullptr, WNOHANG), 0);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(ExitCodeOf(child), 0);
}

TEST(SystemInfo, AnswersTheChildsIdAfterItHasEnded)
{
    const int child = SystemInfo::StartProcess(L"/bin/true", L"", true);
    EXPECT_GT(child, 0);
    EXPECT_NE(child, getpid());
    EXPECT_FALSE(HasChildren());
}

TEST(SystemInfo, KeepsTheChildsExitCodeToItself)
{
    EXPECT_GT(SystemInfo::StartProcess(L"/bin/sh", L"-c \"exit 7\"", true), 7);
}

TEST(SystemInfo, TracesHowTheChildThatItWaitedForHasEnded)
{
    Record record;
    const InstalledLogger installed(new RecordingLogger(record));
    const auto traceOf = [&record](const Wide& script)
    {
        record.Clear();
        const int child = SystemInfo::StartProcess(L"/bin/sh", L"-c \"" + script + L"\"", true);
        EXPECT_GT(child, 0);
        const std::wstring text = record.Text();
        const std::wstring start = L" : StartProcess : <<< StartProcess()=" + std::to_wstring(child);
        const std::size_t place = text.find(start);
        EXPECT_EQ(0U, text.find(L"2 "));
        EXPECT_NE(std::wstring::npos, place);
        return place == std::wstring::npos ? std::wstring() : text.substr(place + start.size());
    };
    EXPECT_EQ(L", exit code 0\n", traceOf(L"exit 0"));
    EXPECT_EQ(L", exit code 77\n", traceOf(L"exit 77"));
    EXPECT_EQ(L", signal 9\n", traceOf(L"kill -9 $$"));
    record.Clear();
    int status = 0;
    waitpid(SystemInfo::StartProcess(L"/bin/true", L"", false), &status, 0);
    EXPECT_EQ(L"", record.Text()) << "nobody has waited";
}

TEST(SystemInfo, EndsTheChildWithTheErrorThatKeptItFromRunning)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("plain"), "text");
    WriteBytes(folder.Path("broken"), "text");
    ASSERT_EQ(chmod(folder.Path("broken").c_str(), 0755), 0);
    const struct
    {
        Wide path;
        int error;
    } rows[] = {
        {folder.Wide("missing"), ENOENT},
        {folder.Wide("plain"), EACCES},
        {folder.Wide("plain/x"), ENOTDIR},
        {folder.Wide("broken"), ENOEXEC},
        {folder.Wide(), EACCES},
        {L"", ENOENT},
        {L"true", ENOENT},
        {std::wstring(1, static_cast<wchar_t>(0xD800)), ENOENT},
        {folder.Wide("missing") + Wide(std::wstring(L"\0x", 2)), ENOENT},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(ExitCodeOf(SystemInfo::StartProcess(row.path, L"a", false)), row.error);
        EXPECT_GT(SystemInfo::StartProcess(row.path, L"a", true), 0);
    }
    EXPECT_FALSE(HasChildren());
}

TEST(SystemInfo, RunsNoExitHandlersOfTheHostWhenAChildFails)
{
    // Shared with the child, which would count there.
    void* const shared =
        mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    s_pExits = static_cast<int*>(shared);
    ASSERT_EQ(std::atexit(&CountExit), 0);
    EXPECT_GT(SystemInfo::StartProcess(L"/nowhere/missing", L"", true), 0);
    EXPECT_EQ(*s_pExits, 0);
    s_pExits = nullptr;
    munmap(shared, sizeof(int));
}

TEST(SystemInfo, WaitsOnWhenASignalInterrupts)
{
    s_iAlarms = 0;
    const ScopedSignal handler(SIGALRM, &CountAlarm);
    const itimerval often = {{0, 5000}, {0, 5000}};
    const itimerval never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    const int child = SystemInfo::StartProcess(L"/bin/sleep", L"0.1", true);
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_GT(child, 0);
    EXPECT_GT(s_iAlarms, 0);
    EXPECT_FALSE(HasChildren());
}

TEST(SystemInfo, LeavesBlockedAndIgnoredSignalsToTheChildAndNoHandler)
{
    const TemporaryFolder folder;
    const ScopedSignal handled(SIGUSR1, &CountAlarm);
    const ScopedSignal ignored(SIGUSR2, SIG_IGN);
    sigset_t hangup;
    sigset_t before;
    sigset_t after;
    sigemptyset(&hangup);
    sigaddset(&hangup, SIGHUP);
    pthread_sigmask(SIG_SETMASK, &hangup, &before);
    EXPECT_GT(SystemInfo::StartProcess(L"/bin/cp", L"/proc/self/status " + folder.Wide("out"), true), 0);
    EXPECT_GT(SystemInfo::StartProcess(L"/nowhere/missing", L"", true), 0);
    pthread_sigmask(SIG_SETMASK, &before, &after);

    const std::string status = ReadBytes(folder.Path("out"));
    EXPECT_EQ(SignalsIn(status, "SigBlk"), Bit(SIGHUP));
    EXPECT_EQ(SignalsIn(status, "SigIgn") & (Bit(SIGUSR1) | Bit(SIGUSR2)), Bit(SIGUSR2));
    EXPECT_EQ(SignalsIn(status, "SigCgt"), 0U);

    EXPECT_EQ(sigismember(&after, SIGHUP), 1) << "the caller's own mask is as it was";
    EXPECT_EQ(sigismember(&after, SIGTERM), 0);
    struct sigaction action = {};
    sigaction(SIGUSR1, nullptr, &action);
    EXPECT_EQ(action.sa_handler, &CountAlarm) << "and so is its handler";
}

TEST(SystemInfo, HandlersOfTheHostNeverRunInTheChild)
{
    void* const shared =
        mmap(nullptr, sizeof(HandlerRuns), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    s_pHandlerRuns = static_cast<HandlerRuns*>(shared);
    EXPECT_TRUE(ToolkitTest::InChild(
        []
        {
            // A group of its own, into which signals rain while processes are started.
            setpgid(0, 0);
            s_pHandlerRuns->host = getpid();
            const ScopedSignal handler(SIGUSR1, &NoteWhoHandles);
            const pid_t rain = fork();
            if (rain == 0)
            {
                std::signal(SIGUSR1, SIG_IGN);
                while (kill(0, SIGUSR1) == 0)
                    usleep(20);
                _exit(0);
            }
            bool started = rain > 0;
            for (int i = 0; i < 300; ++i)
                started = started && SystemInfo::StartProcess(L"/bin/true", L"", true) > 0;
            kill(rain, SIGKILL);
            waitpid(rain, nullptr, 0);
            return started;
        }));
    EXPECT_EQ(s_pHandlerRuns->strange, 0);
    s_pHandlerRuns = nullptr;
    munmap(shared, sizeof(HandlerRuns));
}

TEST(SystemInfo, StartsProcessesOnSeveralThreadsAtOnce)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            []
            {
                for (int round = 0; round < 25; ++round)
                {
                    const std::wstring code = std::to_wstring(round + 1);
                    EXPECT_EQ(
                        ExitCodeOf(SystemInfo::StartProcess(L"/bin/sh", L"-c \"exit " + code + L"\"", false)),
                        round + 1);
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(HasChildren());
}

TEST(SystemInfo, AnswersMinusOneWhenTheChildCannotBeWaitedFor)
{
    const ScopedSignal ignored(SIGCHLD, SIG_IGN);
    EXPECT_EQ(SystemInfo::StartProcess(L"/bin/true", L"", true), -1);
}

TEST(SystemInfo, ReturnsTheErrorWhenNoChildCanBeMade)
{
    // The limit holds for every user but root.
    EXPECT_TRUE(ToolkitTest::AsNobody(
        []
        {
            const rlimit none = {0, 0};
            return setrlimit(RLIMIT_NPROC, &none) == 0 &&
                   SystemInfo::StartProcess(L"/bin/true", L"", true) == EAGAIN;
        }));
}

TEST(SystemInfo, StartsManyProcessesAndLeavesNothingBehind)
{
    for (int i = 0; i < 200; ++i)
        ASSERT_GT(SystemInfo::StartProcess(L"/bin/true", L"a b c", true), 0);
    EXPECT_FALSE(HasChildren());
}
