// SPDX-License-Identifier: MIT
#include "toolkit/log/Log.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <limits>
#include <ostream>
#include <regex>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <wx/log.h>

#include "tests/support/ForkedCopy.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/RecordingSink.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/app/RestartManagment.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/log/CallbackLog.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/NullLogger.h"
#include "toolkit/log/WxLogForwarder.h"

using namespace Toolkit;
using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using ToolkitTest::InstalledLogger;
using ToolkitTest::InstalledSinks;
using ToolkitTest::RecordingSink;

namespace
{

// Known to narrow streams alone, to wide ones alone, and to both.
struct Narrow
{
};
struct Wide
{
};
struct Both
{
};

std::ostream& operator<<(std::ostream& stream, const Narrow&)
{
    return stream << "gr\xC3\xBC" << 1234;
}

std::wostream& operator<<(std::wostream& stream, const Wide&)
{
    return stream << L"w\u00E9" << 1234;
}

template <class Character>
std::basic_ostream<Character>& operator<<(std::basic_ostream<Character>& stream, const Both&)
{
    return stream << 1.5;
}

class LogTest : public testing::Test
{
protected:
    const std::shared_ptr<RecordingSink> m_pSink = std::make_shared<RecordingSink>();
    const InstalledSinks m_installed{{m_pSink}};
};

void StreamPieces(LogSeverity severity, const std::string& message)
{
    **ILogger::s_pInstance << SetSeverity(severity) << TString<char>(message) << L" " << 7 << L"\n";
}

} // namespace

TEST_F(LogTest, LineArrivesAsARecord)
{
    const auto before = std::chrono::system_clock::now();
    const unsigned int line = __LINE__ + 1;
    TOOLKIT_LOG(LogSeverity::Warning) << "read " << 42;
    const auto records = m_pSink->Records();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_LE(before, records[0].time);
    EXPECT_GE(std::chrono::system_clock::now(), records[0].time);
    EXPECT_EQ(LogSeverity::Warning, records[0].severity);
    EXPECT_EQ(static_cast<std::uint64_t>(syscall(SYS_gettid)), records[0].thread);
    EXPECT_EQ(__FILE__, records[0].file);
    EXPECT_EQ(line, records[0].line);
    EXPECT_EQ("TestBody", records[0].function);
    EXPECT_EQ("read 42", records[0].message);
}

TEST_F(LogTest, WorksBeforeInAndAfterASession)
{
    TOOLKIT_LOG(LogSeverity::Info) << "before";
    {
        const ToolkitSession session;
        TOOLKIT_LOG(LogSeverity::Info) << "in";
        StreamPieces(LogSeverity::Debug, "pieces");
    }
    TOOLKIT_LOG(LogSeverity::Info) << "after";
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("before", "in", "pieces 7", "after"));
    EXPECT_EQ(LogSeverity::Debug, m_pSink->Records()[2].severity);
}

TEST(Log, InstalledInASessionOutlivesIt)
{
    const auto sink = std::make_shared<RecordingSink>();
    {
        const ToolkitSession session;
        Log::Install({sink});
        StreamPieces(LogSeverity::Error, "in");
    }
    const ToolkitSession another;
    StreamPieces(LogSeverity::Info, "in another");
    Log::Install({});
    StreamPieces(LogSeverity::Info, "no more");
    TOOLKIT_LOG(LogSeverity::Error) << "no more";
    EXPECT_THAT(sink->Messages(), ElementsAre("in 7", "in another 7"));
}

TEST_F(LogTest, LibrarysOwnTracesArriveWhole)
{
    const ToolkitSession session;
    RestartManagment::RestartProcessFinish();
    const auto records = m_pSink->Records();
    ASSERT_THAT(records, testing::Not(IsEmpty()));
    EXPECT_EQ(LogSeverity::Info, records[0].severity);
    EXPECT_EQ("RestartProcessFinish", records[0].function);
    EXPECT_EQ(">>> RestartProcessFinish()", records[0].message);
    EXPECT_THAT(records.back().message, testing::StartsWith("<<< RestartProcessFinish()="));
    EXPECT_NE(0U, records[0].line);
}

