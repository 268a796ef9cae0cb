// SPDX-License-Identifier: MIT
#include "toolkit/log/ILogger.h"

#include <climits>
#include <thread>
#include <type_traits>

#include <gmock/gmock.h>

#include "tests/support/InstalledLogger.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/NullLogger.h"

using namespace Toolkit;
using testing::ElementsAre;
using testing::IsEmpty;
using ToolkitTest::InstalledLogger;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;

namespace
{

// Tells when it is destroyed.
class MortalLogger : public NullLogger
{
public:
    explicit MortalLogger(int& deaths) : m_deaths(deaths) {}
    ~MortalLogger() override { ++m_deaths; }

private:
    int& m_deaths;
};

// What one streamed value leaves on the sink.
template <class T>
std::vector<std::wstring> PiecesOf(const T& value)
{
    Record record;
    const InstalledLogger installed(new RecordingLogger(record));
    **ILogger::s_pInstance << value;
    return record.Pieces();
}

} // namespace

TEST(ILogger, SeveritiesHaveTheirNumbers)
{
    EXPECT_EQ(0U, static_cast<unsigned int>(LogSeverity::Error));
    EXPECT_EQ(1U, static_cast<unsigned int>(LogSeverity::Warning));
    EXPECT_EQ(2U, static_cast<unsigned int>(LogSeverity::Info));
    EXPECT_EQ(3U, static_cast<unsigned int>(LogSeverity::Debug));
    EXPECT_EQ(4U, static_cast<unsigned int>(LogSeverity::Verbose));
    EXPECT_EQ(4U, sizeof(LogSeverity));
    EXPECT_EQ(sizeof(LogSeverity), sizeof(SetSeverity));
}

TEST(ILogger, SeparatorsAreSpaceColonAndLineFeed)
{
    EXPECT_EQ(L" ", ILogger::c_strLogToken1);
    EXPECT_EQ(L" : ", ILogger::c_strLogToken2);
    EXPECT_EQ(L"\n", ILogger::c_strLogToken3);
}

TEST(ILogger, NoLoggerExistsBeforeTheModulesAreInitialised)
{
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
}

TEST(ILogger, CreateAnswersANullLogger)
{
    const smart_ptr<ILogger> logger = ILogger::Create();
    EXPECT_NE(nullptr, dynamic_cast<NullLogger*>(logger.get()));
    EXPECT_NE(logger.get(), ILogger::Create().get());
}

TEST(ILogger, StartsWithTheVerboseSeverity)
{
    Record record;
    const RecordingLogger logger(record, LogSeverity::Warning);
    EXPECT_EQ(LogSeverity::Verbose, logger.GetSeverity());
    EXPECT_EQ(LogSeverity::Warning, logger.GetThreshold());
}

TEST(ILogger, ThresholdCanBeSetAndDecidesAtOnce)
{
    Record record;
    RecordingLogger* const logger = new RecordingLogger(record, LogSeverity::Warning);
    const InstalledLogger installed(logger);
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Info) << L"dropped";
    logger->SetThreshold(LogSeverity::Info);
    EXPECT_EQ(LogSeverity::Info, logger->GetThreshold());
    **ILogger::s_pInstance << L"passed";
    TOOLKIT_LOG(LogSeverity::Debug) << "dropped";
    logger->SetThreshold(LogSeverity::Error);
    **ILogger::s_pInstance << L"dropped";
    EXPECT_THAT(record.Pieces(), ElementsAre(L"passed"));
}

TEST(ILogger, ThresholdMayBeSetWhileOthersLog)
{
    Record record;
    RecordingLogger* const logger = new RecordingLogger(record);
    const InstalledLogger installed(logger);
    std::thread writer(
        []
        {
            for (int i = 0; i < 1000; ++i)
                TOOLKIT_LOG(LogSeverity::Info) << "line";
        });
    for (int i = 0; i < 1000; ++i)
        logger->SetThreshold(i % 2 == 0 ? LogSeverity::Error : LogSeverity::Verbose);
    writer.join();
    EXPECT_EQ(LogSeverity::Verbose, logger->GetThreshold());
    EXPECT_LE(record.Pieces().size(), 1000U);
}

TEST(ILogger, SetLoggerSharesTheSink)
{
    int deaths = 0;
    const InstalledLogger installed;
    {
        const smart_ptr<ILogger> logger(new MortalLogger(deaths));
        ILogger::SetLogger(logger);
        EXPECT_EQ(logger.get(), ILogger::s_pInstance->get());
    }
    EXPECT_EQ(0, deaths);
}

