// SPDX-License-Identifier: MIT
#include <chrono>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/ForkedCopy.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/LogFile.h"
#include "tests/support/Rounds.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/LogLine.h"

using namespace Toolkit;
using ToolkitTest::ForkedCopy;
using ToolkitTest::InstalledLogger;
using ToolkitTest::LogFile;
using ToolkitTest::WaitUntil;

namespace
{

const unsigned int s_uLarge = 1000000000;

// The pieces that the killed process logs: their lengths differ, and each is told from the others.
std::wstring PieceOf(unsigned int number)
{
    return std::to_wstring(number) + std::wstring(number % 50, L'.') + L"\n";
}

// Logs without end, that many pieces at a time.
std::string LogUntilKilled(const LogFile& file, unsigned int pieces = 100)
{
    FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
    for (unsigned int number = 0;; ++number)
    {
        logger.Write(PieceOf(number));
        if (number % pieces == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void ExpectBeginningOfTheLog(const std::string& bytes)
{
    std::size_t position = 0;
    for (unsigned int number = 0; position < bytes.size(); ++number)
    {
        const std::wstring wide = PieceOf(number);
        const std::string piece(wide.begin(), wide.end());
        const std::string written = bytes.substr(position, piece.size());
        ASSERT_EQ(piece.substr(0, written.size()), written) << "at " << position;
        position += written.size();
    }
}

std::string LogAndWaitForTheEnd(const LogFile& file, const std::function<bool()>& end)
{
    FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
    logger.Write(L"child");
    return WaitUntil(end) ? "" : "no end";
}

} // namespace

TEST(FileLoggerProcess, KilledProcessLeavesTheBeginningOfItsLog)
{
    // Killed at different moments.
    for (const std::size_t size : {1U, 20000U, 50000U, 100001U})
    {
        const LogFile file;
        ForkedCopy child([&file] { return LogUntilKilled(file); });
        ASSERT_TRUE(WaitUntil([&] { return file.Bytes().size() >= size; }));
        child.Kill();
        ExpectBeginningOfTheLog(file.Bytes());
    }
}

// The moments are others each time, and told when one is a finding.
TEST(FileLoggerProcess, KilledAtAnyMomentLeavesTheBeginningOfItsLog)
{
    std::mt19937 random(std::random_device{}());
    // The thread of the logger writes at the start and whenever it has slept for 200 ms.
    std::uniform_int_distribution<int> moments(0, 420000);
    unsigned long nonempty = 0;
    ToolkitTest::Rounds rounds("kills", "TOOLKIT_TEST_KILLS", 50);
    for (unsigned long i = 0; rounds.GoOn(); ++i)
    {
        const std::chrono::microseconds moment(moments(random));
        const LogFile file;
        ForkedCopy child([&file, i] { return LogUntilKilled(file, i % 2 == 0 ? 100 : 1000); });
        std::this_thread::sleep_for(moment);
        child.Kill();
        const std::string bytes = file.Bytes();
        nonempty += bytes.empty() ? 0 : 1;
        ExpectBeginningOfTheLog(bytes);
        EXPECT_TRUE(file.FallbackPaths().empty());
        EXPECT_FALSE(HasFailure()) << "killed after " << moment.count() << " microseconds";
        rounds.Did(1);
    }
    std::cout << "  kills with a log: " << nonempty << std::endl;
}

TEST(FileLoggerProcess, NextStartTakesTheKilledOnesFile)
{
    const LogFile file;
    ForkedCopy child([&file] { return LogUntilKilled(file); });
    ASSERT_TRUE(WaitUntil([&file] { return file.Bytes().size() > 1000; }));
    child.Kill();
    FileLogger(LogSeverity::Info, file.WideName(), s_uLarge).Write(L"restarted");
    EXPECT_EQ("restarted", file.Bytes());
    EXPECT_TRUE(file.FallbackPaths().empty());
}

TEST(FileLoggerProcess, SecondProcessTakesATimeStampedName)
{
    const LogFile file;
    const LogFile signal;
    ForkedCopy child(
        [&]
        { return LogAndWaitForTheEnd(file, [&signal] { return std::filesystem::exists(signal.Path()); }); });
    ASSERT_TRUE(WaitUntil([&file] { return file.Bytes() == "child"; }));
    {
        FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
        logger.Write(L"parent");
        EXPECT_TRUE(WaitUntil([&file] { return !file.FallbackPaths().empty(); }));
    }
    std::filesystem::create_directory(signal.Path());
    EXPECT_EQ("", child.Wait());
    EXPECT_EQ("child", file.Bytes());
    EXPECT_EQ("parent", file.FallbackBytes());
}

TEST(FileLoggerProcess, CrashLosesNoLineThatHadReachedTheFile)
{
    const LogFile file;
    ForkedCopy child(
        [&file]() -> std::string
        {
            const InstalledLogger installed(new FileLogger(LogSeverity::Info, file.WideName(), s_uLarge));
            for (int i = 0; i < 100; ++i)
                TOOLKIT_LOG(LogSeverity::Info) << "line " << i;
            pause();
            return "";
        });
    const auto isComplete = [&file]
    {
        const std::string bytes = file.Bytes();
        return bytes.size() > 9 && bytes.compare(bytes.size() - 9, 9, " line 99\n") == 0;
    };
    EXPECT_TRUE(WaitUntil(isComplete));
    child.Kill();
    EXPECT_TRUE(isComplete());
}
