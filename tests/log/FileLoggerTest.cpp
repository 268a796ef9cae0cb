// SPDX-License-Identifier: MIT
#include "toolkit/log/FileLogger.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/LogFile.h"
#include "tests/support/Resources.h"
#include "tests/support/Seconds.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/GetTickCount.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/threading/MutexLock.h"

using namespace Toolkit;
using ToolkitTest::DescriptorOf;
using ToolkitTest::InstalledLogger;
using ToolkitTest::LeastSeconds;
using ToolkitTest::LogFile;
using ToolkitTest::OnSmallDisk;
using ToolkitTest::ReadBytes;
using ToolkitTest::RemountSmallDisk;
using ToolkitTest::SecondsSince;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WaitUntil;
using ToolkitTest::WriteBytes;

namespace
{

// The queue's mutex and the stop event, which only the logger itself reaches: an explicit instantiation may
// name them.
template <class Tag, typename Tag::Member pointer>
struct Reach
{
    friend typename Tag::Member MemberOf(Tag) { return pointer; }
};
struct QueueMutex
{
    using Member = Mutex FileLogger::*;
    friend Member MemberOf(QueueMutex);
};
struct StopEvent
{
    using Member = const smart_ptr<EventObject> FileLogger::*;
    friend Member MemberOf(StopEvent);
};
template struct Reach<QueueMutex, &FileLogger::m_mutex>;
template struct Reach<StopEvent, &FileLogger::m_pStopEvent>;

const unsigned int s_uLarge = 1000000000;

// What a host keeps until the very end.
smart_ptr<ILogger> s_kept;

// A logger of that name that writes the text and goes.
void LogOnce(const LogFile& file, const TString<wchar_t>& text, unsigned int maxSize = s_uLarge)
{
    FileLogger(LogSeverity::Info, file.WideName(), maxSize).Write(text);
}

// Hands over several pieces so that the logger sees them at once.
void WriteAtOnce(FileLogger& logger, const std::vector<std::wstring>& pieces)
{
    const MutexLock lock(logger.*MemberOf(QueueMutex()));
    for (const std::wstring& piece : pieces)
        logger.Write(piece);
}

// Logs while something else lies at the log's place: the text goes to a time-stamped file.
void ExpectFallback(const LogFile& file)
{
    {
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        logger.Write(L"elsewhere");
        EXPECT_TRUE(WaitUntil([&file] { return !file.FallbackPaths().empty(); }));
    }
    EXPECT_EQ("elsewhere", file.FallbackBytes());
}

smart_ptr<PathManager>* InstallPathManager()
{
    return PathManager::s_pInstance = new smart_ptr<PathManager>(new PathManager);
}

void RemovePathManager()
{
    delete PathManager::s_pInstance;
    PathManager::s_pInstance = nullptr;
}

} // namespace

TEST(FileLogger, ConstantsHaveTheirValues)
{
    EXPECT_EQ(L"w", FileLogger::c_strOpenMode);
    EXPECT_EQ(L".vxlog", FileLogger::c_strLogExtension);
    EXPECT_EQ(L"-", FileLogger::c_strTickSeparator);
}

TEST(FileLogger, IsALoggerAndAThread)
{
    const LogFile file;
    const FileLogger logger(LogSeverity::Warning, file.WideName(), s_uLarge);
    EXPECT_EQ(LogSeverity::Warning, logger.GetThreshold());
    EXPECT_EQ(LogSeverity::Verbose, logger.GetSeverity());
    EXPECT_EQ(static_cast<const void*>(&logger), static_cast<const ILogger*>(&logger));
    EXPECT_TRUE(static_cast<const Thread&>(logger).IsRunning());
}

TEST(FileLogger, WritesThePiecesAsTheyAre)
{
    const LogFile file;
    {
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        for (const wchar_t* const piece : {L"1", L" ", L"", L"two\n", L"caf\u00E9 \u20AC \U0001F600", L"\n"})
            logger.Write(piece);
    }
    EXPECT_EQ("1 two\ncaf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80\n", file.Bytes());
    EXPECT_TRUE(file.FallbackPaths().empty());
}

TEST(FileLogger, PieceThatHasNoUtf8IsLeftOut)
{
    const LogFile file;
    {
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        logger.Write(L"a");
        logger.Write(std::wstring(3, static_cast<wchar_t>(0xD800)));
        logger.Write(std::wstring(L"b\0c", 3));
        logger.Write(L"d");
    }
    EXPECT_EQ("abd", file.Bytes());
}