TEST(ILogger, SetLoggerGivesUpThePreviousSink)
{
    const InstalledLogger installed;
    int deaths = 0;
    ILogger::SetLogger(smart_ptr<ILogger>(new MortalLogger(deaths)));
    ILogger::SetLogger(ILogger::Create());
    EXPECT_EQ(1, deaths);
}

TEST(ILogger, SetLoggerKeepsThePreviousSinkThatAnotherHolds)
{
    const InstalledLogger installed;
    int deaths = 0;
    const smart_ptr<ILogger> held(new MortalLogger(deaths));
    ILogger::SetLogger(held);
    ILogger::SetLogger(ILogger::Create());
    EXPECT_EQ(0, deaths);
}

TEST(ILogger, SetLoggerOfTheInstalledSinkKeepsIt)
{
    int deaths = 0;
    const InstalledLogger installed(new MortalLogger(deaths));
    ILogger::SetLogger(*ILogger::s_pInstance);
    EXPECT_EQ(0, deaths);
}

TEST(ILogger, SetLoggerOfNullInstallsAWorkingNullLogger)
{
    Record record;
    const InstalledLogger installed(new RecordingLogger(record));
    ILogger::SetLogger(smart_ptr<ILogger>());
    ASSERT_FALSE(ILogger::s_pInstance->IsNull());
    EXPECT_NE(nullptr, dynamic_cast<NullLogger*>(ILogger::s_pInstance->get()));
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Error) << L"text" << 1;
    EXPECT_THAT(record.Pieces(), IsEmpty());
}

TEST(ILogger, SetLoggerWithoutAnInstanceDoesNothing)
{
    int deaths = 0;
    ILogger::SetLogger(smart_ptr<ILogger>(new MortalLogger(deaths)));
    EXPECT_EQ(1, deaths);
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
}

TEST(ILogger, EachValueIsOnePiece)
{
    Record record;
    const InstalledLogger installed(new RecordingLogger(record));
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Info) << LogSeverity::Info << ILogger::c_strLogToken1
                           << 17U << TString<char>("name") << L"text" << ILogger::c_strLogToken3;
    EXPECT_THAT(record.Pieces(), ElementsAre(L"2", L" ", L"17", L"name", L"text", L"\n"));
}

TEST(ILogger, SelectingASeverityWritesNothingAndStays)
{
    Record record;
    const InstalledLogger installed(new RecordingLogger(record));
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Warning);
    EXPECT_THAT(record.Pieces(), IsEmpty());
    **ILogger::s_pInstance << L"one line\n";
    EXPECT_EQ(LogSeverity::Warning, (*ILogger::s_pInstance)->GetSeverity());
}

TEST(ILogger, PassesWhatIsAtMostTheThreshold)
{
    for (std::uint32_t threshold = 0; threshold <= 4; ++threshold)
        for (std::uint32_t severity = 0; severity <= 6; ++severity)
        {
            Record record;
            const InstalledLogger installed(new RecordingLogger(record, static_cast<LogSeverity>(threshold)));
            **ILogger::s_pInstance << SetSeverity(static_cast<LogSeverity>(severity)) << L"w"
                                   << TString<wchar_t>(L"t") << TString<char>("n") << short{1} << 2 << 3LL
                                   << static_cast<unsigned short>(4) << 5U << 6ULL << 7L << true
                                   << LogSeverity::Info;
            EXPECT_EQ(severity <= threshold ? 12U : 0U, record.Pieces().size())
                << severity << " at " << threshold;
        }
}

TEST(ILogger, ThresholdErrorDropsUntilTheSeverityIsSetBack)
{
    Record record;
    const InstalledLogger installed(new RecordingLogger(record, LogSeverity::Error));
    **ILogger::s_pInstance << L"dropped" << SetSeverity(LogSeverity::Error) << L"a"
                           << SetSeverity(LogSeverity::Warning) << L"dropped" << 1
                           << SetSeverity(LogSeverity::Error) << L"b";
    EXPECT_EQ(L"ab", record.Text());
}

TEST(ILogger, ChainContinuesOnTheInstalledSink)
{
    Record own;
    Record other;
    RecordingLogger logger(own);
    const InstalledLogger installed(new RecordingLogger(other));
    logger << 1 << 2 << 3;
    EXPECT_EQ(L"1", own.Text());
    EXPECT_EQ(L"23", other.Text());
}

