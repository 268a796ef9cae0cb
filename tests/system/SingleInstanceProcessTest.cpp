// SPDX-License-Identifier: MIT
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Rounds.h"
#include "tests/support/TalkingProgram.h"
#include "tests/support/TemporaryFolder.h"

using ToolkitTest::CapturedOutput;
using ToolkitTest::ReadBytes;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TalkingProgram;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

// A home folder of the test's own; whatever the programs say of errors fails the test.
class SingleInstanceProcess : public testing::Test
{
protected:
    ~SingleInstanceProcess() override { EXPECT_EQ("", m_errors.Stop()); }

    // The answers of that many programs that are told to start at the same time.
    std::vector<std::string> StartAtOnce(unsigned int count)
    {
        m_programs.clear();
        for (unsigned int i = 0; i < count; ++i)
            m_programs.push_back(std::make_unique<TalkingProgram>(TOOLKIT_SINGLE_INSTANCE));
        for (const auto& program : m_programs)
            program->Tell("start");
        std::vector<std::string> answers;
        for (const auto& program : m_programs)
            answers.push_back(program->Answer());
        return answers;
    }

    void KillTheFirstAndEndTheRest(const std::vector<std::string>& answers)
    {
        for (std::size_t i = 0; i < answers.size(); ++i)
            if (answers[i] == "first")
                m_programs[i]->Kill();
        m_programs.clear();
    }

    // The files in the home folder, which the application's data folder is none of.
    std::vector<std::string> Files() const
    {
        std::vector<std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(m_home.Path()))
            if (!entry.is_directory())
                files.push_back(entry.path());
        return files;
    }

    // Where the lock file lies, found out by a program that makes it.
    std::string LockPath() const
    {
        TalkingProgram program(TOOLKIT_SINGLE_INSTANCE);
        EXPECT_EQ("first", program.Ask("start"));
        const std::vector<std::string> files = Files();
        EXPECT_EQ(1U, files.size());
        return files.empty() ? "" : files[0];
    }

    TemporaryFolder m_home;
    const ScopedEnvironment m_environment{"HOME", m_home.Path().c_str()};
    CapturedOutput m_errors{2};
    std::vector<std::unique_ptr<TalkingProgram>> m_programs;
};

std::ptrdiff_t Firsts(const std::vector<std::string>& answers)
{
    return std::count(answers.begin(), answers.end(), "first");
}

std::ptrdiff_t Seconds(const std::vector<std::string>& answers)
{
    return std::count(answers.begin(), answers.end(), "second");
}

} // namespace

