// SPDX-License-Identifier: MIT
#include "toolkit/app/Process.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/ForkedCopy.h"
#include "tests/support/InChild.h"
#include "tests/support/Resources.h"
#include "tests/support/Rounds.h"
#include "tests/support/ScopedSignal.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

using namespace std::chrono_literals;
using Toolkit::Errc;
using Toolkit::Process;
using Toolkit::ProcessOptions;
using Toolkit::ProcessResult;
using Toolkit::Result;
using ToolkitTest::ChildAnswer;
using ToolkitTest::ForkedCopy;
using ToolkitTest::InChild;
using ToolkitTest::OpenDescriptors;
using ToolkitTest::ReadBytes;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::ScopedSignal;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WaitUntil;
using ToolkitTest::WriteBytes;

static_assert(!std::is_copy_constructible_v<Process> && std::is_nothrow_move_constructible_v<Process>);
static_assert(std::is_copy_constructible_v<ProcessOptions> &&
              std::is_nothrow_copy_constructible_v<ProcessResult>);

namespace
{

// As much as the pipes do not hold by far.
const std::size_t s_uMuch = std::size_t{64} << 20;

// Ends by itself only when all goes wrong, and then long after the test.
const char* const c_strForEver = "sleep 3600";

ProcessResult Sh(const std::string& script, const ProcessOptions& options = ProcessOptions())
{
    return Process::Run({"/bin/sh", "-c", script}, options).value();
}

Process StartSh(const std::string& script, const ProcessOptions& options = ProcessOptions())
{
    return Process::Start({"/bin/sh", "-c", script}, options).value();
}

std::string Bytes(std::size_t size)
{
    std::string bytes(std::min(size, std::size_t{100003}), '\0');
    unsigned int state = 1;
    for (char& byte : bytes)
        byte = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24);
    while (bytes.size() < size)
        bytes.append(bytes, 0, size - bytes.size());
    return bytes;
}

// A script that may be run.
std::string Executable(const TemporaryFolder& folder, const std::string& name, const std::string& content)
{
    WriteBytes(folder.Path(name), content);
    std::filesystem::permissions(folder.Path(name), std::filesystem::perms::owner_all);
    return folder.Path(name);
}

// True when no process of that number runs any more.
bool IsGone(const std::string& process)
{
    const std::string stat = ReadBytes("/proc/" + process + "/stat");
    const std::size_t end = stat.rfind(") ");
    return end == stat.npos || stat[end + 2] == 'Z' || stat[end + 2] == 'X';
}

bool HasChildren()
{
    return waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

// What a failure of starting says.
std::string Message(const Result<ProcessResult>& result)
{
    return result ? "no failure" : result.error().Message();
}

void DoNothing(int) {}

} // namespace

TEST(Process, TellsHowAProgramEndedAndWhatItWrote)
{
    const ProcessResult result = Sh("printf out; printf err >&2; exit 3");
    EXPECT_EQ(3, result.ExitCode());
    EXPECT_EQ(0, result.Signal());
    EXPECT_FALSE(result.TimedOut());
    EXPECT_FALSE(result.Truncated());
    EXPECT_EQ("out", result.Output());
    EXPECT_EQ("err", result.Errors());
}

TEST(Process, SearchesThePath)
{
    const TemporaryFolder folder;
    Executable(folder, "toolkit-test-program", "#!/bin/sh\necho $0\n");
    WriteBytes(folder.Path("true"), "not executable");
    const ScopedEnvironment path("PATH", (folder.Path() + ":/nowhere:/usr/bin:/bin").c_str());
    EXPECT_EQ(folder.Path("toolkit-test-program") + "\n", Process::Run({"toolkit-test-program"})->Output());
    EXPECT_EQ(0, Process::Run({"true"})->ExitCode()) << "a file that may not be run is passed over";
    EXPECT_FALSE(Process::Run({"toolkit-test-program"}, ProcessOptions().Environment("PATH", "/bin")));
    const ScopedEnvironment elsewhere("PATH", "/nowhere");
    EXPECT_TRUE(Process::Run({"toolkit-test-program"}, ProcessOptions().Environment("PATH", folder.Path())));
    const ScopedEnvironment none("PATH", nullptr);
    EXPECT_EQ(0, Process::Run({"true"})->ExitCode());
}