TEST(FileLogger, WriteDoesNotFilter)
{
    const LogFile file;
    {
        FileLogger logger(LogSeverity::Error, file.WideName(), s_uLarge);
        logger.Write(L"written");
    }
    EXPECT_EQ("written", file.Bytes());
}

TEST(FileLogger, TheFrontEndFilters)
{
    const LogFile file;
    {
        const InstalledLogger installed(new FileLogger(LogSeverity::Info, file.WideName(), s_uLarge));
        for (const LogSeverity severity : {LogSeverity::Info, LogSeverity::Debug, LogSeverity::Error})
            **ILogger::s_pInstance << SetSeverity(severity) << severity << L" line\n";
    }
    EXPECT_EQ("2 line\n0 line\n", file.Bytes());
}

TEST(FileLogger, StartsAtOnceAndMakesItsFileWithoutAnyPiece)
{
    const LogFile file;
    const FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
    EXPECT_TRUE(WaitUntil([&file] { return std::filesystem::exists(file.Path()); }));
}

TEST(FileLogger, PiecesReachTheFileWhileTheLoggerLives)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
    std::string expected;
    for (int i = 0; i < 4; ++i)
    {
        logger.Write(std::to_wstring(i));
        expected += std::to_string(i);
        EXPECT_TRUE(WaitUntil([&] { return file.Bytes() == expected; })) << file.Bytes();
    }
}

TEST(FileLogger, TruncatesThePreviousLog)
{
    const LogFile file;
    LogOnce(file, L"the previous run's log");
    LogOnce(file, L"new");
    EXPECT_EQ("new", file.Bytes());
    EXPECT_TRUE(file.FallbackPaths().empty());
}

TEST(FileLogger, WritesABurstBeforeItGoes)
{
    const LogFile file;
    std::string expected;
    {
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        for (int i = 0; i < 20000; ++i)
        {
            logger.Write(L"line " + std::to_wstring(i) + L"\n");
            expected += "line " + std::to_string(i) + "\n";
        }
    }
    EXPECT_TRUE(file.Bytes() == expected);
}

TEST(FileLogger, WritesThePieceOfTheLastMoment)
{
    // The pieces fall at all moments around the end of the loggers' half second of waiting.
    const int loggerCount = 40;
    const LogFile files[loggerCount];
    std::vector<std::unique_ptr<FileLogger>> loggers;
    std::vector<std::thread> threads;
    for (const LogFile& file : files)
        loggers.push_back(std::make_unique<FileLogger>(LogSeverity::Info, file.WideName(), s_uLarge));
    for (int i = 0; i < loggerCount; ++i)
        threads.emplace_back(
            [i, &logger = loggers[static_cast<std::size_t>(i)]]
            {
                std::this_thread::sleep_for(std::chrono::milliseconds(480 + i));
                logger->Write(L"last");
                logger.reset();
            });
    for (std::thread& thread : threads)
        thread.join();
    for (const LogFile& file : files)
        EXPECT_EQ("last", file.Bytes());
}

TEST(FileLogger, ManyThreadsLoseNothingAndKeepTheirOrder)
{
    const int threadCount = 8;
    const int pieceCount = 3000;
    const LogFile file;
    {
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threadCount; ++thread)
            threads.emplace_back(
                [thread, &logger]
                {
                    for (int i = 0; i < pieceCount; ++i)
                        logger.Write(std::to_wstring(thread) + L" " + std::to_wstring(i) + L"\n");
                });
        for (std::thread& thread : threads)
            thread.join();
    }
    std::vector<int> next(threadCount, 0);
    std::istringstream lines(file.Bytes());
    std::size_t thread = 0;
    for (int number = 0; lines >> thread >> number;)
        ASSERT_EQ(next.at(thread)++, number) << thread;
    EXPECT_EQ(std::vector<int>(threadCount, pieceCount), next);
}