TEST_F(LogTest, LibrarysOwnLinesArriveOnceBesideAClassicSink)
{
    ToolkitTest::Record classic;
    const ToolkitSession session;
    IniFile(L"/nowhere/a.ini");
    ILogger::SetLogger(new ToolkitTest::RecordingLogger(classic, LogSeverity::Info));
    RestartManagment::RestartProcessFinish();
    EXPECT_THAT(m_pSink->Messages(),
                ElementsAre("Unable to open file : /nowhere/a.ini", ">>> RestartProcessFinish()",
                            "<<< RestartProcessFinish()=0"));
    EXPECT_THAT(classic.Pieces(), SizeIs(20));
    EXPECT_TRUE(std::regex_match(
        classic.Text(),
        std::wregex(L"2 \\d+ : \\d+ : RestartProcessFinish : >>> RestartProcessFinish\\(\\)\n"
                    L"2 \\d+ : \\d+ : RestartProcessFinish : <<< RestartProcessFinish\\(\\)=0\n")));
}

TEST_F(LogTest, ClassicLineOfPiecesIsTakenApart)
{
    const ToolkitSession session;
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Warning) << LogSeverity::Warning
                           << ILogger::c_strLogToken1 << 123456U << ILogger::c_strLogToken2 << 42
                           << ILogger::c_strLogToken2 << "Function" << ILogger::c_strLogToken2
                           << L"caf\u00E9 : " << true << ILogger::c_strLogToken3;
    const auto records = m_pSink->Records();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(LogSeverity::Warning, records[0].severity);
    EXPECT_EQ(42U, records[0].line);
    EXPECT_EQ("Function", records[0].function);
    EXPECT_EQ("caf\xC3\xA9 : 1", records[0].message);
}

TEST_F(LogTest, MessagesOfWxWidgetsArriveAsRecords)
{
    const ToolkitSession session;
    WxLogForwarder forwarder;
    forwarder.DoLog(wxLOG_Warning, L"disk full", 1200000000);
    const auto records = m_pSink->Records();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(LogSeverity::Warning, records[0].severity);
    EXPECT_EQ("wx", records[0].function);
    EXPECT_EQ("disk full", records[0].message);
}

TEST_F(LogTest, PieceOfSeveralLinesIsSeveralRecords)
{
    const ToolkitSession session;
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Info) << L"one\ntwo" << L"\n" << L"three";
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("one", "two"));
    ILogger::SetLogger(smart_ptr<ILogger>());
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("one", "two", "three"));
}

TEST_F(LogTest, ObjectOfAnOlderHostArrivesWhole)
{
    const ToolkitSession session;
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Error) << L"begun ";
    LogLine(LogSeverity::Debug, 42, "f") << L"a\nb";
    **ILogger::s_pInstance << L"ended\n";
    EXPECT_THAT(m_pSink->Messages(), testing::Contains("b"));
    LogLine(LogSeverity::Debug, 42, "f") << L"a\nb";
    EXPECT_EQ("a\nb", m_pSink->Messages().back());
    EXPECT_EQ(LogSeverity::Debug, m_pSink->Records().back().severity);
}

TEST_F(LogTest, PiecesOfManyThreadsMakeWholeLinesOfTheirSeverities)
{
    const ToolkitSession session;
    m_pSink->SetThreshold(LogSeverity::Info);
    std::vector<std::thread> threads;
    for (unsigned int thread = 0; thread < 8; ++thread)
        threads.emplace_back(
            [thread]
            {
                for (int i = 0; i < 500; ++i)
                    **ILogger::s_pInstance << SetSeverity(static_cast<LogSeverity>(thread % 5)) << L"thread "
                                           << thread << L" line " << i << L"\n";
            });
    for (std::thread& thread : threads)
        thread.join();

    std::vector<int> next(8, 0);
    const std::regex message("thread (\\d) line (\\d+)");
    for (const LogRecord& record : m_pSink->Records())
    {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(record.message, match, message)) << record.message;
        const auto thread = static_cast<std::size_t>(std::stoi(match[1]));
        EXPECT_EQ(static_cast<LogSeverity>(thread % 5), record.severity);
        EXPECT_EQ(next.at(thread)++, std::stoi(match[2]));
    }
    EXPECT_THAT(next, ElementsAre(500, 500, 500, 0, 0, 500, 500, 500));
}

TEST_F(LogTest, ClassicSinkStaysUsableBeside)
{
    ToolkitTest::Record classic;
    const ToolkitSession session;
    ILogger::SetLogger(new ToolkitTest::RecordingLogger(classic, LogSeverity::Warning));
    StreamPieces(LogSeverity::Warning, "pieces");
    StreamPieces(LogSeverity::Info, "not for both");
    EXPECT_THAT(classic.Pieces(), ElementsAre(L"pieces", L" ", L"7", L"\n"));
    classic.Clear();
    TOOLKIT_LOG(LogSeverity::Error) << "a line";
    TOOLKIT_LOG(LogSeverity::Info) << "not for both";
    ASSERT_THAT(classic.Pieces(), SizeIs(1));
    EXPECT_TRUE(std::regex_match(classic.Text(), std::wregex(L"0 \\d+ : \\d+ : TestBody : a line\n")));
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("pieces 7", "not for both 7", "a line", "not for both"));
}

