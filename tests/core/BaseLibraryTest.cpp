// SPDX-License-Identifier: MIT
#include "toolkit/internal/wx/BaseLibrary.h"

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

namespace BaseLibrary = Toolkit::BaseLibrary;
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

TEST(BaseLibrary, StartsAndStopsAsOftenAsAsked)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(!BaseLibrary::IsStarted());
            REQUIRE(BaseLibrary::Start());
            REQUIRE(BaseLibrary::Start());
            REQUIRE(BaseLibrary::IsStarted());
            BaseLibrary::Stop();
            REQUIRE(BaseLibrary::IsStarted());
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            return "";
        }));
}

TEST(BaseLibrary, StopWithoutAStartIsHarmless)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            BaseLibrary::Stop();
            REQUIRE(wxInitialize());
            BaseLibrary::Stop();
            BaseLibrary::Stop();
            REQUIRE(BaseLibrary::IsStarted());
            wxUninitialize();
            REQUIRE(!BaseLibrary::IsStarted());
            BaseLibrary::Stop();
            REQUIRE(BaseLibrary::Start());
            REQUIRE(BaseLibrary::IsStarted());
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            return "";
        }));
}

TEST(BaseLibrary, KeepsWhatTheHostStarted)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(wxInitialize());
            REQUIRE(BaseLibrary::Start());
            BaseLibrary::Stop();
            REQUIRE(BaseLibrary::IsStarted());
            REQUIRE(BaseLibrary::Start());
            wxUninitialize();
            REQUIRE(BaseLibrary::IsStarted());
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            return "";
        }));
}

TEST(BaseLibrary, HoldStartsItAndOwesAStop)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(BaseLibrary::Hold());
            REQUIRE(BaseLibrary::IsStarted());
            REQUIRE(BaseLibrary::Hold());
            BaseLibrary::Stop();
            REQUIRE(BaseLibrary::IsStarted());
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            return "";
        }));
}

TEST(BaseLibrary, HoldLeavesAnApplicationObjectOfTheHostAlone)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            wxApp::SetInstance(new HostApp);
            int count = 0;
            REQUIRE(wxEntryStart(count, static_cast<wxChar**>(nullptr)));
            REQUIRE(!BaseLibrary::Hold());
            REQUIRE(BaseLibrary::IsStarted());
            wxEntryCleanup();
            REQUIRE(!BaseLibrary::IsStarted());
            return "";
        }));
}

TEST(BaseLibrary, StartAndStopCanBeRepeated)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            for (int i = 0; i < 50; ++i)
            {
                REQUIRE(BaseLibrary::Start());
                BaseLibrary::Stop();
                REQUIRE(!BaseLibrary::IsStarted());
            }
            return "";
        }));
}

TEST(BaseLibrary, StopOnAnotherThreadIsPutOff)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(BaseLibrary::Start());
            std::thread([] { BaseLibrary::Stop(); }).join();
            REQUIRE(BaseLibrary::IsStarted());
            // The new start is balanced by the stop that was put off.
            REQUIRE(BaseLibrary::Start());
            REQUIRE(BaseLibrary::IsStarted());
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            return "";
        }));
}

TEST(BaseLibrary, StopsOnAnotherThreadDoNotPileUp)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(BaseLibrary::Start());
            std::thread(
                []
                {
                    for (int i = 0; i < 1000; ++i)
                        if (BaseLibrary::Hold())
                            BaseLibrary::Stop();
                })
                .join();
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            return "";
        }));
}

TEST(BaseLibrary, LogTargetOfTheHostSurvivesStartAndStop)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            bool destroyed = false;
            HostLog log(destroyed);
            wxLog* const before = wxLog::SetActiveTarget(&log);
            for (int i = 0; i < 3; ++i)
            {
                REQUIRE(BaseLibrary::Start());
                REQUIRE(wxLog::GetActiveTarget() == &log);
                wxLogMessage("a line");
                BaseLibrary::Stop();
                REQUIRE(wxLog::GetActiveTarget() == &log);
            }
            REQUIRE(!destroyed);
            REQUIRE(log.m_iRecords == 3);
            wxLog::SetActiveTarget(before);
            return "";
        }));
}