TEST(Process, EmptyPartOfThePathIsTheFolderOfTheProcess)
{
    const TemporaryFolder folder;
    Executable(folder, "program", "#!/bin/sh\necho here\n");
    const ProcessOptions options = ProcessOptions().Folder(folder.Path());
    EXPECT_EQ("here\n", Process::Run({"./program"}, options)->Output());
    EXPECT_EQ("here\n",
              Process::Run({"program"}, ProcessOptions(options).Environment("PATH", "/bin:"))->Output());
}

TEST(Process, GivesArgumentsExactly)
{
    const std::vector<std::string> arguments = {"",      " ", "a b", "\"",       "'\\",
                                                "$HOME", "*", "-\n", "\xFF\xFE", "\xC3\xA4"};
    std::vector<std::string> all = {"/bin/sh", "-c", "printf '<%s>' \"$@\"", "sh"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::string expected;
    for (const std::string& argument : arguments)
        expected += "<" + argument + ">";
    EXPECT_EQ(expected, Process::Run(all)->Output());
}

TEST(Process, SetsFolderAndEnvironment)
{
    const TemporaryFolder folder;
    const ScopedEnvironment kept("TOOLKIT_KEPT", "kept");
    const ScopedEnvironment changed("TOOLKIT_CHANGED", "before");
    const auto options = ProcessOptions().Folder(folder.Path()).Environment("TOOLKIT_CHANGED", "a=b\n");
    const char* const script = "pwd; printf %s \"$TOOLKIT_KEPT|$TOOLKIT_CHANGED\"";
    EXPECT_EQ(std::filesystem::canonical(folder.Path()).native() + "\nkept|a=b\n",
              Sh(script, options).Output());
    EXPECT_STREQ("before", std::getenv("TOOLKIT_CHANGED"));
    EXPECT_EQ("A=1\n",
              Process::Run({"env"}, ProcessOptions().ClearEnvironment().Environment("A", "1"))->Output());
}

TEST(Process, MergesErrorsIntoTheOutput)
{
    const ProcessResult result = Sh("echo a; echo b >&2; echo c", ProcessOptions().MergeErrors());
    EXPECT_EQ("a\nb\nc\n", result.Output());
    EXPECT_EQ("", result.Errors());
}

TEST(Process, CarriesMuchBothWays)
{
    const std::string bytes = Bytes(s_uMuch);
    const ProcessResult result = *Process::Run({"cat"}, ProcessOptions().Input(bytes));
    EXPECT_EQ(0, result.ExitCode());
    EXPECT_TRUE(bytes == result.Output());
}

TEST(Process, CarriesMuchOfOutputAndErrorsAtOnce)
{
    const std::string bytes = Bytes(std::size_t{4} << 20);
    const ProcessResult result = Sh("tee /dev/stderr", ProcessOptions().Input(bytes));
    EXPECT_TRUE(bytes == result.Output());
    EXPECT_TRUE(bytes == result.Errors());
}

TEST(Process, ChildThatClosesItsInputEarlyIsNoFailure)
{
    const ScopedSignal deadly(SIGPIPE, SIG_DFL);
    const ProcessResult result = Sh("exec <&-; echo done", ProcessOptions().Input(Bytes(1 << 20)));
    EXPECT_EQ(0, result.ExitCode());
    EXPECT_EQ("done\n", result.Output());
    Process process = StartSh("exec <&-; echo closed; exec sleep 3600");
    ASSERT_EQ("closed", *process.ReadLine());
    const Result<void> written = process.Write("too late");
    ASSERT_FALSE(written);
    EXPECT_EQ(std::errc::broken_pipe, written.error().Code());
}

TEST(Process, HasNoInputUnlessGiven)
{
    EXPECT_EQ("0\n", Sh("wc -c").Output());
}

TEST(Process, TellsTheSignalThatEndedIt)
{
    const ProcessResult result = Sh("echo begun; kill -USR1 $$");
    EXPECT_EQ(SIGUSR1, result.Signal());
    EXPECT_EQ(-1, result.ExitCode());
    EXPECT_EQ("begun\n", result.Output());
}

TEST(Process, KeepsNoMoreThanTheMostAndGoesOn)
{
    const ProcessResult result =
        Sh("head -c 1000000 /dev/zero; printf error >&2; exit 4", ProcessOptions().MaxOutput(1000));
    EXPECT_EQ(4, result.ExitCode());
    EXPECT_EQ(1000U, result.Output().size());
    EXPECT_EQ("error", result.Errors());
    EXPECT_TRUE(result.Truncated());
    EXPECT_FALSE(Sh("printf 12345", ProcessOptions().MaxOutput(5)).Truncated());
}

TEST(Process, WholeGroupEndsAtTheTimeout)
{
    const TemporaryFolder folder;
    const std::string script = "trap '' TERM; (trap '' TERM; exec sleep 3600) & echo $! $$; wait; wait";
    const auto begin = std::chrono::steady_clock::now();
    const ProcessResult result = Sh(script, ProcessOptions().Timeout(200ms));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 200ms);
    EXPECT_TRUE(result.TimedOut());
    EXPECT_EQ(SIGKILL, result.Signal());
    const std::size_t blank = result.Output().find(' ');
    ASSERT_NE(result.Output().npos, blank);
    const std::string grandchild = result.Output().substr(0, blank);
    const std::string child = result.Output().substr(blank + 1, result.Output().size() - blank - 2);
    EXPECT_TRUE(WaitUntil([&] { return IsGone(grandchild); }));
    EXPECT_FALSE(std::filesystem::exists("/proc/" + child)) << "a zombie";
}