TEST(FileLogger, LogsWholeLinesOfTheHostAndItsThreads)
{
    const LogFile file;
    {
        const InstalledLogger installed;
        ILogger::SetLogger(smart_ptr<ILogger>(new FileLogger(LogSeverity::Info, file.WideName(), s_uLarge)));
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread)
            threads.emplace_back(
                [thread]
                {
                    for (int i = 0; i < 500; ++i)
                        TOOLKIT_LOG(LogSeverity::Info) << "thread " << thread << " line " << i;
                });
        for (int i = 0; i < 500; ++i)
        {
            TOOLKIT_LOG(LogSeverity::Warning) << "host line " << i;
            TOOLKIT_LOG(LogSeverity::Verbose) << "dropped";
        }
        for (std::thread& thread : threads)
            thread.join();
        ILogger::SetLogger(smart_ptr<ILogger>());
    }
    const std::regex form("[12] \\d+ : \\d+ : \\S+ : (thread \\d line \\d+|host line \\d+)");
    std::set<std::string> messages;
    std::istringstream lines(file.Bytes());
    for (std::string line; std::getline(lines, line);)
    {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, form)) << line;
        messages.insert(match[1]);
    }
    EXPECT_EQ(2500U, messages.size());
}

TEST(FileLogger, GoesOverTheOldestTextOnceTheFileIsFull)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, file.WideName(), 100);
    WriteAtOnce(logger, {std::wstring(50, L'a'), std::wstring(50, L'b'), std::wstring(50, L'c')});
    const std::string full = std::string(50, 'a') + std::string(50, 'b') + std::string(50, 'c');
    ASSERT_TRUE(file.BecomesWrittenUpTo(full, 0));
    logger.Write(L"new");
    EXPECT_TRUE(file.BecomesWrittenUpTo("new" + full.substr(3), 3));
    logger.Write(L"er");
    EXPECT_TRUE(file.BecomesWrittenUpTo("newer" + full.substr(5), 5));
}

TEST(FileLogger, GoesBackExactlyAtTheMaximumSize)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, file.WideName(), 10);
    logger.Write(L"123456789");
    ASSERT_TRUE(file.BecomesWrittenUpTo("123456789", 9));
    logger.Write(L"A");
    ASSERT_TRUE(file.BecomesWrittenUpTo("123456789A", 0));
    logger.Write(L"B");
    EXPECT_TRUE(file.BecomesWrittenUpTo("B23456789A", 1));
}

TEST(FileLogger, GoesBackMoreThanOnce)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, file.WideName(), 4);
    for (const char* const text : {"aaaa", "bbbb", "cccc"})
    {
        logger.Write(std::wstring(text, text + 4));
        ASSERT_TRUE(file.BecomesWrittenUpTo(text, 0));
    }
}

TEST(FileLogger, MaximumSizeOfNothingStartsOverAfterEachWriting)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, file.WideName(), 0);
    WriteAtOnce(logger, {L"old", L"er"});
    ASSERT_TRUE(file.BecomesWrittenUpTo("older", 0));
    logger.Write(L"new");
    EXPECT_TRUE(file.BecomesWrittenUpTo("newer", 0));
}

TEST(FileLogger, LargestMaximumSizeIsNotReachedBySmallFiles)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, file.WideName(), 4294967295U);
    logger.Write(L"one ");
    ASSERT_TRUE(WaitUntil([&file] { return file.Bytes() == "one "; }));
    logger.Write(L"two");
    EXPECT_TRUE(WaitUntil([&file] { return file.Bytes() == "one two"; }));
}

TEST(FileLogger, SecondLoggerOfTheNameTakesATimeStampedName)
{
    const LogFile file;
    {
        FileLogger first(LogSeverity::Info, file.WideName(), s_uLarge);
        first.Write(L"first");
        ASSERT_TRUE(WaitUntil([&file] { return file.Bytes() == "first"; }));
        FileLogger second(LogSeverity::Info, file.WideName(), s_uLarge);
        second.Write(L"second");
        ASSERT_TRUE(WaitUntil([&file] { return !file.FallbackPaths().empty(); }));
    }
    EXPECT_EQ("first", file.Bytes());
    EXPECT_EQ("second", file.FallbackBytes());
}

TEST(FileLogger, ManyLoggersOfOneNameNeverShareAFile)
{
    const LogFile file;
    {
        std::vector<std::unique_ptr<FileLogger>> loggers;
        for (int i = 0; i < 6; ++i)
        {
            loggers.push_back(std::make_unique<FileLogger>(LogSeverity::Info, file.WideName(), s_uLarge));
            for (int piece = 0; piece < 50; ++piece)
                loggers.back()->Write(std::to_wstring(i));
        }
        ASSERT_TRUE(WaitUntil([&file] { return file.FallbackPaths().size() == 5; }));
        std::vector<std::thread> threads;
        for (std::unique_ptr<FileLogger>& logger : loggers)
            threads.emplace_back([&logger] { logger.reset(); });
        for (std::thread& thread : threads)
            thread.join();
    }
    std::multiset<std::string> contents{file.Bytes()};
    for (const std::string& path : file.FallbackPaths())
        contents.insert(ReadBytes(path));
    std::multiset<std::string> expected;
    for (char digit = '0'; digit < '6'; ++digit)
        expected.insert(std::string(50, digit));
    EXPECT_EQ(expected, contents);
}

