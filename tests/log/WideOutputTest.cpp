// SPDX-License-Identifier: MIT
#include <clocale>
#include <cstdio>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ForkedCopy.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/log/ConsoleLogger.h"
#include "toolkit/log/DebuggerLogger.h"

using namespace Toolkit;
using ToolkitTest::ForkedCopy;
using ToolkitTest::InstalledLogger;
using ToolkitTest::ReadBytes;
using ToolkitTest::TemporaryFolder;

namespace
{

// The standard wide output stream goes into a text for a scope.
class CapturedWideOutput
{
public:
    CapturedWideOutput() : m_pBefore(std::wcout.rdbuf(&m_buffer)) {}
    ~CapturedWideOutput() { std::wcout.rdbuf(m_pBefore); }
    CapturedWideOutput(const CapturedWideOutput&) = delete;
    CapturedWideOutput& operator=(const CapturedWideOutput&) = delete;

    std::wstring Text() const { return m_buffer.str(); }

private:
    std::wstringbuf m_buffer;
    std::wstreambuf* const m_pBefore;
};

// A buffer that counts its flushes.
class FlushCounter : public std::wstringbuf
{
public:
    int Count() const { return m_iCount; }

protected:
    int sync() override
    {
        ++m_iCount;
        return 0;
    }

private:
    int m_iCount = 0;
};

// What arrives on the standard output of a process that does `write` with a logger and then flushes.
template <class Logger, class WriteAll>
std::string OutputOfProcess(bool synchronised, const char* locale, WriteAll write)
{
    const TemporaryFolder folder;
    ForkedCopy child(
        [&]
        {
            // A new stream, that nothing narrow was written to.
            if (std::freopen(folder.Path("output").c_str(), "w", stdout) == nullptr ||
                std::setlocale(LC_ALL, locale) == nullptr)
                return std::string("no output");
            if (!synchronised)
                std::ios::sync_with_stdio(false);
            Logger logger(LogSeverity::Verbose);
            write(logger);
            std::wcout.flush();
            std::fflush(stdout);
            return std::string();
        });
    EXPECT_EQ("", child.Wait());
    return ReadBytes(folder.Path("output"));
}

void WriteOneForeignCharacter(ILogger& logger)
{
    logger.Write(L"before\n");
    logger.Write(L"caf\u00E9 \U0001F600\n");
    for (int i = 0; i < 1000; ++i)
        logger.Write(L"a line that is long enough to fill a buffer soon\n");
    logger.Write(L"after\n");
}

std::string WithForeignCharacters(const std::string& foreign)
{
    std::string text = "before\n" + foreign + "\n";
    for (int i = 0; i < 1000; ++i)
        text += "a line that is long enough to fill a buffer soon\n";
    return text + "after\n";
}

template <class Logger>
class WideOutputTest : public testing::Test
{
};

using Loggers = testing::Types<ConsoleLogger, DebuggerLogger>;
class LoggerNames
{
public:
    template <class Logger>
    static std::string GetName(int)
    {
        return std::is_same_v<Logger, ConsoleLogger> ? "ConsoleLogger" : "DebuggerLogger";
    }
};
TYPED_TEST_SUITE(WideOutputTest, Loggers, LoggerNames);

} // namespace

TYPED_TEST(WideOutputTest, HasTheGivenThresholdAndTheSeverityVerbose)
{
    for (const LogSeverity level : {LogSeverity::Error, LogSeverity::Info, LogSeverity::Verbose})
    {
        const TypeParam logger(level);
        EXPECT_EQ(level, logger.GetThreshold());
        EXPECT_EQ(LogSeverity::Verbose, logger.GetSeverity());
    }
}

TYPED_TEST(WideOutputTest, InsertsThePieceAndNoLineFeed)
{
    const CapturedWideOutput output;
    TypeParam logger(LogSeverity::Info);
    logger.Write(L"one");
    logger.Write(L"");
    logger.Write(L"tw\u00F6\n");
    EXPECT_EQ(L"onetw\u00F6\n", output.Text());
}

TYPED_TEST(WideOutputTest, WritesEmbeddedZeros)
{
    const CapturedWideOutput output;
    TypeParam logger(LogSeverity::Info);
    logger.Write(std::wstring(L"a\0b", 3));
    EXPECT_EQ(std::wstring(L"a\0b", 3), output.Text());
}