TEST(Log, ClassicSinkInstalledBeforeStaysToo)
{
    ToolkitTest::Record classic;
    const auto sink = std::make_shared<RecordingSink>();
    const ToolkitSession session;
    ILogger::SetLogger(new ToolkitTest::RecordingLogger(classic, LogSeverity::Info));
    const InstalledSinks installed({sink});
    StreamPieces(LogSeverity::Info, "x");
    EXPECT_EQ(L"x 7\n", classic.Text());
    EXPECT_THAT(sink->Messages(), ElementsAre("x 7"));
}

TEST_F(LogTest, InstalledLoggerThatIsKeptAndPutBackIsTheOneBelow)
{
    ToolkitTest::Record classic;
    const ToolkitSession session;
    ILogger::SetLogger(new ToolkitTest::RecordingLogger(classic, LogSeverity::Info));
    const smart_ptr<ILogger> before = *ILogger::s_pInstance;
    ILogger::SetLogger(smart_ptr<ILogger>());
    StreamPieces(LogSeverity::Info, "lost there");
    ILogger::SetLogger(before);
    StreamPieces(LogSeverity::Info, "x");
    EXPECT_EQ(L"x 7\n", classic.Text());
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("lost there 7", "x 7"));
}

TEST_F(LogTest, ThresholdsOfTheLogAndOfTheSinkBothHold)
{
    Log::SetThreshold(LogSeverity::Info);
    EXPECT_EQ(LogSeverity::Info, Log::Threshold());
    TOOLKIT_LOG(LogSeverity::Debug) << "not for the log";
    m_pSink->SetThreshold(LogSeverity::Warning);
    EXPECT_EQ(LogSeverity::Warning, m_pSink->Threshold());
    TOOLKIT_LOG(LogSeverity::Info) << "not for the sink";
    TOOLKIT_LOG(LogSeverity::Warning) << "for both";
    m_pSink->SetThreshold(LogSeverity::Verbose);
    TOOLKIT_LOG(LogSeverity::Info) << "for both again";
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("for both", "for both again"));
}

TEST_F(LogTest, LineThatEverySinkDropsEvaluatesNothing)
{
    const ToolkitSession session;
    ILogger::SetLogger(smart_ptr<ILogger>());
    m_pSink->SetThreshold(LogSeverity::Error);
    int evaluated = 0;
    TOOLKIT_LOG(LogSeverity::Warning) << ++evaluated;
    EXPECT_EQ(0, evaluated);
    Log::Install({});
    TOOLKIT_LOG(LogSeverity::Error) << ++evaluated;
    EXPECT_EQ(0, evaluated);
}

// What was wanted once and is wanted again: no line may be lost, and none that nobody wants is looked at.
TEST_F(LogTest, ThresholdsFollowEachOtherUpAndDown)
{
    const ToolkitSession session;
    int evaluated = 0;
    const auto isWanted = [&evaluated](LogSeverity severity)
    {
        const int before = evaluated;
        TOOLKIT_LOG(severity) << ++evaluated;
        EXPECT_EQ(LogStatement::IsWanted(severity), evaluated != before);
        return evaluated != before;
    };
    const auto aboveVerbose = static_cast<LogSeverity>(9);
    Log::SetThreshold(aboveVerbose);
    m_pSink->SetThreshold(LogSeverity::Info);
    for (int round = 0; round < 2; ++round)
    {
        EXPECT_FALSE(isWanted(LogSeverity::Debug));
        ToolkitTest::Record classic;
        ILogger::SetLogger(new ToolkitTest::RecordingLogger(classic, LogSeverity::Verbose));
        EXPECT_TRUE(isWanted(LogSeverity::Verbose));
        EXPECT_FALSE(isWanted(aboveVerbose));
        (*ILogger::s_pInstance)->SetThreshold(LogSeverity::Warning);
        EXPECT_FALSE(isWanted(LogSeverity::Debug));
        (*ILogger::s_pInstance)->SetThreshold(aboveVerbose);
        EXPECT_TRUE(isWanted(aboveVerbose));
        ILogger::SetLogger(smart_ptr<ILogger>());
        EXPECT_FALSE(isWanted(LogSeverity::Debug));
        m_pSink->SetThreshold(aboveVerbose);
        EXPECT_TRUE(isWanted(aboveVerbose));
        m_pSink->SetThreshold(LogSeverity::Info);
        EXPECT_TRUE(isWanted(LogSeverity::Info));
    }
}