TEST(FileLogger, SymbolicLinkIsNotFollowed)
{
    const LogFile file;
    const TemporaryFolder folder;
    WriteBytes(folder.Path("target"), "precious");
    std::filesystem::create_symlink(folder.Path("target"), file.Path());
    ExpectFallback(file);
    EXPECT_EQ("precious", ReadBytes(folder.Path("target")));
    EXPECT_TRUE(std::filesystem::is_symlink(file.Path()));
}

TEST(FileLogger, DanglingSymbolicLinkCreatesNothing)
{
    const LogFile file;
    const TemporaryFolder folder;
    std::filesystem::create_symlink(folder.Path("target"), file.Path());
    ExpectFallback(file);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("target")));
}

TEST(FileLogger, HardLinkIsLeftAlone)
{
    const LogFile file;
    const TemporaryFolder folder;
    WriteBytes(folder.Path("target"), "precious");
    std::filesystem::create_hard_link(folder.Path("target"), file.Path());
    ExpectFallback(file);
    EXPECT_EQ("precious", ReadBytes(folder.Path("target")));
}

TEST(FileLogger, PipeWithoutAReaderDoesNotHoldTheLogger)
{
    const LogFile file;
    ASSERT_EQ(0, mkfifo(file.Path().c_str(), 0600));
    ExpectFallback(file);
    EXPECT_TRUE(std::filesystem::is_fifo(file.Path()));
}

