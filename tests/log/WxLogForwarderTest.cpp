// SPDX-License-Identifier: MIT
#include "toolkit/log/WxLogForwarder.h"

#include <optional>
#include <thread>

#include <gmock/gmock.h>
#include <wx/init.h>
#include <wx/log.h>

#include "tests/support/InstalledLogger.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/log/ConsoleLogger.h"

using namespace Toolkit;
using testing::ElementsAre;
using ToolkitTest::InstalledLogger;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;

namespace
{

// A host's own target, which tells when it is destroyed.
class HostTarget : public wxLog
{
public:
    explicit HostTarget(int& deaths) : m_deaths(deaths) {}
    ~HostTarget() override { ++m_deaths; }

protected:
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {}

private:
    int& m_deaths;
};

class WxLogForwarderTest : public testing::Test
{
protected:
    WxLogForwarderTest() : m_installed(new RecordingLogger(m_record)) { m_forwarder.emplace(); }
    ~WxLogForwarderTest() override { m_forwarder.reset(); }

    Record m_record;
    const InstalledLogger m_installed;
    const wxInitializer m_library;
    std::optional<WxLogForwarder> m_forwarder;
};

} // namespace

TEST_F(WxLogForwarderTest, MapsTheLevels)
{
    const struct
    {
        wxLogLevel level;
        const wchar_t* severity;
    } rows[] = {{wxLOG_FatalError, L"0"},
                {wxLOG_Error, L"0"},
                {wxLOG_Warning, L"1"},
                {wxLOG_Message, L"2"},
                {wxLOG_Status, L"2"},
                {wxLOG_Info, L"3"},
                {wxLOG_Debug, L"3"},
                {wxLOG_Trace, L"3"},
                {wxLOG_Progress, L"4"},
                {9, L"4"},
                {99, L"4"},
                {100, L"4"},
                {10000, L"4"},
                {static_cast<wxLogLevel>(-1), L"4"}};
    for (std::size_t value = 0; value < 9; ++value)
        EXPECT_EQ(value, rows[value].level);
    for (const auto& row : rows)
    {
        m_record.Clear();
        m_forwarder->DoLog(row.level, L"text", 12);
        EXPECT_EQ(std::wstring(row.severity) + L"  : wx : 12 : text\n", m_record.Text());
        EXPECT_EQ(row.severity, std::to_wstring((*ILogger::s_pInstance)->GetSeverity()));
    }
}

TEST_F(WxLogForwarderTest, WritesTheLinePieceByPiece)
{
    m_forwarder->DoLog(wxLOG_Warning, L"disk full", 1200000000);
    EXPECT_THAT(m_record.Pieces(),
                ElementsAre(L"1", L" ", L" : ", L"wx", L" : ", L"1200000000", L" : ", L"disk full", L"\n"));
}

TEST_F(WxLogForwarderTest, ForwardsWhatWxWidgetsLogs)
{
    wxLog::OnLog(wxLOG_Warning, "disk full", 1200000000);
    EXPECT_EQ(L"1  : wx : 1200000000 : disk full\n", m_record.Text());
}

TEST_F(WxLogForwarderTest, ErrorAndTraceMessagesHaveTheirSeverities)
{
    wxLogError("an error");
    wxLog::AddTraceMask("mask");
    wxLogTrace("mask", "a trace");
    wxLog::RemoveTraceMask("mask");
    wxLog::SetLogLevel(wxLOG_Max);
    wxLogGeneric(100, "a user level");
    const std::vector<std::wstring> pieces = m_record.Pieces();
    ASSERT_EQ(27U, pieces.size());
    EXPECT_EQ(L"0", pieces[0]);
    EXPECT_EQ(L"an error", pieces[7]);
    EXPECT_EQ(L"3", pieces[9]);
    EXPECT_EQ(L"4", pieces[18]);
    EXPECT_EQ(L"a user level", pieces[25]);
}

TEST_F(WxLogForwarderTest, TimeStampIsTheMomentInSeconds)
{
    const long before = static_cast<long>(time(nullptr));
    wxLogError("now");
    const long stamp = std::stol(m_record.Pieces().at(5));
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, static_cast<long>(time(nullptr)));
}

TEST_F(WxLogForwarderTest, TimeStampIsTakenFromTheMillisecondsWhenTheSecondsAreMissing)
{
    wxLogRecordInfo info(nullptr, 0, nullptr, nullptr);
    info.timestampMS = 1200000000999LL;
    m_forwarder->LogRecord(wxLOG_Error, "text", info);
    info.timestamp = 1300000000;
    m_forwarder->LogRecord(wxLOG_Error, "text", info);
    EXPECT_EQ(L"0  : wx : 1200000000 : text\n0  : wx : 1300000000 : text\n", m_record.Text());
}

TEST_F(WxLogForwarderTest, MessageIsNoFormat)
{
    wxLog::OnLog(wxLOG_Error, "100% %s %n %ls", 1);
    wxLogError("%s", "50% %d");
    EXPECT_EQ(L"100% %s %n %ls", m_record.Pieces().at(7));
    EXPECT_EQ(L"50% %d", m_record.Pieces().at(16));
}

