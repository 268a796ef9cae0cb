// SPDX-License-Identifier: MIT
#include "toolkit/internal/wx/WxLibrary.h"

#include <future>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/thread.h>

#include "tests/support/InChild.h"

namespace WxLibrary = Toolkit::WxLibrary;
using ToolkitTest::InChild;

namespace
{

// A sink of the host that tells when it goes.
class HostLog : public wxLog
{
public:
    explicit HostLog(bool& destroyed) : m_pDestroyed(&destroyed) {}
    ~HostLog() override { *m_pDestroyed = true; }

    int m_iRecords = 0;

protected:
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override { ++m_iRecords; }

private:
    bool* const m_pDestroyed;
};

class HostApp : public wxAppConsole
{
public:
    int OnRun() override { return 0; }
};

// True when an error of the calling thread would be logged.
bool Logs()
{
    return wxLog::IsLevelEnabled(wxLOG_Error, wxString());
}

#define REQUIRE(condition)                                                                                   \
    if (!(condition))                                                                                        \
    return std::string("line ") + std::to_string(__LINE__) + ": " #condition

} // namespace

// Each test has a process of its own, in which nobody has started wxWidgets yet.

TEST(WxLibrary, StartsAndStopsAsOftenAsAsked)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(!WxLibrary::IsStarted());
            REQUIRE(WxLibrary::Start());
            REQUIRE(WxLibrary::Start());
            REQUIRE(WxLibrary::IsStarted());
            WxLibrary::Stop();
            REQUIRE(WxLibrary::IsStarted());
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            return "";
        }));
}

TEST(WxLibrary, StopWithoutAStartIsHarmless)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            WxLibrary::Stop();
            REQUIRE(wxInitialize());
            WxLibrary::Stop();
            WxLibrary::Stop();
            REQUIRE(WxLibrary::IsStarted());
            wxUninitialize();
            REQUIRE(!WxLibrary::IsStarted());
            WxLibrary::Stop();
            REQUIRE(WxLibrary::Start());
            REQUIRE(WxLibrary::IsStarted());
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            return "";
        }));
}

TEST(WxLibrary, KeepsWhatTheHostStarted)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(wxInitialize());
            REQUIRE(WxLibrary::Start());
            WxLibrary::Stop();
            REQUIRE(WxLibrary::IsStarted());
            REQUIRE(WxLibrary::Start());
            wxUninitialize();
            REQUIRE(WxLibrary::IsStarted());
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            return "";
        }));
}

TEST(WxLibrary, HoldStartsItAndOwesAStop)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(WxLibrary::Hold());
            REQUIRE(WxLibrary::IsStarted());
            REQUIRE(WxLibrary::Hold());
            WxLibrary::Stop();
            REQUIRE(WxLibrary::IsStarted());
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            return "";
        }));
}

TEST(WxLibrary, HoldLeavesAnApplicationObjectOfTheHostAlone)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            wxApp::SetInstance(new HostApp);
            int count = 0;
            REQUIRE(wxEntryStart(count, static_cast<wxChar**>(nullptr)));
            REQUIRE(!WxLibrary::Hold());
            REQUIRE(WxLibrary::IsStarted());
            wxEntryCleanup();
            REQUIRE(!WxLibrary::IsStarted());
            return "";
        }));
}

TEST(WxLibrary, StartAndStopCanBeRepeated)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            for (int i = 0; i < 50; ++i)
            {
                REQUIRE(WxLibrary::Start());
                WxLibrary::Stop();
                REQUIRE(!WxLibrary::IsStarted());
            }
            return "";
        }));
}

TEST(WxLibrary, StopOnAnotherThreadIsPutOff)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(WxLibrary::Start());
            std::thread([] { WxLibrary::Stop(); }).join();
            REQUIRE(WxLibrary::IsStarted());
            // The new start is balanced by the stop that was put off.
            REQUIRE(WxLibrary::Start());
            REQUIRE(WxLibrary::IsStarted());
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            return "";
        }));
}

TEST(WxLibrary, StopsOnAnotherThreadDoNotPileUp)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(WxLibrary::Start());
            std::thread(
                []
                {
                    for (int i = 0; i < 1000; ++i)
                        if (WxLibrary::Hold())
                            WxLibrary::Stop();
                })
                .join();
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            return "";
        }));
}

TEST(WxLibrary, LogTargetOfTheHostSurvivesStartAndStop)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            bool destroyed = false;
            HostLog log(destroyed);
            wxLog* const before = wxLog::SetActiveTarget(&log);
            for (int i = 0; i < 3; ++i)
            {
                REQUIRE(WxLibrary::Start());
                REQUIRE(wxLog::GetActiveTarget() == &log);
                wxLogMessage("a line");
                WxLibrary::Stop();
                REQUIRE(wxLog::GetActiveTarget() == &log);
            }
            REQUIRE(!destroyed);
            REQUIRE(log.m_iRecords == 3);
            wxLog::SetActiveTarget(before);
            return "";
        }));
}