TEST(FileLogger, PipeWithAReaderGetsNothing)
{
    const LogFile file;
    ASSERT_EQ(0, mkfifo(file.Path().c_str(), 0600));
    const int reader = open(file.Path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_NE(-1, reader);
    ExpectFallback(file);
    char byte = 0;
    EXPECT_EQ(0, read(reader, &byte, 1));
    close(reader);
}

TEST(FileLogger, FolderIsLeftAlone)
{
    const LogFile file;
    std::filesystem::create_directory(file.Path());
    WriteBytes(file.Path() + "/inside", "precious");
    ExpectFallback(file);
    EXPECT_EQ("precious", ReadBytes(file.Path() + "/inside"));
}

// The time stamps of the coming seconds can be guessed.
TEST(FileLogger, LinksAtTheTimeStampedNamesAreNotFollowed)
{
    const LogFile file;
    const ToolkitTest::TemporaryFolder folder;
    ToolkitTest::WriteBytes(folder.Path("precious"), "precious");
    std::filesystem::create_symlink(folder.Path("precious"), file.Path());
    const std::string begin = file.Path().substr(0, file.Path().rfind('.')) + "-";
    const unsigned int now = Toolkit::GetTickCount();
    const unsigned int planted = 500;
    for (unsigned int tick = now; tick != now + planted; ++tick)
        std::filesystem::create_symlink(folder.Path("precious"), begin + std::to_string(tick) + ".vxlog");
    {
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        logger.Write(L"text");
        EXPECT_TRUE(WaitUntil([&] { return file.FallbackPaths().size() > planted; }));
    }
    EXPECT_EQ("precious", ToolkitTest::ReadBytes(folder.Path("precious")));
    for (const std::string& path : file.FallbackPaths())
        EXPECT_EQ(std::filesystem::is_symlink(path) ? "precious" : "text", ToolkitTest::ReadBytes(path));
}

TEST(FileLogger, FileOfAnotherUserIsLeftAlone)
{
    const LogFile file;
    WriteBytes(file.Path(), "precious");
    std::filesystem::permissions(file.Path(), static_cast<std::filesystem::perms>(0666));
    if (!ToolkitTest::GiveToAnotherUser(file.Path()))
        return;
    ExpectFallback(file);
    EXPECT_EQ("precious", file.Bytes());
}

TEST(FileLogger, FileThatAnotherHoldsIsNotTruncated)
{
    const LogFile file;
    WriteBytes(file.Path(), "in use");
    const int holder = open(file.Path().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(0, flock(holder, LOCK_EX | LOCK_NB));
    ExpectFallback(file);
    EXPECT_EQ("in use", file.Bytes());
    close(holder);
}

TEST(FileLogger, FileIsClosedWhenAProcessIsReplaced)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
    ASSERT_TRUE(WaitUntil([&file] { return std::filesystem::exists(file.Path()); }));
    const int descriptor = DescriptorOf(file.Path());
    ASSERT_NE(-1, descriptor);
    EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
}

TEST(FileLogger, FileIsGivenUpWithTheLogger)
{
    const LogFile file;
    LogOnce(file, L"text");
    const int descriptor = open(file.Path().c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(0, flock(descriptor, LOCK_EX | LOCK_NB));
    close(descriptor);
}

TEST(FileLogger, EndsWithZeroOnceItHadAFile)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
    logger.Write(L"text");
    (logger.*MemberOf(StopEvent()))->Signal();
    EXPECT_EQ(nullptr, logger.Wait());
    EXPECT_EQ("text", file.Bytes());
}

TEST(FileLogger, NameThatNoFileCanHaveEndsWithOne)
{
    const std::wstring names[] = {std::wstring(L"toolkit\0test", 12), std::wstring(300, L'x'),
                                  std::wstring(1, static_cast<wchar_t>(0xD800)), L"no such folder/name"};
    for (const std::wstring& name : names)
    {
        FileLogger logger(LogSeverity::Info, name, s_uLarge);
        logger.Write(L"lost");
        (logger.*MemberOf(StopEvent()))->Signal();
        EXPECT_EQ(reinterpret_cast<wxThread::ExitCode>(1), logger.Wait());
    }
}

TEST(FileLogger, FailuresAreSilent)
{
    ToolkitTest::CapturedOutput errors(2);
    const LogFile file;
    std::filesystem::create_directory(file.Path());
    ExpectFallback(file);
    FileLogger(LogSeverity::Info, std::wstring(300, L'x'), s_uLarge).Write(L"lost");
    EXPECT_EQ("", errors.Stop());
}

TEST(FileLogger, EmptyNameIsTheApplicationsInTheTemporaryFolder)
{
    const auto run = []() -> std::string
    {
        const std::string application = InstallPathManager()->get()->GetApplicationName() == L"test_log"
                                            ? ""
                                            : "another application name";
        FileLogger(LogSeverity::Info, L"", s_uLarge).Write(L"text");
        RemovePathManager();
        return application + (ReadBytes("/tmp/test_log.vxlog") == "text" ? "" : "no such file");
    };
    EXPECT_TRUE(OnSmallDisk("/tmp", 1024, run));
}

TEST(FileLogger, EmptyNameStaysEmptyWithoutAPathManager)
{
    EXPECT_TRUE(OnSmallDisk("/tmp", 64,
                            []
                            {
                                {
                                    FileLogger logger(LogSeverity::Info, L"", s_uLarge);
                                    logger.Write(L"piece");
                                }
                                return ReadBytes("/tmp/.vxlog") == "piece";
                            }));
}

TEST(FileLogger, AsksThePathManagerForItsFolder)
{
    const LogFile file;
    InstallPathManager();
    LogOnce(file, L"text");
    RemovePathManager();
    EXPECT_EQ("text", file.Bytes());
}

TEST(FileLogger, FolderThatCannotBeWrittenEndsWithOne)
{
    const auto run = []() -> std::string
    {
        if (!RemountSmallDisk("/tmp", true))
            return "no remount";
        FileLogger logger(LogSeverity::Info, L"name", s_uLarge);
        logger.Write(L"lost");
        (logger.*MemberOf(StopEvent()))->Signal();
        const bool one = logger.Wait() == reinterpret_cast<wxThread::ExitCode>(1);
        return one && std::filesystem::is_empty("/tmp") ? "" : "not as expected";
    };
    EXPECT_TRUE(OnSmallDisk("/tmp", 1024, run));
}

TEST(FileLogger, WritesWhatWasQueuedOnceAFileOpens)
{
    const auto run = []() -> std::string
    {
        const LogFile file;
        // Whenever its thread looks first, the log's own place is taken.
        std::filesystem::create_directory(file.Path());
        if (!RemountSmallDisk("/tmp", true))
            return "no remount";
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        logger.Write(L"queued ");
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        logger.Write(L"early");
        if (!RemountSmallDisk("/tmp", false))
            return "no remount";
        const auto written = [&file]
        {
            const std::vector<std::string> paths = file.FallbackPaths();
            return paths.size() == 1 && ReadBytes(paths[0]) == "queued early";
        };
        return WaitUntil(written) ? "" : "not written";
    };
    EXPECT_TRUE(OnSmallDisk("/tmp", 1024, run));
}

TEST(FileLogger, FullDiskLosesOnlyWhatItDoesNotTake)
{
    const auto run = []() -> std::string
    {
        const LogFile file;
        ToolkitTest::CapturedOutput errors(2);
        {
            // It goes back to the start once it has tried each of the pieces that are lost.
            FileLogger logger(LogSeverity::Info, file.WideName(), 4096);
            logger.Write(L"before ");
            if (!file.BecomesWrittenUpTo("before ", 7))
                return "nothing written";
            // One page is the log's; its rest takes a part of the large piece.
            std::ofstream("/tmp/filler") << std::string(1 << 20, 'x') << std::flush;
            std::vector<std::wstring> pieces(100, L"lost");
            pieces.front() = std::wstring(100000, L'y');
            WriteAtOnce(logger, pieces);
            if (!file.BecomesWrittenUpTo("before " + std::string(4089, 'y'), 0))
                return "the disk was not filled";
            std::filesystem::remove("/tmp/filler");
            logger.Write(L"after ");
        }
        const std::string answer = file.Bytes() == "after  " + std::string(4089, 'y') ? "" : "wrong text";
        return answer + errors.Stop();
    };
    EXPECT_TRUE(OnSmallDisk("/tmp", 128, run));
}

TEST(FileLogger, WithoutAThreadWritesItsQueueWhenItGoes)
{
    const LogFile file;
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&file]() -> std::string
        {
            const rlimit none = {0, 0};
            if (setrlimit(RLIMIT_NPROC, &none) != 0)
                return "no limit";
            FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
            logger.Write(L"one ");
            logger.Write(L"two");
            return static_cast<Thread&>(logger).IsRunning() ? "it has a thread" : "";
        }));
    EXPECT_EQ("one two", file.Bytes());
}