TEST_F(LogTest, LineOfTheHighestThresholdArrivesWhateverOtherThreadsChange)
{
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back(
            [&stop]
            {
                while (!stop)
                {
                    ToolkitTest::Record record;
                    ToolkitTest::RecordingLogger logger(record, LogSeverity::Debug);
                    logger.SetThreshold(LogSeverity::Error);
                }
            });
    for (int round = 0; round < 500; ++round)
    {
        ToolkitTest::Record record;
        ToolkitTest::RecordingLogger logger(record, LogSeverity::Error);
        m_pSink->SetThreshold(LogSeverity::Error);
        m_pSink->SetThreshold(LogSeverity::Verbose);
        TOOLKIT_LOG(LogSeverity::Verbose) << round;
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(m_pSink->Messages(), SizeIs(500));
}

TEST_F(LogTest, ThresholdOfAClassicSinkMayChange)
{
    ToolkitTest::Record classic;
    const ToolkitSession session;
    ILogger::SetLogger(new ToolkitTest::RecordingLogger(classic, LogSeverity::Error));
    m_pSink->SetThreshold(LogSeverity::Error);
    (*ILogger::s_pInstance)->SetThreshold(LogSeverity::Verbose);
    StreamPieces(LogSeverity::Verbose, "x");
    EXPECT_EQ(L"x 7\n", classic.Text());
    EXPECT_EQ(LogSeverity::Verbose, (*ILogger::s_pInstance)->GetThreshold());
    EXPECT_THAT(m_pSink->Messages(), IsEmpty());
}

TEST_F(LogTest, TextOfEveryKindIsUtf8)
{
    const char array[8] = "gr\xC3\xBC\0x";
    char full[2] = {'o', 'k'};
    const char* const none = nullptr;
    const wchar_t* const noWide = nullptr;
    TOOLKIT_LOG(LogSeverity::Info) << array << full << none << noWide << 'c' << std::string("\xC3\x9F")
                                   << std::string_view("\xE2\x82\xAC") << TString<char>("t")
                                   << TString<wchar_t>(L"\u20AC") << L"w\u00E9" << L'\U0001F600'
                                   << std::wstring_view(L"v") << std::filesystem::path("/a b/\xC3\xA9");
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("gr\xC3\xBC"
                                                 "okc\xC3\x9F\xE2\x82\xAC"
                                                 "t\xE2\x82\xACw\xC3\xA9\xF0\x9F\x98\x80v"
                                                 "/a b/\xC3\xA9"));
}

TEST_F(LogTest, WhatIsNotUtf8IsReplaced)
{
    const std::wstring wide = {L'a', static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000)};
    TOOLKIT_LOG(LogSeverity::Info) << std::filesystem::path("/\xFFx\xC3") << "\xC0\x80"
                                   << "\xED\xA0\x80" << wide;
    std::string expected = "/";
    const std::string replacement = "\xEF\xBF\xBD";
    expected += replacement + "x" + replacement;
    for (int i = 0; i < 5; ++i)
        expected += replacement;
    expected += "a" + replacement + replacement;
    EXPECT_THAT(m_pSink->Messages(), ElementsAre(expected));
}

TEST_F(LogTest, NulStays)
{
    TOOLKIT_LOG(LogSeverity::Info) << "a\0b"s << '\0';
    TOOLKIT_LOG(LogSeverity::Info) << "a\0gr\xC3\xBC\xFF"s;
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("a\0b\0"s, "a\0gr\xC3\xBC\xEF\xBF\xBD"s));
}

TEST_F(LogTest, DurationsHaveTheirUnit)
{
    TOOLKIT_LOG(LogSeverity::Info) << 30ms << ' ' << 5s << ' ' << 7us << ' ' << -1ns << ' ' << 2min << ' '
                                   << 3h << ' ' << std::chrono::duration<double>(1.5) << ' '
                                   << std::chrono::duration<int, std::ratio<1, 3>>(2);
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("30ms 5s 7us -1ns 2min 3h 1.5s 2[1/3]s"));
}

TEST_F(LogTest, NumbersAreThoseOfTheClassicLocale)
{
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new std::numpunct_byname<char>("C")));
    TOOLKIT_LOG(LogSeverity::Info) << 1234567 << ' ' << -1 << ' ' << true << ' ' << 1.5 << ' '
                                   << std::numeric_limits<unsigned long long>::max() << ' '
                                   << LogSeverity::Debug << ' ' << static_cast<short>(-7);
    std::locale::global(before);
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("1234567 -1 1 1.5 18446744073709551615 3 -7"));
}