TEST(WxLibrary, LogTargetThatTheHostInstalledMeanwhileSurvivesTheStop)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            bool destroyed = false;
            REQUIRE(WxLibrary::Start());
            HostLog log(destroyed);
            delete wxLog::SetActiveTarget(&log);
            WxLibrary::Stop();
            REQUIRE(!destroyed);
            REQUIRE(wxLog::SetActiveTarget(nullptr) == &log);
            return "";
        }));
}

TEST(WxLibrary, StartsThatTheHostTookBackAreForgotten)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(WxLibrary::Start());
            wxUninitialize();
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            bool destroyed = false;
            HostLog log(destroyed);
            delete wxLog::SetActiveTarget(&log);
            REQUIRE(WxLibrary::Start());
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            REQUIRE(!destroyed);
            REQUIRE(wxLog::SetActiveTarget(nullptr) == &log);
            REQUIRE(WxLibrary::Hold());
            wxUninitialize();
            REQUIRE(WxLibrary::Hold());
            REQUIRE(WxLibrary::IsStarted());
            WxLibrary::Stop();
            REQUIRE(!WxLibrary::IsStarted());
            return "";
        }));
}

TEST(WxLibrary, SilenceNestsAndRestores)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            for (int round = 0; round < 2; ++round)
            {
                REQUIRE(Logs());
                {
                    const WxLibrary::Silence outer;
                    REQUIRE(!Logs());
                    {
                        const WxLibrary::Silence inner;
                        REQUIRE(!Logs());
                    }
                    REQUIRE(!Logs());
                }
                REQUIRE(Logs());
                // The second round runs with wxWidgets started.
                REQUIRE(WxLibrary::Start());
            }
            WxLibrary::Stop();
            WxLibrary::Stop();
            return "";
        }));
}

TEST(WxLibrary, SilenceRestoresWhatTheHostHadChosen)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            wxLog::SetLogLevel(wxLOG_Warning);
            wxLog::EnableLogging(false);
            for (int round = 0; round < 2; ++round)
            {
                {
                    const WxLibrary::Silence silence;
                }
                REQUIRE(!wxLog::IsEnabled() && wxLog::GetLogLevel() == wxLOG_Warning);
                // The second round runs with wxWidgets started.
                REQUIRE(WxLibrary::Start());
            }
            wxLog::EnableLogging(true);
            WxLibrary::Stop();
            WxLibrary::Stop();
            return "";
        }));
}

TEST(WxLibrary, SilenceOfAnotherThreadLeavesTheMainThreadAlone)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(WxLibrary::Start());
            bool quiet = false;
            bool mainLogs = false;
            bool restored = false;
            std::thread(
                [&]
                {
                    {
                        const WxLibrary::Silence outer;
                        const WxLibrary::Silence inner;
                        quiet = !Logs();
                        mainLogs = true;
                    }
                    restored = Logs();
                })
                .join();
            REQUIRE(quiet && mainLogs && restored);
            {
                const WxLibrary::Silence silence;
                bool enabled = false;
                std::thread([&] { enabled = Logs(); }).join();
                REQUIRE(enabled);
            }
            REQUIRE(Logs());
            WxLibrary::Stop();
            return "";
        }));
}

TEST(WxLibrary, OverlappingSilencesOfTwoThreadsEndTogetherBeforeTheStart)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            auto first = std::make_unique<WxLibrary::Silence>();
            std::unique_ptr<WxLibrary::Silence> second;
            std::thread([&] { second = std::make_unique<WxLibrary::Silence>(); }).join();
            first.reset();
            REQUIRE(!Logs());
            std::thread([&] { second.reset(); }).join();
            REQUIRE(Logs());
            return "";
        }));
}

TEST(WxLibrary, SilenceThatSpansAStartOnAnotherThreadEnds)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            auto silence = std::make_unique<WxLibrary::Silence>();
            REQUIRE(!Logs());
            std::promise<bool> started;
            std::promise<void> ended;
            bool starterLogs = false;
            std::thread starter(
                [&]
                {
                    started.set_value(wxInitialize());
                    ended.get_future().wait();
                    starterLogs = Logs();
                });
            const bool quiet = started.get_future().get() && !Logs();
            silence.reset();
            ended.set_value();
            starter.join();
            REQUIRE(quiet && Logs() && starterLogs);
            return "";
        }));
}