TEST(FileLoggerTiming, EndsAfterHalfASecondOfQuiet)
{
    const LogFile file;
    std::optional<FileLogger> logger;
    logger.emplace(LogSeverity::Info, file.WideName(), s_uLarge);
    logger->Write(L"text");
    const auto start = std::chrono::steady_clock::now();
    logger.reset();
    EXPECT_GE(SecondsSince(start), 0.5);
    EXPECT_LE(SecondsSince(start), 5);
}

TEST(FileLoggerTiming, PiecesAfterTheStopKeepItGoing)
{
    // It goes half a second after the last piece, and takes none that comes later, as on a busy machine.
    const auto takesAll = []
    {
        const LogFile file;
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        (logger.*MemberOf(StopEvent()))->Signal();
        std::chrono::steady_clock::time_point last;
        for (int i = 0; i < 12; ++i)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            last = std::chrono::steady_clock::now();
            logger.Write(L"x");
        }
        EXPECT_EQ(nullptr, logger.Wait());
        return SecondsSince(last) >= 0.5 && SecondsSince(last) <= 5 && file.Bytes() == std::string(12, 'x');
    };
    bool tookAll = takesAll();
    for (int attempt = 1; attempt < 5 && !tookAll; ++attempt)
        tookAll = takesAll();
    EXPECT_TRUE(tookAll);
}

TEST(FileLogger, MayLieInAStaticOfTheHost)
{
    const LogFile file;
    EXPECT_EXIT(
        {
            s_kept = new FileLogger(LogSeverity::Info, file.WideName(), s_uLarge);
            s_kept->Write(L"text");
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^$");
    EXPECT_EQ("text", file.Bytes());
}

TEST(FileLoggerTiming, GoesAtOnceWhenNoFileCouldBeOpened)
{
    const auto seconds = []
    {
        std::optional<FileLogger> logger;
        logger.emplace(LogSeverity::Info, std::wstring(300, L'x'), s_uLarge);
        const auto start = std::chrono::steady_clock::now();
        logger.reset();
        return SecondsSince(start);
    };
    // One that waits for the quiet half second takes that long.
    EXPECT_LE(LeastSeconds(0.4, seconds), 0.4);
}

TEST(FileLoggerTiming, WriteDoesNotWaitForAStoppedDisk)
{
    const LogFile file;
    FileLogger logger(LogSeverity::Info, std::wstring(300, L'x'), s_uLarge);
    const auto seconds = [&logger]
    {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 1000; ++i)
            logger.Write(L"no file takes this");
        return SecondsSince(start);
    };
    EXPECT_LE(LeastSeconds(0.2, seconds), 0.2);
}