TEST(BaseLibrary, LogTargetThatTheHostInstalledMeanwhileSurvivesTheStop)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            bool destroyed = false;
            REQUIRE(BaseLibrary::Start());
            HostLog log(destroyed);
            delete wxLog::SetActiveTarget(&log);
            BaseLibrary::Stop();
            REQUIRE(!destroyed);
            REQUIRE(wxLog::SetActiveTarget(nullptr) == &log);
            return "";
        }));
}

TEST(BaseLibrary, StartsThatTheHostTookBackAreForgotten)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(BaseLibrary::Start());
            wxUninitialize();
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            bool destroyed = false;
            HostLog log(destroyed);
            delete wxLog::SetActiveTarget(&log);
            REQUIRE(BaseLibrary::Start());
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            REQUIRE(!destroyed);
            REQUIRE(wxLog::SetActiveTarget(nullptr) == &log);
            REQUIRE(BaseLibrary::Hold());
            wxUninitialize();
            REQUIRE(BaseLibrary::Hold());
            REQUIRE(BaseLibrary::IsStarted());
            BaseLibrary::Stop();
            REQUIRE(!BaseLibrary::IsStarted());
            return "";
        }));
}

TEST(BaseLibrary, SilenceNestsAndRestores)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            for (int round = 0; round < 2; ++round)
            {
                REQUIRE(Logs());
                {
                    const BaseLibrary::Silence outer;
                    REQUIRE(!Logs());
                    {
                        const BaseLibrary::Silence inner;
                        REQUIRE(!Logs());
                    }
                    REQUIRE(!Logs());
                }
                REQUIRE(Logs());
                // The second round runs with wxWidgets started.
                REQUIRE(BaseLibrary::Start());
            }
            BaseLibrary::Stop();
            BaseLibrary::Stop();
            return "";
        }));
}

TEST(BaseLibrary, SilenceRestoresWhatTheHostHadChosen)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            wxLog::SetLogLevel(wxLOG_Warning);
            wxLog::EnableLogging(false);
            for (int round = 0; round < 2; ++round)
            {
                {
                    const BaseLibrary::Silence silence;
                }
                REQUIRE(!wxLog::IsEnabled() && wxLog::GetLogLevel() == wxLOG_Warning);
                // The second round runs with wxWidgets started.
                REQUIRE(BaseLibrary::Start());
            }
            wxLog::EnableLogging(true);
            BaseLibrary::Stop();
            BaseLibrary::Stop();
            return "";
        }));
}

TEST(BaseLibrary, SilenceOfAnotherThreadLeavesTheMainThreadAlone)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            REQUIRE(BaseLibrary::Start());
            bool quiet = false;
            bool mainLogs = false;
            bool restored = false;
            std::thread(
                [&]
                {
                    {
                        const BaseLibrary::Silence outer;
                        const BaseLibrary::Silence inner;
                        quiet = !Logs();
                        mainLogs = true;
                    }
                    restored = Logs();
                })
                .join();
            REQUIRE(quiet && mainLogs && restored);
            {
                const BaseLibrary::Silence silence;
                bool enabled = false;
                std::thread([&] { enabled = Logs(); }).join();
                REQUIRE(enabled);
            }
            REQUIRE(Logs());
            BaseLibrary::Stop();
            return "";
        }));
}

TEST(BaseLibrary, OverlappingSilencesOfTwoThreadsEndTogetherBeforeTheStart)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            auto first = std::make_unique<BaseLibrary::Silence>();
            std::unique_ptr<BaseLibrary::Silence> second;
            std::thread([&] { second = std::make_unique<BaseLibrary::Silence>(); }).join();
            first.reset();
            REQUIRE(!Logs());
            std::thread([&] { second.reset(); }).join();
            REQUIRE(Logs());
            return "";
        }));
}

TEST(BaseLibrary, SilenceThatSpansAStartOnAnotherThreadEnds)
{
    EXPECT_TRUE(InChild(
        []() -> std::string
        {
            auto silence = std::make_unique<BaseLibrary::Silence>();
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