TEST(Process, ChildThatStopsItselfEndsAtTheTimeout)
{
    const ProcessResult result = Sh("kill -STOP $$", ProcessOptions().Timeout(100ms));
    EXPECT_TRUE(result.TimedOut());
    EXPECT_EQ(SIGKILL, result.Signal());
}

TEST(Process, GrandchildThatKeepsThePipesOpenIsNotWaitedFor)
{
    const ProcessResult result = Sh("sleep 3600 & echo $!; exit 5");
    EXPECT_EQ(5, result.ExitCode());
    const std::string grandchild = result.Output().substr(0, result.Output().size() - 1);
    EXPECT_FALSE(IsGone(grandchild)) << "what a process leaves behind goes on";
    kill(std::stoi(grandchild), SIGKILL);
}

TEST(Process, GrandchildThatWritesForEverIsNotWaitedFor)
{
    const ProcessResult result = Sh("yes & echo $! >&2");
    EXPECT_EQ(0, result.ExitCode());
    // It ends by itself, as nobody reads any more.
    EXPECT_TRUE(WaitUntil([&] { return IsGone(result.Errors().substr(0, result.Errors().size() - 1)); }));
}

TEST(Process, SaysWhyItCannotRun)
{
    const TemporaryFolder folder;
    const std::string text = folder.Path("text");
    WriteBytes(text, "echo no\n");
    const std::string noInterpreter = Executable(folder, "no-interpreter", "echo no\n");
    const std::string lost = Executable(folder, "lost-interpreter", "#!/nowhere/interpreter\n");
    const std::string gone = folder.Path("gone");
    const struct
    {
        std::vector<std::string> arguments;
        ProcessOptions options;
        std::errc code;
        std::string message;
    } rows[] = {
        {{}, {}, std::errc::invalid_argument, "cannot run a program without a name"},
        {{""}, {}, std::errc::invalid_argument, "cannot run a program without a name"},
        {{"true", std::string("a\0b", 3)},
         {},
         std::errc::invalid_argument,
         "cannot run true: an argument has a NUL in it"},
        {{"true"},
         ProcessOptions().Environment("A=B", "c"),
         std::errc::invalid_argument,
         "cannot run true: \"A=B\" cannot be a variable so"},
        {{"true"},
         ProcessOptions().Folder(""),
         std::errc::invalid_argument,
         "cannot run true: the name of the folder is empty or has a NUL in it"},
        {{"toolkit-no-such-program"},
         {},
         std::errc::no_such_file_or_directory,
         "cannot run toolkit-no-such-program: No such file or directory"},
        {{gone},
         {},
         std::errc::no_such_file_or_directory,
         "cannot run " + gone + ": No such file or directory"},
        {{text}, {}, std::errc::permission_denied, "cannot run " + text + ": Permission denied"},
        {{folder.Path()},
         {},
         std::errc::permission_denied,
         "cannot run " + folder.Path() + ": Permission denied"},
        {{noInterpreter},
         {},
         std::errc::executable_format_error,
         "cannot run " + noInterpreter + ": Exec format error"},
        {{lost},
         {},
         std::errc::no_such_file_or_directory,
         "cannot run the interpreter of " + lost + ": No such file or directory"},
        {{"true"},
         ProcessOptions().Folder(gone),
         std::errc::no_such_file_or_directory,
         "cannot run true in the folder " + gone + ": No such file or directory"},
        {{"true"},
         ProcessOptions().Folder(text),
         std::errc::not_a_directory,
         "cannot run true in the folder " + text + ": Not a directory"},
    };
    const long descriptors = OpenDescriptors();
    for (const auto& row : rows)
    {
        const Result<ProcessResult> result = Process::Run(row.arguments, row.options);
        EXPECT_EQ(row.message, Message(result));
        EXPECT_TRUE(!result && result.error().Code() == row.code);
    }
    EXPECT_FALSE(HasChildren());
    EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST(Process, SaysThatItsArgumentsAreTooLong)
{
    const long descriptors = OpenDescriptors();
    const Result<ProcessResult> result = Process::Run({"true", std::string(std::size_t{1} << 20, 'a')});
    EXPECT_EQ("cannot run true: Argument list too long", Message(result));
    EXPECT_TRUE(!result && result.error().Code() == std::errc::argument_list_too_long);
    EXPECT_FALSE(HasChildren());
    EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST(Process, SaysThatThereAreNoMoreDescriptors)
{
    EXPECT_TRUE(InChild(
        []
        {
            // UndefinedBehaviorSanitizer needs a descriptor for the first object of each type.
            EXPECT_EQ(0, Process::Run({"true"})->ExitCode());
            EXPECT_EQ(std::errc::no_such_file_or_directory, Process::Run({"/no/such"}).error().Code());
            const rlimit none = {3, 3};
            setrlimit(RLIMIT_NOFILE, &none);
            const Result<ProcessResult> result = Process::Run({"true"});
            return !result && result.error().Code() == std::errc::too_many_files_open &&
                   result.error().Message() == "cannot start true: Too many open files";
        }));
}

TEST(Process, IsTalkedWith)
{
    Process process = Process::Start({"sort"}).value();
    EXPECT_GT(process.Id(), 0);
    EXPECT_TRUE(process.Write("b\n"));
    EXPECT_TRUE(process.Write("a\nc", 60s));
    process.CloseInput();
    EXPECT_EQ("a", *process.ReadLine(60s));
    EXPECT_EQ("b", *process.ReadLine());
    const Result<ProcessResult> end = process.Wait(60s);
    ASSERT_TRUE(end);
    EXPECT_EQ(0, end->ExitCode());
    EXPECT_EQ("c\n", end->Output());
    EXPECT_EQ("c", *process.ReadLine(0s)) << "the result leaves the lines alone";
    EXPECT_EQ(std::errc::no_message_available, process.ReadLine(0s).error().Code());
    EXPECT_EQ("c\n", process.Wait()->Output());
    EXPECT_EQ(std::errc::broken_pipe, process.Write("late").error().Code());
}

TEST(Process, InputOfTheOptionsComesFirst)
{
    Process process = Process::Start({"cat"}, ProcessOptions().Input("first\n")).value();
    EXPECT_EQ("first", *process.ReadLine());
    EXPECT_TRUE(process.Write("second"));
    process.CloseInput();
    EXPECT_EQ("second", *process.ReadLine()) << "a last line needs no end";
    EXPECT_EQ(0, process.Wait()->ExitCode());
}

TEST(Process, WaitingEndsInTimeAndMayGoOn)
{
    Process process = StartSh("read line; echo $line; read line; exit 6");
    const Result<std::string> none = process.ReadLine(10ms);
    ASSERT_FALSE(none);
    EXPECT_EQ(Errc::NotAnswered, none.error().Code());
    EXPECT_EQ("/bin/sh has not written a line in time", none.error().Message());
    EXPECT_EQ(Errc::NotAnswered, process.Wait(0s).error().Code());
    EXPECT_EQ(Errc::NotAnswered, process.Wait(-1s).error().Code());
    EXPECT_EQ(Errc::NotAnswered, process.Wait(std::chrono::nanoseconds::min()).error().Code());
    EXPECT_TRUE(process.Write("line\n"));
    EXPECT_EQ("line", *process.ReadLine(std::chrono::nanoseconds::max()));
    EXPECT_EQ(6, process.Wait()->ExitCode()) << "waiting for ever closes the input";
}

TEST(Process, WritingEndsInTime)
{
    Process process = StartSh(c_strForEver);
    const Result<void> written = process.Write(Bytes(1 << 20), 10ms);
    ASSERT_FALSE(written);
    EXPECT_EQ(Errc::NotAnswered, written.error().Code());
}

TEST(Process, WritingNeverWaitsForAChildThatWaitsForItsReader)
{
    const std::string bytes = Bytes(std::size_t{4} << 20);
    Process process = Process::Start({"cat"}).value();
    EXPECT_TRUE(process.Write(bytes));
    EXPECT_TRUE(process.Write(bytes));
    EXPECT_TRUE(bytes + bytes == process.Wait()->Output());
}

TEST(Process, WritingEndsWithTheChildThoughAGrandchildKeepsItsInput)
{
    Process process = StartSh("sleep 3600 <&0 & echo $!");
    const std::string grandchild = *process.ReadLine();
    EXPECT_EQ(std::errc::broken_pipe, process.Write(Bytes(1 << 20)).error().Code());
    kill(std::stoi(grandchild), SIGKILL);
}

TEST(Process, ManyLinesAreReadOneByOne)
{
    Process process = Process::Start({"seq", "100000"}).value();
    for (int i = 1; i <= 100000; ++i)
        ASSERT_EQ(std::to_string(i), *process.ReadLine());
    EXPECT_FALSE(process.ReadLine());
    EXPECT_EQ("", process.Wait()->Output());
}

TEST(Process, TerminateAsksFirst)
{
    Process process = StartSh("trap 'echo tidied; exit 7' TERM; echo ready; while :; do sleep 0.01; done");
    ASSERT_EQ("ready", *process.ReadLine());
    process.Terminate(60s);
    EXPECT_EQ(7, process.Wait()->ExitCode());
    EXPECT_EQ("tidied\n", process.Wait()->Output());
}

TEST(Process, TerminateKillsWhatDoesNotEndAndWhatIsStopped)
{
    const char* const scripts[] = {"trap '' TERM; echo ready; while :; do sleep 0.01; done",
                                   "echo ready; kill -STOP $$; sleep 3600"};
    for (const char* const script : scripts)
    {
        Process process = StartSh(script);
        ASSERT_EQ("ready", *process.ReadLine());
        process.Terminate(20ms);
        EXPECT_NE(0, process.Wait(0s)->Signal());
        process.Terminate();
    }
}

TEST(Process, TerminateEndsTheWholeGroup)
{
    Process process = StartSh("trap '' TERM; sleep 3600 & trap - TERM; echo $!; wait");
    const std::string grandchild = *process.ReadLine();
    process.Terminate(60s);
    EXPECT_EQ(SIGTERM, process.Wait()->Signal());
    EXPECT_TRUE(WaitUntil([&] { return IsGone(grandchild); }));
}

TEST(Process, DestructionEndsTheGroupAndLeavesNothing)
{
    const long descriptors = OpenDescriptors();
    std::string grandchild;
    {
        Process process = StartSh("trap '' TERM; sleep 3600 & echo $!; wait");
        grandchild = *process.ReadLine();
        Process other = StartSh(c_strForEver);
        other = std::move(process);
        EXPECT_FALSE(IsGone(grandchild));
    }
    EXPECT_TRUE(WaitUntil([&] { return IsGone(grandchild); }));
    EXPECT_FALSE(HasChildren());
    EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST(Process, OneThatWasMovedFromHasNoProcess)
{
    Process process = Process::Start({"cat"}).value();
    Process taken = std::move(process);
    // NOLINTBEGIN(bugprone-use-after-move): the header says what it does.
    EXPECT_EQ(0, process.Id());
    process.CloseInput();
    process.Terminate();
    process.Terminate(1s);
    EXPECT_EQ(Errc::Refused, process.Write("a\n").error().Code());
    EXPECT_EQ(Errc::Refused, process.ReadLine(1s).error().Code());
    EXPECT_EQ(Errc::Refused, process.Wait(1s).error().Code());
    EXPECT_EQ("cannot wait for the process: it was moved elsewhere", process.Wait().error().Message());
    // NOLINTEND(bugprone-use-after-move)
    EXPECT_TRUE(taken.Write("still here\n"));
    process = std::move(taken);
    EXPECT_EQ("still here", *process.ReadLine());
}

TEST(Process, AssignedToItselfItGoesOn)
{
    Process process = Process::Start({"cat"}).value();
    Process& same = process;
    process = std::move(same);
    EXPECT_TRUE(process.Write("still here\n"));
    EXPECT_EQ("still here", *process.ReadLine());
}

TEST(Process, OptionsThatWereMovedFromAreAsNew)
{
    ProcessOptions options = ProcessOptions().Input("text");
    const ProcessOptions taken = std::move(options);
    EXPECT_EQ("text", Process::Run({"cat"}, taken)->Output());
    // NOLINTBEGIN(bugprone-use-after-move): the header says what they are.
    EXPECT_EQ("", Process::Run({"cat"}, options)->Output());
    EXPECT_EQ(0, Process::Start({"cat"}, options)->Wait()->ExitCode());
    const ProcessOptions copy = options;
    EXPECT_EQ("", Process::Run({"cat"}, copy)->Output());
    EXPECT_EQ("other", Process::Run({"cat"}, options.Input("other"))->Output());
    // NOLINTEND(bugprone-use-after-move)
}

TEST(Process, TimeoutCountsFromTheStartOfOneThatIsTalkedWith)
{
    Process process = StartSh(c_strForEver, ProcessOptions().Timeout(50ms));
    EXPECT_EQ(std::errc::no_message_available, process.ReadLine().error().Code());
    EXPECT_TRUE(process.Wait()->TimedOut());
    EXPECT_EQ(
        0, StartSh("exit 0", ProcessOptions().Timeout(std::chrono::nanoseconds::max())).Wait()->ExitCode());
    for (const std::chrono::nanoseconds past :
         {std::chrono::nanoseconds(-1), std::chrono::nanoseconds::min()})
        EXPECT_TRUE(StartSh(c_strForEver, ProcessOptions().Timeout(past)).Wait()->TimedOut());
}

TEST(Process, ForkedCopyOfTheHostHasNoPartInIt)
{
    Process process = Process::Start({"cat"}).value();
    EXPECT_TRUE(InChild(
        [&process]
        {
            const Process taken = std::move(process);
            return true;
        }));
    ForkedCopy copy(
        []() -> ChildAnswer
        {
            for (;;)
                pause();
        });
    EXPECT_TRUE(process.Write("still here\n"));
    EXPECT_EQ("still here", *process.ReadLine());
    EXPECT_EQ(0, process.Wait()->ExitCode()) << "the copy does not keep the input open";
    copy.Kill();
}

TEST(Process, HasNothingButTheThreeDescriptors)
{
    const int inherited = open("/dev/null", O_RDONLY);
    ASSERT_NE(-1, inherited);
    EXPECT_EQ(900, dup2(inherited, 900));
    const TemporaryFolder folder;
    EXPECT_EQ(0, Process::Run({TOOLKIT_WRITE_ARGUMENTS, folder.Path("out")})->ExitCode());
    EXPECT_EQ(std::string("[") + TOOLKIT_WRITE_ARGUMENTS + "]\n[" + folder.Path("out") + "]\n0\n\n",
              ReadBytes(folder.Path("out")));
    EXPECT_NE(-1, fcntl(900, F_GETFD)) << "the host keeps it";
    close(900);
    close(inherited);
}

TEST(Process, HasNoSignalBlockedOrIgnoredAndAGroupOfItsOwn)
{
    const ScopedSignal ignored(SIGUSR1, SIG_IGN);
    const ScopedSignal handled(SIGUSR2, DoNothing);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const std::string status = Process::Run({"cat", "/proc/self/status"})->Output();
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, &before, &after);
    EXPECT_THAT(status, testing::HasSubstr("\nSigBlk:\t0000000000000000\n"));
    EXPECT_THAT(status, testing::HasSubstr("\nSigIgn:\t0000000000000000\n"));
    EXPECT_EQ(1, sigismember(&after, SIGTERM));
    EXPECT_EQ(0, sigismember(&after, SIGPIPE));
    struct sigaction action = {};
    sigaction(SIGUSR2, nullptr, &action);
    EXPECT_EQ(&DoNothing, action.sa_handler);
    Process process = Process::Start({"cat"}).value();
    EXPECT_EQ(process.Id(), getpgid(process.Id()));
}

TEST(Process, HostsPendingSignalOfAPipeStaysItsOwn)
{
    sigset_t pipe;
    sigset_t before;
    sigset_t pending;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
    raise(SIGPIPE);
    Process process = StartSh("exec <&-; echo closed; exec sleep 3600");
    EXPECT_TRUE(process.ReadLine());
    EXPECT_FALSE(process.Write("a"));
    sigpending(&pending);
    EXPECT_EQ(1, sigismember(&pending, SIGPIPE));
    int number = 0;
    sigwait(&pipe, &number);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(Process, HostMayIgnoreTheEndsOfItsChildren)
{
    const long descriptors = OpenDescriptors();
    {
        const ScopedSignal ignored(SIGCHLD, SIG_IGN);
        EXPECT_EQ(3, Sh("exit 3").ExitCode());
        EXPECT_EQ(SIGUSR1, Sh("kill -USR1 $$").Signal());
        const std::string bytes = Bytes(1 << 20);
        EXPECT_TRUE(bytes == Process::Run({"cat"}, ProcessOptions().Input(bytes))->Output());
        EXPECT_TRUE(Sh("sleep 3600", ProcessOptions().Timeout(50ms)).TimedOut());
        EXPECT_EQ("cannot run /nowhere: No such file or directory", Message(Process::Run({"/nowhere"})));
        Process process = Process::Start({"cat"}).value();
        EXPECT_TRUE(process.Write("line\n"));
        EXPECT_EQ("line", *process.ReadLine());
        process.Terminate(60s);
        EXPECT_EQ(SIGTERM, process.Wait()->Signal());
        Process forgotten = StartSh(c_strForEver);
    }
    EXPECT_FALSE(HasChildren());
    EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST(Process, HostMayWaitForAllItsChildrenItself)
{
    Process process = Process::Start({"cat"}).value();
    process.CloseInput();
    int status = 0;
    EXPECT_EQ(process.Id(), waitpid(-1, &status, 0));
    const Result<ProcessResult> result = process.Wait();
    EXPECT_EQ(-1, result->ExitCode());
    EXPECT_EQ(0, result->Signal());
}

TEST(Process, RunsInAHostWithoutStandardStreams)
{
    EXPECT_TRUE(InChild(
        []() -> ChildAnswer
        {
            for (int number = 0; number <= 2; ++number)
                close(number);
            const ProcessResult result = Sh("cat; echo error >&2", ProcessOptions().Input("through"));
            for (int number = 0; number <= 2; ++number)
                if (fcntl(number, F_GETFD) != -1)
                    return "a descriptor was left in the place of a standard stream";
            return result.Output() == "through" && result.Errors() == "error\n";
        }));
}

TEST(Process, RunsInAHostWithManyDescriptors)
{
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit raised = {limit.rlim_max, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &raised);
    std::vector<int> many;
    while (many.size() < 10000 && many.size() + 100 < limit.rlim_max)
        many.push_back(dup(STDIN_FILENO));
    EXPECT_EQ("3\n", Sh("set -- /proc/self/fd/[0-2]; echo $#").Output());
    EXPECT_EQ("", Sh("ls /proc/$$/fd | grep ....").Output());
    for (const int each : many)
        close(each);
    setrlimit(RLIMIT_NOFILE, &limit);
}

TEST(Process, ThreadsStartProcessesAtTheSameTime)
{
    const long descriptors = OpenDescriptors();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [i]
            {
                for (int j = 0; j < 10; ++j)
                {
                    const std::string text = std::to_string(i) + " " + std::to_string(j);
                    EXPECT_EQ(text, Process::Run({"cat"}, ProcessOptions().Input(text))->Output());
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_FALSE(HasChildren());
    EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST(Process, ManyRunAtOnce)
{
    ToolkitTest::Rounds rounds("processes at once", "TOOLKIT_TEST_PROCESSES", 100);
    while (rounds.GoOn())
    {
        const unsigned long count = rounds.Size(1000);
        std::vector<Process> processes;
        for (unsigned long i = 0; i < count; ++i)
            processes.push_back(Process::Start({"cat"}).value());
        for (Process& process : processes)
            ASSERT_TRUE(process.Write(std::to_string(process.Id())));
        for (Process& process : processes)
            ASSERT_EQ(std::to_string(process.Id()), process.Wait()->Output());
        rounds.Did(count);
    }
    EXPECT_FALSE(HasChildren());
}

TEST(Process, ReplacesItself)
{
    const TemporaryFolder folder;
    const std::string out = folder.Path("out");
    Process process = Process::Start({TOOLKIT_REPLACE_ITSELF, "first"}).value();
    EXPECT_EQ("first", *process.ReadLine());
    const std::string self = std::filesystem::canonical(TOOLKIT_REPLACE_ITSELF).native();
    for (const std::string& each :
         {self, std::string("again"), std::string("a b"), std::string(), std::string("\xFF")})
        EXPECT_EQ("[" + each + "]", *process.ReadLine());
    EXPECT_EQ(std::to_string(process.Id()) + " 0 descriptors", *process.ReadLine());
    EXPECT_EQ("nothing blocked", *process.ReadLine());
    EXPECT_EQ(9, process.Wait()->ExitCode());
}

TEST(Process, BecomesTheFileThatTookItsPlace)
{
    const TemporaryFolder folder;
    const std::string program = folder.Path("program");
    std::filesystem::copy_file(TOOLKIT_REPLACE_ITSELF, program);
    Process process = Process::Start({program, "wait"}).value();
    EXPECT_EQ("wait", *process.ReadLine());
    std::filesystem::remove(program);
    Executable(folder, "program", "#!/bin/sh\necho the new one got $1\n");
    EXPECT_TRUE(process.Write("\n"));
    EXPECT_EQ("the new one got again", *process.ReadLine());
}

TEST(Process, SaysWhyItCannotReplaceItself)
{
    const int inherited = dup(STDERR_FILENO);
    const Result<void> never = Process::ReplaceSelf({std::string(std::size_t{1} << 20, 'a')});
    EXPECT_EQ(std::errc::argument_list_too_long, never.error().Code());
    EXPECT_EQ(0, fcntl(inherited, F_GETFD)) << "all is as before";
    close(inherited);
    EXPECT_EQ(std::errc::invalid_argument, Process::ReplaceSelf({std::string(1, '\0')}).error().Code());
}