TEST_F(SingleInstanceProcess, FirstIsFirstUntilItEnds)
{
    TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", first.Ask("start"));
    {
        TalkingProgram second(TOOLKIT_SINGLE_INSTANCE);
        EXPECT_EQ("second", second.Ask("start"));
        EXPECT_EQ(0, second.End());
    }
    EXPECT_EQ("first", first.Ask("ask"));
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_EQ("stopped", first.Ask("stop"));
    EXPECT_EQ(std::vector<std::string>(), Files());
    EXPECT_EQ("first", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_EQ("first", first.Ask("start"));
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
}

TEST_F(SingleInstanceProcess, TwentyStartsAtOnceGiveOneFirstInstance)
{
    const std::vector<std::string> answers = StartAtOnce(20);
    EXPECT_EQ(1, Firsts(answers));
    EXPECT_EQ(19, Seconds(answers));
}

TEST_F(SingleInstanceProcess, KilledFirstInstanceFreesTheWay)
{
    TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
    TalkingProgram second(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", first.Ask("start"));
    EXPECT_EQ("second", second.Ask("start"));
    first.Kill();
    EXPECT_EQ(1U, Files().size());
    TalkingProgram next(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", next.Ask("start"));
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
}

TEST_F(SingleInstanceProcess, TwentyStartsAtOnceAfterAKillGiveOneFirstInstance)
{
    ToolkitTest::Rounds rounds("instances", "TOOLKIT_TEST_INSTANCES", 100);
    while (rounds.GoOn())
    {
        const std::vector<std::string> answers = StartAtOnce(20);
        EXPECT_EQ(1, Firsts(answers));
        EXPECT_EQ(19, Seconds(answers));
        KillTheFirstAndEndTheRest(answers);
        rounds.Did(answers.size());
    }
}

TEST_F(SingleInstanceProcess, AnswerStaysAndAFreshObjectKnowsBetter)
{
    TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
    TalkingProgram second(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", first.Ask("start"));
    EXPECT_EQ("second", second.Ask("start"));
    EXPECT_EQ(0, first.End());
    EXPECT_EQ("second", second.Ask("ask"));
    EXPECT_EQ("first", second.Ask("fresh"));
}

TEST_F(SingleInstanceProcess, LockIsAPrivateFileThatGoesWithTheInstance)
{
    TalkingProgram program(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", program.Ask("start"));
    ASSERT_EQ(1U, Files().size());
    struct stat status = {};
    ASSERT_EQ(0, stat(Files()[0].c_str(), &status));
    EXPECT_EQ(static_cast<mode_t>(S_IFREG | 0600), status.st_mode);
    EXPECT_EQ(std::to_string(program.Id()) + std::string(1, '\0'), ReadBytes(Files()[0]));
    EXPECT_EQ(0, program.End());
    EXPECT_EQ(std::vector<std::string>(), Files());
}

TEST_F(SingleInstanceProcess, AnotherInstallationIsAnotherApplication)
{
    const TemporaryFolder folder;
    std::filesystem::copy_file(TOOLKIT_SINGLE_INSTANCE, folder.Path("SingleInstance"));
    TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
    TalkingProgram other(folder.Path("SingleInstance"));
    EXPECT_EQ("first", first.Ask("start"));
    EXPECT_EQ("first", other.Ask("start"));
    EXPECT_EQ("second", TalkingProgram(folder.Path("SingleInstance")).Ask("start"));
}

TEST_F(SingleInstanceProcess, ForkedChildLeavesTheLockToItsParent)
{
    TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", first.Ask("start"));
    EXPECT_EQ("done", first.Ask("fork"));
    EXPECT_EQ(1U, Files().size());
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_EQ("first", first.Ask("ask"));
}

TEST_F(SingleInstanceProcess, LockLiesInTheHomeFolderWhateverItsNameAndTheLocale)
{
    std::filesystem::create_directory(m_home.Path("h\xC3\xB6me"));
    const ScopedEnvironment home("HOME", m_home.Path("h\xC3\xB6me").c_str());
    const ScopedEnvironment locale("LC_ALL", "C");
    TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", first.Ask("start"));
    const std::filesystem::directory_iterator entries(m_home.Path("h\xC3\xB6me"));
    EXPECT_TRUE(
        std::any_of(begin(entries), end(entries), [](const auto& entry) { return entry.is_regular_file(); }));
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
}

TEST_F(SingleInstanceProcess, WithoutAUsableHomeEveryoneIsFirst)
{
    WriteBytes(m_home.Path("file"), "");
    for (const std::string& home : {m_home.Path("file"), m_home.Path("file/home"), std::string("/proc")})
    {
        SCOPED_TRACE(home);
        const ScopedEnvironment environment("HOME", home.c_str());
        TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
        TalkingProgram second(TOOLKIT_SINGLE_INSTANCE);
        EXPECT_EQ("first", first.Ask("start"));
        EXPECT_EQ("first", second.Ask("start"));
        EXPECT_EQ(0, first.End());
        EXPECT_EQ(0, second.End());
    }
}

TEST_F(SingleInstanceProcess, TooLongANameMakesEveryoneFirst)
{
    // The name of the lock file is the folder's path, the program's name and the user's.
    const std::string folder = m_home.Path(std::string(100, 'f') + "/" + std::string(100, 'g'));
    std::filesystem::create_directories(folder);
    const std::string program = folder + "/" + std::string(100, 'h');
    std::filesystem::copy_file(TOOLKIT_SINGLE_INSTANCE, program);
    TalkingProgram first(program);
    TalkingProgram second(program);
    EXPECT_EQ("first", first.Ask("start"));
    EXPECT_EQ("first", second.Ask("start"));
    EXPECT_EQ(std::vector<std::string>(), Files());
}

TEST_F(SingleInstanceProcess, FileThatIsNoLockIsLeftAloneAndMakesEveryoneFirst)
{
    const std::string lock = LockPath();
    const std::string contents[] = {"garbage",
                                    "-1",
                                    "0",
                                    " " + std::to_string(getpid()),
                                    std::to_string(getpid()) + "x",
                                    "4294967297",
                                    "99999999999",
                                    std::string("1\0"
                                                "1",
                                                3),
                                    std::string(1, '\0'),
                                    std::string(256, '1'),
                                    "1" + std::string(300, '\n'),
                                    std::string(1000000, 'x')};
    for (const std::string& content : contents)
    {
        SCOPED_TRACE(content.substr(0, 20));
        WriteBytes(lock, content);
        std::filesystem::permissions(lock, static_cast<std::filesystem::perms>(0600));
        for (int i = 0; i < 2; ++i)
        {
            TalkingProgram program(TOOLKIT_SINGLE_INSTANCE);
            EXPECT_EQ("first", program.Ask("start"));
            EXPECT_EQ(0, program.End());
        }
        EXPECT_EQ(content, ReadBytes(lock));
    }
}

TEST_F(SingleInstanceProcess, LockOfAProcessThatIsGoneIsTakenOver)
{
    const std::string lock = LockPath();
    // No process has a number this large; one that was killed meanwhile had not written its number.
    for (const std::string& content : {std::string(), std::string("999999999"), std::string("999999999\n"),
                                       std::string("999999999\0", 10)})
    {
        WriteBytes(lock, content);
        std::filesystem::permissions(lock, static_cast<std::filesystem::perms>(0600));
        TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
        EXPECT_EQ("first", first.Ask("start"));
        EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    }
}

TEST_F(SingleInstanceProcess, NumberThatEndsWithItsFileIsReadAsItIs)
{
    const std::string lock = LockPath();
    const std::string number = std::to_string(getpid());
    WriteBytes(lock, number);
    std::filesystem::permissions(lock, static_cast<std::filesystem::perms>(0666));
    EXPECT_EQ("first", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_EQ(number, ReadBytes(lock)) << "a file that is not trusted stays as it is";
    std::filesystem::permissions(lock, static_cast<std::filesystem::perms>(0600));
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_EQ(number, ReadBytes(lock));
}

TEST_F(SingleInstanceProcess, LockThatOthersMayWriteIsNotTrusted)
{
    const std::string lock = LockPath();
    WriteBytes(lock, std::to_string(getpid()) + std::string(1, '\0'));
    std::filesystem::permissions(lock, static_cast<std::filesystem::perms>(0600));
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    std::filesystem::permissions(lock, static_cast<std::filesystem::perms>(0666));
    EXPECT_EQ("first", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_TRUE(std::filesystem::exists(lock));
}

TEST_F(SingleInstanceProcess, PlantedLinksAndFifosAreLeftAlone)
{
    const std::string lock = LockPath();
    const std::string other = m_home.Path("other");
    const std::function<void()> plants[] = {
        [&]
        {
            WriteBytes(other, "1");
            std::filesystem::permissions(other, static_cast<std::filesystem::perms>(0600));
            std::filesystem::create_symlink(other, lock);
        },
        [&] { std::filesystem::create_symlink(m_home.Path("nothing"), lock); },
        [&] { EXPECT_EQ(0, mkfifo(lock.c_str(), 0600)); },
        [&] { std::filesystem::create_directory(lock); },
    };
    for (const auto& plant : plants)
    {
        plant();
        const std::filesystem::file_type type = std::filesystem::symlink_status(lock).type();
        EXPECT_EQ("first", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
        EXPECT_EQ(type, std::filesystem::symlink_status(lock).type());
        EXPECT_FALSE(std::filesystem::exists(m_home.Path("nothing")));
        std::filesystem::remove(lock);
    }
    EXPECT_EQ("1", ReadBytes(other));
}

TEST_F(SingleInstanceProcess, WhateverLiesWhereTheTurnIsTakenIsLeftAlone)
{
    const std::string turn = LockPath() + ".turn";
    const std::string other = m_home.Path("other");
    WriteBytes(other, "precious");
    const std::function<void()> plants[] = {
        [&] { std::filesystem::create_symlink(other, turn); },
        [&] { std::filesystem::create_symlink(m_home.Path("nothing"), turn); },
        [&] { EXPECT_EQ(0, mkfifo(turn.c_str(), 0600)); },
        [&] { std::filesystem::create_directory(turn); },
        [&] { WriteBytes(turn, "precious"); },
    };
    for (const auto& plant : plants)
    {
        plant();
        const std::filesystem::file_type type = std::filesystem::symlink_status(turn).type();
        TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
        EXPECT_EQ("first", first.Ask("start"));
        EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
        EXPECT_EQ("stopped", first.Ask("stop"));
        EXPECT_EQ(type, std::filesystem::symlink_status(turn).type());
        EXPECT_FALSE(std::filesystem::exists(m_home.Path("nothing")));
        EXPECT_EQ("precious", ReadBytes(other));
        std::filesystem::remove(turn);
    }
}

TEST_F(SingleInstanceProcess, AnotherUsersFilesAreLeftAlone)
{
    const std::string lock = LockPath();
    const std::string turn = lock + ".turn";
    // Process 1 is always there.
    WriteBytes(lock, "1");
    std::filesystem::permissions(lock, static_cast<std::filesystem::perms>(0600));
    if (!ToolkitTest::GiveToAnotherUser(lock))
        return;
    EXPECT_EQ("first", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_EQ("1", ReadBytes(lock));
    std::filesystem::remove(lock);
    WriteBytes(turn, "");
    ToolkitTest::GiveToAnotherUser(turn);
    TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", first.Ask("start"));
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_EQ("stopped", first.Ask("stop"));
    EXPECT_EQ(std::vector<std::string>{turn}, Files());
}

TEST_F(SingleInstanceProcess, LockThatIsBeingWrittenIsNotTakenOver)
{
    const std::string lock = LockPath();
    WriteBytes(lock, "");
    std::filesystem::permissions(lock, static_cast<std::filesystem::perms>(0600));
    const auto expectLeftAlone = [&lock]
    {
        TalkingProgram program(TOOLKIT_SINGLE_INSTANCE);
        EXPECT_EQ("first", program.Ask("start"));
        EXPECT_TRUE(std::filesystem::exists(lock) && std::filesystem::is_empty(lock));
        EXPECT_EQ(0, program.End());
        EXPECT_TRUE(std::filesystem::exists(lock));
    };
    // Reading the file here would give the lock up.
    const int descriptor = open(lock.c_str(), O_RDWR | O_CLOEXEC);
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    ASSERT_EQ(0, fcntl(descriptor, F_SETLK, &whole));
    expectLeftAlone();
    close(descriptor);
    // Without a turn nobody knows whether its maker lives.
    std::filesystem::create_directory(lock + ".turn");
    expectLeftAlone();
    std::filesystem::remove(lock + ".turn");
    TalkingProgram program(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", program.Ask("start"));
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
}

using SingleInstanceProcessTiming = SingleInstanceProcess;

TEST_F(SingleInstanceProcessTiming, StrangerWhoLocksTheHomeFolderDelaysNothing)
{
    const int folder = open(m_home.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(0, flock(folder, LOCK_EX));
    TalkingProgram program(TOOLKIT_SINGLE_INSTANCE);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ("first", program.Ask("start"));
    EXPECT_EQ("stopped", program.Ask("stop"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
    close(folder);
}

// Nobody has to look at the lock of another then.
TEST_F(SingleInstanceProcessTiming, StartThatFindsNothingAndEndTakeNoTurn)
{
    const std::string turn = LockPath() + ".turn";
    const int held = open(turn.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(0, flock(held, LOCK_EX));
    TalkingProgram program(TOOLKIT_SINGLE_INSTANCE);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ("first", program.Ask("start"));
    EXPECT_EQ(2U, Files().size());
    EXPECT_EQ("stopped", program.Ask("stop"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
    EXPECT_EQ(std::vector<std::string>{turn}, Files());
    close(held);
}

TEST_F(SingleInstanceProcessTiming, ProcessThatHangsDelaysASecondStartByFiveSeconds)
{
    const std::string turn = LockPath() + ".turn";
    EXPECT_FALSE(std::filesystem::exists(turn));
    TalkingProgram first(TOOLKIT_SINGLE_INSTANCE);
    EXPECT_EQ("first", first.Ask("start"));
    const int held = open(turn.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(0, flock(held, LOCK_EX));
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_TRUE(std::filesystem::exists(turn));
    close(held);
    // Left like this by a process that was killed, it delays nobody.
    start = std::chrono::steady_clock::now();
    EXPECT_EQ("second", TalkingProgram(TOOLKIT_SINGLE_INSTANCE).Ask("start"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
    EXPECT_FALSE(std::filesystem::exists(turn));
}
