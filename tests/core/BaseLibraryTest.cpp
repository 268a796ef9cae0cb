#include "toolkit/core/BaseLibrary.h"

#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/thread.h>

#include "tests/support/ChildProcess.h"

using Toolkit::BaseLibrary;
using ToolkitTest::ChildProcess;

namespace
{

// Each test has a process of its own, in which nobody has started the base library yet.
template <class Test>
std::string Alone(Test test)
{
    return ChildProcess(std::function<std::string()>(test)).Wait();
}

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

#define REQUIRE(condition)                                                                                   \
    if (!(condition))                                                                                        \
    return std::string("line ") + std::to_string(__LINE__) + ": " #condition

} // namespace

TEST(BaseLibrary, StartsAndStopsAsOftenAsAsked)
{
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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
    EXPECT_EQ("", Alone(
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

TEST(BaseLibrary, SilenceNestsAndRestores)
{
    EXPECT_EQ("", Alone(
                      []() -> std::string
                      {
                          for (int round = 0; round < 2; ++round)
                          {
                              REQUIRE(wxLog::IsEnabled());
                              {
                                  const BaseLibrary::Silence outer;
                                  REQUIRE(!wxLog::IsEnabled());
                                  {
                                      const BaseLibrary::Silence inner;
                                      REQUIRE(!wxLog::IsEnabled());
                                  }
                                  REQUIRE(!wxLog::IsEnabled());
                              }
                              REQUIRE(wxLog::IsEnabled());
                              // The second round runs with the base library started.
                              REQUIRE(BaseLibrary::Start());
                          }
                          BaseLibrary::Stop();
                          BaseLibrary::Stop();
                          return "";
                      }));
}

TEST(BaseLibrary, SilenceRestoresWhatTheHostHadChosen)
{
    EXPECT_EQ("", Alone(
                      []() -> std::string
                      {
                          wxLog::EnableLogging(false);
                          {
                              const BaseLibrary::Silence silence;
                          }
                          REQUIRE(!wxLog::IsEnabled());
                          wxLog::EnableLogging(true);
                          return "";
                      }));
}

TEST(BaseLibrary, SilenceOfAnotherThreadLeavesTheMainThreadAlone)
{
    EXPECT_EQ("", Alone(
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
                                      quiet = !wxLog::IsEnabled();
                                      mainLogs = true;
                                  }
                                  restored = wxLog::IsEnabled();
                              })
                              .join();
                          REQUIRE(quiet && mainLogs && restored);
                          {
                              const BaseLibrary::Silence silence;
                              bool enabled = false;
                              std::thread([&] { enabled = wxLog::IsEnabled(); }).join();
                              REQUIRE(enabled);
                          }
                          REQUIRE(wxLog::IsEnabled());
                          BaseLibrary::Stop();
                          return "";
                      }));
}

TEST(BaseLibrary, OverlappingSilencesOfTwoThreadsEndTogetherBeforeTheStart)
{
    EXPECT_EQ("", Alone(
                      []() -> std::string
                      {
                          auto first = std::make_unique<BaseLibrary::Silence>();
                          std::unique_ptr<BaseLibrary::Silence> second;
                          std::thread([&] { second = std::make_unique<BaseLibrary::Silence>(); }).join();
                          first.reset();
                          REQUIRE(!wxLog::IsEnabled());
                          std::thread([&] { second.reset(); }).join();
                          REQUIRE(wxLog::IsEnabled());
                          return "";
                      }));
}
