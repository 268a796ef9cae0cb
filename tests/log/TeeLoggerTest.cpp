// SPDX-License-Identifier: MIT
#include "toolkit/log/TeeLogger.h"

#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/support/InstalledLogger.h"
#include "tests/support/RecordingSink.h"
#include "toolkit/log/LogLine.h"

using namespace Toolkit;
using testing::ElementsAre;
using testing::SizeIs;
using ToolkitTest::InstalledLogger;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;

namespace
{

class TeeLoggerTest : public testing::Test
{
protected:
    smart_ptr<ILogger> Recording(Record& record, LogSeverity threshold) const
    {
        return smart_ptr<ILogger>(new RecordingLogger(record, threshold));
    }

    Record m_few;
    Record m_many;
};

} // namespace

TEST_F(TeeLoggerTest, PassesEachPieceOnByTheThresholdOfEach)
{
    const InstalledLogger installed(
        new TeeLogger({Recording(m_few, LogSeverity::Warning), smart_ptr<ILogger>(),
                       Recording(m_many, LogSeverity::Debug)}));
    EXPECT_EQ(LogSeverity::Debug, (*ILogger::s_pInstance)->GetThreshold());
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Warning) << L"a" << 7;
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Debug) << L"b";
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Verbose) << L"c";
    EXPECT_THAT(m_few.Pieces(), ElementsAre(L"a", L"7"));
    EXPECT_THAT(m_many.Pieces(), ElementsAre(L"a", L"7", L"b"));
}

TEST_F(TeeLoggerTest, PassesWholeLinesOnByTheirOwnSeverity)
{
    const InstalledLogger installed(
        new TeeLogger({Recording(m_few, LogSeverity::Warning), Recording(m_many, LogSeverity::Verbose)}));
    TOOLKIT_LOG(LogSeverity::Error) << "error";
    TOOLKIT_LOG(LogSeverity::Info) << "info";
    EXPECT_THAT(m_few.Pieces(), SizeIs(1));
    EXPECT_THAT(m_many.Pieces(), SizeIs(2));
}

TEST_F(TeeLoggerTest, StandsBesideTheSinksOfTheLog)
{
    const auto sink = std::make_shared<ToolkitTest::RecordingSink>();
    const InstalledLogger installed(
        new TeeLogger({Recording(m_few, LogSeverity::Warning), Recording(m_many, LogSeverity::Verbose)}));
    const ToolkitTest::InstalledSinks sinks({sink});
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Error) << L"a" << L"\n";
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Info) << L"b\n";
    EXPECT_EQ(L"a\n", m_few.Text());
    EXPECT_EQ(L"a\nb\n", m_many.Text());
    EXPECT_THAT(sink->Messages(), ElementsAre("a", "b"));
}

TEST_F(TeeLoggerTest, OneThatThrowsKeepsNoOtherFromThePiece)
{
    struct Throwing : ILogger
    {
        Throwing() : ILogger(LogSeverity::Verbose) {}
        void Write(const TString<wchar_t>&) override { throw std::runtime_error("no"); }
    };
    TeeLogger tee({smart_ptr<ILogger>(new Throwing), Recording(m_many, LogSeverity::Verbose)});
    EXPECT_THROW(tee.Write(L"a"), std::runtime_error);
    EXPECT_EQ(L"a", m_many.Text());
}