TYPED_TEST(WideOutputTest, DoesNotFlush)
{
    FlushCounter counter;
    std::wstreambuf* const before = std::wcout.rdbuf(&counter);
    TypeParam(LogSeverity::Info).Write(L"text\n");
    std::wcout.rdbuf(before);
    EXPECT_EQ(L"text\n", counter.str());
    EXPECT_EQ(0, counter.Count());
}

TYPED_TEST(WideOutputTest, PrintsWhatPassesTheThreshold)
{
    const CapturedWideOutput output;
    const InstalledLogger installed(new TypeParam(LogSeverity::Warning));
    for (const LogSeverity severity : {LogSeverity::Error, LogSeverity::Warning, LogSeverity::Info})
        **ILogger::s_pInstance << SetSeverity(severity) << severity << L" line" << ILogger::c_strLogToken3;
    EXPECT_EQ(L"0 line\n1 line\n", output.Text());
}

TYPED_TEST(WideOutputTest, ClearsASpoiltStream)
{
    const CapturedWideOutput output;
    TypeParam logger(LogSeverity::Info);
    std::wcout.setstate(std::ios::badbit);
    logger.Write(L"lost");
    logger.Write(L"kept");
    EXPECT_EQ(L"kept", output.Text());
}

TYPED_TEST(WideOutputTest, SurvivesAStreamWithoutABuffer)
{
    std::wstreambuf* const before = std::wcout.rdbuf(nullptr);
    TypeParam(LogSeverity::Info).Write(L"lost \u00E9");
    std::wcout.rdbuf(before);
    EXPECT_TRUE(std::wcout.good());
}

TYPED_TEST(WideOutputTest, ForeignCharactersInTheCLocaleLoseNothingElse)
{
    EXPECT_EQ(WithForeignCharacters("caf? ?"),
              OutputOfProcess<TypeParam>(true, "C", WriteOneForeignCharacter));
}

TYPED_TEST(WideOutputTest, ForeignCharactersInAUtf8LocaleArrive)
{
    EXPECT_EQ(WithForeignCharacters("caf\xC3\xA9 \xF0\x9F\x98\x80"),
              OutputOfProcess<TypeParam>(true, "C.UTF-8", WriteOneForeignCharacter));
}

TYPED_TEST(WideOutputTest, ForeignCharactersInAStreamOfItsOwnLoseNothingElse)
{
    EXPECT_EQ(WithForeignCharacters("caf? ?"),
              OutputOfProcess<TypeParam>(false, "C", WriteOneForeignCharacter));
}

TYPED_TEST(WideOutputTest, StreamOfItsOwnConvertsByItsOwnLocale)
{
    const auto write = [](ILogger& logger)
    {
        std::wcout.imbue(std::locale("C.UTF-8"));
        WriteOneForeignCharacter(logger);
        logger.Write(TString<wchar_t>(std::wstring(1, static_cast<wchar_t>(0xD800))));
        logger.Write(L"end\n");
    };
    EXPECT_EQ(WithForeignCharacters("caf\xC3\xA9 \xF0\x9F\x98\x80") + "?end\n",
              OutputOfProcess<TypeParam>(false, "C", write));
}

TYPED_TEST(WideOutputTest, NoPieceOfManyThreadsIsLost)
{
    static const int threads = 4;
    static const int lines = 4000;
    const auto write = [](ILogger& logger)
    {
        std::vector<std::thread> writers;
        for (int i = 0; i < threads; ++i)
            writers.emplace_back(
                [&logger, i]
                {
                    const std::wstring line = L"a line of the thread " + std::to_wstring(i) + L"\n";
                    for (int written = 0; written < lines; ++written)
                        logger.Write(line);
                });
        for (std::thread& writer : writers)
            writer.join();
    };
    for (const bool synchronised : {false, true})
    {
        std::istringstream output(OutputOfProcess<TypeParam>(synchronised, "C", write));
        std::map<std::string, int> counts;
        for (std::string line; std::getline(output, line);)
            ++counts[line];
        EXPECT_EQ(static_cast<std::size_t>(threads), counts.size());
        for (const auto& [line, count] : counts)
            EXPECT_EQ(lines, count) << line;
    }
}