TEST_F(WxLogForwarderTest, MessageKeepsItsCharacters)
{
    wxLog::OnLog(wxLOG_Error, wxString(L"\u00E9\u20AC\U0001F600"), 1);
    EXPECT_EQ(L"\u00E9\u20AC\U0001F600", m_record.Pieces().at(7));
}

TEST_F(WxLogForwarderTest, NullMessageIsEmpty)
{
    m_forwarder->DoLog(wxLOG_Error, nullptr, 1);
    EXPECT_EQ(L"0  : wx : 1 : \n", m_record.Text());
}

TEST_F(WxLogForwarderTest, TimeStampMayBeNegative)
{
    m_forwarder->DoLog(wxLOG_Error, L"text", -1);
    EXPECT_EQ(L"0  : wx : -1 : text\n", m_record.Text());
}

TEST_F(WxLogForwarderTest, DoLogStringDoesNothing)
{
    m_forwarder->DoLogString(L"text", 1);
    EXPECT_TRUE(m_record.Pieces().empty());
}

TEST_F(WxLogForwarderTest, ThresholdOfTheInstalledLoggerFilters)
{
    ILogger::SetLogger(smart_ptr<ILogger>(new RecordingLogger(m_record, LogSeverity::Error)));
    m_forwarder->DoLog(wxLOG_Warning, L"dropped", 1);
    m_forwarder->DoLog(wxLOG_Error, L"kept", 1);
    EXPECT_EQ(L"0  : wx : 1 : kept\n", m_record.Text());
}

TEST_F(WxLogForwarderTest, NothingReachesTheErrorOutput)
{
    ToolkitTest::CapturedOutput errors(2);
    wxLogError("text");
    EXPECT_EQ("", errors.Stop());
}

TEST_F(WxLogForwarderTest, IsTheActiveTargetAndLeavesNone)
{
    EXPECT_EQ(&*m_forwarder, wxLog::GetActiveTarget());
    m_forwarder.reset();
    EXPECT_EQ(nullptr, wxLog::SetActiveTarget(nullptr));
}

TEST_F(WxLogForwarderTest, LeavesNoTargetAlsoWhenAnotherWasSet)
{
    int deaths = 0;
    HostTarget target(deaths);
    wxLog::SetActiveTarget(&target);
    m_forwarder.reset();
    EXPECT_EQ(nullptr, wxLog::SetActiveTarget(nullptr));
    EXPECT_EQ(0, deaths);
}

TEST_F(WxLogForwarderTest, LeavesNoTargetAlsoWhenThereWasNone)
{
    wxLog::SetActiveTarget(nullptr);
    m_forwarder.reset();
    EXPECT_EQ(nullptr, wxLog::SetActiveTarget(nullptr));
}

TEST_F(WxLogForwarderTest, NeitherKeepsNorDeletesThePreviousTarget)
{
    m_forwarder.reset();
    int deaths = 0;
    HostTarget target(deaths);
    wxLog::SetActiveTarget(&target);
    m_forwarder.emplace();
    EXPECT_EQ(&*m_forwarder, wxLog::GetActiveTarget());
    m_forwarder.reset();
    EXPECT_EQ(0, deaths);
    EXPECT_EQ(nullptr, wxLog::SetActiveTarget(nullptr));
}

TEST_F(WxLogForwarderTest, MessageOfAnotherThreadArrivesWhenTheMainThreadFlushes)
{
    std::thread([] { wxLog::OnLog(wxLOG_Error, "elsewhere", 7); }).join();
    EXPECT_EQ(L"", m_record.Text());
    wxLog::FlushActive();
    EXPECT_EQ(L"0  : wx : 7 : elsewhere\n", m_record.Text());
}

TEST_F(WxLogForwarderTest, MessageOfAnotherThreadArrivesWhenTheForwarderGoes)
{
    std::thread([] { wxLog::OnLog(wxLOG_Error, "elsewhere", 7); }).join();
    m_forwarder.reset();
    EXPECT_EQ(L"0  : wx : 7 : elsewhere\n", m_record.Text());
}

TEST_F(WxLogForwarderTest, MessageOfAThreadThatNamedTheForwarderArrivesAtOnce)
{
    std::thread(
        [this]
        {
            wxLog::SetThreadActiveTarget(&*m_forwarder);
            wxLog::OnLog(wxLOG_Error, "elsewhere", 7);
            wxLog::SetThreadActiveTarget(nullptr);
        })
        .join();
    EXPECT_EQ(L"0  : wx : 7 : elsewhere\n", m_record.Text());
}

TEST(WxLogForwarder, WithoutALoggerMessagesAreLost)
{
    const wxInitializer library;
    ToolkitTest::CapturedOutput errors(2);
    {
        WxLogForwarder forwarder;
        wxLogError("lost");
        forwarder.DoLog(wxLOG_Error, L"lost", 1);
        EXPECT_EQ(nullptr, ILogger::s_pInstance);
    }
    EXPECT_EQ("", errors.Stop());
}