TEST_F(LogTest, TypesOfTheHostAreStreamed)
{
    TOOLKIT_LOG(LogSeverity::Info) << Narrow() << ' ' << Wide() << ' ' << Both();
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("gr\xC3\xBC"
                                                 "1234 w\xC3\xA9"
                                                 "1234 1.5"));
}

TEST_F(LogTest, SinkThatThrowsOrLogsDisturbsNoOther)
{
    struct Throwing : LogSink
    {
        void Write(const LogRecord&) override
        {
            TOOLKIT_LOG(LogSeverity::Info) << "from within";
            throw std::runtime_error("no");
        }
    };
    Log::Install({std::make_shared<Throwing>(), nullptr, m_pSink});
    EXPECT_NO_THROW(TOOLKIT_LOG(LogSeverity::Info) << "x");
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("from within", "x"));
}

TEST_F(LogTest, SinkMayInstallOthers)
{
    const auto replacing = std::make_shared<CallbackLog>(LogSeverity::Info, [this](const LogRecord&)
                                                         { Log::Install({m_pSink}); });
    Log::Install({replacing});
    TOOLKIT_LOG(LogSeverity::Info) << "one";
    TOOLKIT_LOG(LogSeverity::Info) << "two";
    EXPECT_THAT(m_pSink->Messages(), ElementsAre("two"));
}

TEST_F(LogTest, SinksMayBeReplacedWhileThreadsLog)
{
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back(
            [&stop]
            {
                while (!stop)
                    TOOLKIT_LOG(LogSeverity::Info) << "x";
            });
    for (int i = 0; i < 200; ++i)
        Log::Install({std::make_shared<RecordingSink>()});
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    Log::Install({m_pSink});
    TOOLKIT_LOG(LogSeverity::Info) << "last";
    EXPECT_EQ("last", m_pSink->Messages().back());
}

TEST(Log, WritesARecordOfTheHost)
{
    const auto sink = std::make_shared<RecordingSink>(LogSeverity::Warning);
    const InstalledSinks installed({sink});
    LogRecord record;
    record.message = "own";
    record.severity = LogSeverity::Warning;
    Log::Write(record);
    record.severity = LogSeverity::Info;
    Log::Write(record);
    EXPECT_THAT(sink->Messages(), ElementsAre("own"));
    EXPECT_TRUE(Log::IsWanted(LogSeverity::Warning));
    EXPECT_FALSE(Log::IsWanted(LogSeverity::Info));
}

TEST(Log, ConsoleWritesOneLineToTheStandardErrorOutput)
{
    ToolkitTest::CapturedOutput captured(2);
    {
        const InstalledSinks installed({Log::Console(LogSeverity::Warning)});
        TOOLKIT_LOG(LogSeverity::Info) << "not shown";
        TOOLKIT_LOG(LogSeverity::Warning) << "gr\xC3\xBC\nnext";
    }
    const std::string text = captured.Stop();
    EXPECT_TRUE(std::regex_match(
        text, std::regex("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}[+-]\\d\\d:\\d\\d warning \\d+ "
                         "TestBody gr\xC3\xBC\\\\nnext\n")))
        << text;
}

TEST(CallbackLog, CallsTheFunctionOneAtATime)
{
    int calls = 0;
    const InstalledSinks installed(
        {std::make_shared<CallbackLog>(LogSeverity::Info, [&calls](const LogRecord&) { ++calls; })});
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back(
            []
            {
                for (int i = 0; i < 250; ++i)
                {
                    TOOLKIT_LOG(LogSeverity::Info) << i;
                    TOOLKIT_LOG(LogSeverity::Debug) << i;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(1000, calls);
}

TEST(CallbackLog, FunctionMayLogThrowOrBeMissing)
{
    int calls = 0;
    const auto sink = std::make_shared<RecordingSink>();
    const InstalledSinks installed({std::make_shared<CallbackLog>(LogSeverity::Info,
                                                                  [&calls](const LogRecord&)
                                                                  {
                                                                      ++calls;
                                                                      TOOLKIT_LOG(LogSeverity::Info) << "in";
                                                                      throw 7;
                                                                  }),
                                    std::make_shared<CallbackLog>(LogSeverity::Info, nullptr), sink});
    TOOLKIT_LOG(LogSeverity::Info) << "x";
    EXPECT_EQ(1, calls);
    EXPECT_THAT(sink->Messages(), ElementsAre("in", "x"));
}
