// SPDX-License-Identifier: MIT
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <wx/log.h>

#include "tests/faults/OutOfMemory.h"
#include "tests/support/InstalledLogger.h"
#include "tests/support/LogFile.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/log/CallbackLog.h"
#include "toolkit/log/ConsoleLogger.h"
#include "toolkit/log/DebuggerLogger.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/NullLogger.h"
#include "toolkit/log/RunLog.h"
#include "toolkit/log/TeeLogger.h"
#include "toolkit/log/WxLogForwarder.h"

using namespace Toolkit;
using ToolkitTest::Attempt;
using ToolkitTest::InstalledLogger;
using ToolkitTest::LogFile;

namespace
{

const TString<wchar_t> c_strPiece(L"a piece that is too long for the string object itself, \x20AC\n");
const unsigned int s_uLarge = 1U << 30;

// Takes every piece; needs no memory.
struct CountingLogger : ILogger
{
    CountingLogger() : ILogger(LogSeverity::Verbose) {}
    void Write(const TString<wchar_t>&) override {}
};

// Logs while the logger's thread finds no memory; with `taken` the log's first name cannot be had.
void LogShortOfMemory(const Attempt& attempt, bool taken)
{
    const LogFile file;
    if (taken)
        std::filesystem::create_directory(file.Path());
    attempt.OnOtherThreads(
        [&]
        {
            FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
            logger.Write(c_strPiece);
            logger.Write(L"after");
        });
    // Each piece is there or is not; the file may have got the other name.
    const std::vector<std::string> others = file.FallbackPaths();
    const std::string bytes = ToolkitTest::ReadBytes(others.empty() ? file.Path() : others.front());
    const std::string whole = UTF8::ToUTF8(c_strPiece);
    EXPECT_THAT(bytes, testing::AnyOf("", "after", whole, whole + "after"));
    EXPECT_GE(1U, others.size());
}

} // namespace

TEST(OutOfMemory, IsSurvivedByLog)
{
    const ToolkitSession session;
    ILogger::SetLogger(new CountingLogger);
    ToolkitTest::CapturedOutput quiet(1);
    quiet.Stop();
    ToolkitTest::FailEachAllocation({
        {"ILogger::Create", [](const Attempt& attempt) { attempt([] { ILogger::Create(); }); }},
        {"ILogger::SetLogger",
         [](const Attempt& attempt)
         {
             attempt([] { ILogger::SetLogger(smart_ptr<ILogger>()); });
             ILogger::SetLogger(new CountingLogger);
             EXPECT_EQ(LogSeverity::Verbose, (*ILogger::s_pInstance)->GetThreshold());
         }},
        {"ILogger::operator<<",
         [](const Attempt& attempt)
         {
             attempt([] { **ILogger::s_pInstance << SetSeverity(LogSeverity::Info) << c_strPiece << 7; });
             attempt(
                 [] {
                     **ILogger::s_pInstance << TString<char>(std::string(100, 'x')) << 7LL << 1.5 << "narrow";
                 });
             **ILogger::s_pInstance << L"after";
         }},
        {"TOOLKIT_LOG",
         [](const Attempt& attempt)
         {
             attempt([] { TOOLKIT_LOG(LogSeverity::Info) << c_strPiece << 7 << "narrow" << 1.5; });
             TOOLKIT_LOG(LogSeverity::Info) << L"after";
         }},
        {"LogLine::Stream", [](const Attempt& attempt)
         { attempt([] { LogLine::Stream(LogSeverity::Info, 7, "function", c_strPiece); }); }},
        {"NullLogger, ConsoleLogger, DebuggerLogger",
         [](const Attempt& attempt)
         {
             attempt([] { NullLogger().Write(c_strPiece); });
             attempt([] { ConsoleLogger(LogSeverity::Info).Write(TString<wchar_t>()); });
             attempt([] { DebuggerLogger(LogSeverity::Info).Write(TString<wchar_t>()); });
         }},
        {"WxLogForwarder",
         [](const Attempt& attempt)
         {
             wxLog* const before = wxLog::SetActiveTarget(nullptr);
             std::unique_ptr<WxLogForwarder> forwarder;
             attempt([&] { forwarder = std::make_unique<WxLogForwarder>(); });
             if (forwarder != nullptr)
                 attempt([&] { forwarder->DoLog(wxLOG_Error, c_strPiece.c_str(), 7); });
             attempt([&] { forwarder.reset(); });
             delete wxLog::SetActiveTarget(before);
         }},
    });
}