TEST(ILogger, EveryOperatorAnswersTheInstalledSink)
{
    Record own;
    Record other;
    RecordingLogger logger(own, LogSeverity::Error);
    const InstalledLogger installed(new RecordingLogger(other));
    const ILogger* const expected = ILogger::s_pInstance->get();
    EXPECT_EQ(expected, &(logger << SetSeverity(LogSeverity::Info)));
    EXPECT_EQ(expected, &(logger << TString<wchar_t>(L"x")));
    EXPECT_EQ(expected, &(logger << TString<char>("x")));
    EXPECT_EQ(expected, &(logger << short{1}));
    EXPECT_EQ(expected, &(logger << 1));
    EXPECT_EQ(expected, &(logger << 1LL));
    EXPECT_EQ(expected, &(logger << static_cast<unsigned short>(1)));
    EXPECT_EQ(expected, &(logger << 1U));
    EXPECT_EQ(expected, &(logger << 1ULL));
    EXPECT_EQ(expected, &(logger << 1L));
    EXPECT_EQ(expected, &(logger << L"x"));
    EXPECT_TRUE(own.Pieces().empty());
}

TEST(ILogger, ChainWithoutAnInstanceStaysOnTheSink)
{
    Record record;
    RecordingLogger logger(record);
    logger << 1 << L"x";
    EXPECT_EQ(L"1x", record.Text());
}

TEST(ILogger, NumbersAreDecimal)
{
    EXPECT_THAT(PiecesOf(short{SHRT_MIN}), ElementsAre(L"-32768"));
    EXPECT_THAT(PiecesOf(-5), ElementsAre(L"-5"));
    EXPECT_THAT(PiecesOf(INT_MIN), ElementsAre(L"-2147483648"));
    EXPECT_THAT(PiecesOf(LONG_MAX), ElementsAre(L"9223372036854775807"));
    EXPECT_THAT(PiecesOf(LLONG_MIN), ElementsAre(L"-9223372036854775808"));
    EXPECT_THAT(PiecesOf(static_cast<unsigned short>(USHRT_MAX)), ElementsAre(L"65535"));
    EXPECT_THAT(PiecesOf(UINT_MAX), ElementsAre(L"4294967295"));
    EXPECT_THAT(PiecesOf(ULLONG_MAX), ElementsAre(L"18446744073709551615"));
}

TEST(ILogger, BoolIsADigit)
{
    EXPECT_THAT(PiecesOf(true), ElementsAre(L"1"));
    EXPECT_THAT(PiecesOf(false), ElementsAre(L"0"));
}

TEST(ILogger, SeverityIsItsNumber)
{
    EXPECT_THAT(PiecesOf(LogSeverity::Debug), ElementsAre(L"3"));
}

TEST(ILogger, NarrowTextIsUtf8)
{
    EXPECT_THAT(PiecesOf(TString<char>("\xC3\xA9\xF0\x9F\x98\x80")), ElementsAre(L"\u00E9\U0001F600"));
}

TEST(ILogger, NarrowTextThatIsNotUtf8IsAnEmptyPiece)
{
    EXPECT_THAT(PiecesOf(TString<char>("a\xFF")), ElementsAre(L""));
}

TEST(ILogger, WideTextPassesUnchanged)
{
    const TString<wchar_t> text(std::wstring(L"a\0\u20AC", 3));
    EXPECT_THAT(PiecesOf(text), ElementsAre(text));
    EXPECT_THAT(PiecesOf(TString<wchar_t>()), ElementsAre(L""));
}

TEST(ILogger, ArraysGoUpToTheirZero)
{
    EXPECT_THAT(PiecesOf(L"ab\0cd"), ElementsAre(L"ab"));
    EXPECT_THAT(PiecesOf("ab\0cd"), ElementsAre(L"ab"));
    const wchar_t* const pointer = L"pointer";
    EXPECT_THAT(PiecesOf(pointer), ElementsAre(L"pointer"));
}

TEST(ILogger, IsNeitherCopiedNorAssigned)
{
    EXPECT_FALSE(std::is_copy_constructible_v<RecordingLogger>);
    EXPECT_FALSE(std::is_copy_assignable_v<ILogger>);
    EXPECT_TRUE(std::is_abstract_v<ILogger>);
}