TEST(OutOfMemory, IsSurvivedByTheLogOfNewCode)
{
    const ToolkitSession session;
    const ToolkitTest::TemporaryFolder folder;
    ToolkitTest::FailEachAllocation({
        {"Log::Install",
         [](const Attempt& attempt)
         {
             int calls = 0;
             const auto count = [&calls](const LogRecord&) { ++calls; };
             const std::shared_ptr<LogSink> sink = std::make_shared<CallbackLog>(LogSeverity::Info, count);
             attempt([&] { Log::Install({sink}); });
             Log::Install({sink});
             attempt([] { TOOLKIT_LOG(LogSeverity::Info) << c_strPiece << 7 << "narrow" << 1.5; });
             attempt([] { LogLine::Stream(LogSeverity::Info, 7, "function", c_strPiece); });
             attempt([] { **ILogger::s_pInstance << SetSeverity(LogSeverity::Info) << c_strPiece; });
             calls = 0;
             TOOLKIT_LOG(LogSeverity::Info) << L"after";
             EXPECT_EQ(1, calls);
             Log::Install({});
             ILogger::SetLogger(smart_ptr<ILogger>());
         }},
        {"Log::Console", [](const Attempt& attempt) { attempt([] { Log::Console(); }); }},
        {"TeeLogger",
         [](const Attempt& attempt)
         {
             attempt([] { TeeLogger({*ILogger::s_pInstance, *ILogger::s_pInstance}); });
             TeeLogger tee({*ILogger::s_pInstance, *ILogger::s_pInstance});
             attempt([&] { tee.Write(c_strPiece); });
         }},
        {"CallbackLog",
         [](const Attempt& attempt)
         {
             std::string last;
             std::shared_ptr<CallbackLog> sink;
             const auto keep = [&last](const LogRecord& record) { last = record.message; };
             attempt([&] { sink = std::make_shared<CallbackLog>(LogSeverity::Info, keep); });
             sink = std::make_shared<CallbackLog>(LogSeverity::Info, keep);
             LogRecord record;
             record.message = std::string(100, 'x');
             EXPECT_EQ(attempt([&] { sink->Write(record); }) ? record.message : "", last);
             sink->Write(record);
             EXPECT_EQ(record.message, last);
         }},
        {"RunLog::Open",
         [&folder](const Attempt& attempt)
         {
             const RunLogOptions options = RunLogOptions("open").Folder(folder.Path());
             attempt([&] { static_cast<void>(RunLog::Open(options)); });
             EXPECT_TRUE(RunLog::Open(options));
         }},
        {"RunLog::Write",
         [&folder](const Attempt& attempt)
         {
             const std::string runs = folder.Path("write");
             std::filesystem::remove_all(runs);
             const auto log = RunLog::Open(RunLogOptions("write").Folder(runs).MaxSize(100)).value();
             Log::Install({log});
             for (int i = 0; i < 3; ++i)
                 attempt([] { TOOLKIT_LOG(LogSeverity::Info) << std::string(100, 'x') << "\n"; });
             TOOLKIT_LOG(LogSeverity::Info) << "after";
             Log::Install({});
             EXPECT_THAT(ToolkitTest::ReadBytes(log->File().string()), testing::EndsWith("after\n"));
             ILogger::SetLogger(smart_ptr<ILogger>());
         }},
        {"RunLog's thread",
         [&folder](const Attempt& attempt)
         {
             const std::string runs = folder.Path("thread");
             std::filesystem::remove_all(runs);
             const auto log =
                 RunLog::Open(RunLogOptions("thread").Folder(runs).MaxSize(100).Background()).value();
             LogRecord record;
             record.message = std::string(50, 'x') + "\n";
             attempt.OnOtherThreads(
                 [&]
                 {
                     for (int i = 0; i < 3; ++i)
                     {
                         log->Write(record);
                         EXPECT_TRUE(log->Flush());
                     }
                 });
             record.message = "after";
             log->Write(record);
             EXPECT_TRUE(log->Flush());
             EXPECT_THAT(ToolkitTest::ReadBytes(log->File().string()), testing::EndsWith("after\n"));
         }},
        {"RunLogOptions",
         [](const Attempt& attempt)
         {
             attempt(
                 []
                 {
                     const RunLogOptions options(std::string(100, 'x'));
                     RunLogOptions copy(options);
                     copy = options;
                 });
         }},
    });
}

TEST(OutOfMemory, IsSurvivedByTheFileLogger)
{
    const ToolkitSession session;
    ToolkitTest::FailEachAllocation({
        {"FileLogger::FileLogger",
         [](const Attempt& attempt)
         {
             const LogFile file;
             const TString<wchar_t> name = file.WideName();
             attempt(
                 [&]
                 {
                     const auto logger = std::make_unique<FileLogger>(LogSeverity::Info, name, 0U);
                     ToolkitTest::FailingMemory::Disarm();
                 });
         }},
        {"FileLogger::Write",
         [](const Attempt& attempt)
         {
             const LogFile file;
             std::string expected;
             {
                 FileLogger logger(LogSeverity::Info, file.WideName(), s_uLarge);
                 for (int i = 0; i < 10; ++i)
                     if (attempt([&] { logger.Write(c_strPiece); }))
                         expected += "x";
                 logger.Write(L"after");
             }
             const std::string bytes = file.Bytes();
             EXPECT_EQ(expected.size() * (c_strPiece.size() + 2) + 5, bytes.size());
             EXPECT_EQ("after", bytes.substr(bytes.size() - 5));
         }},
        {"FileLogger's thread", [](const Attempt& attempt) { LogShortOfMemory(attempt, false); }},
        {"FileLogger's thread, by another name",
         [](const Attempt& attempt) { LogShortOfMemory(attempt, true); }},
    });
}
