// SPDX-License-Identifier: MIT
// What users of each subject do every day, from the beginning to the end; each peer as its own documentation
// recommends it.
#include <cstdio>
#include <fstream>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "bench/BareCode.h"
#include "bench/Bench.h"
#include "bench/Threads.h"
#include "toolkit/app/Process.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/files/Settings.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/NullLogger.h"
#include "toolkit/log/RunLog.h"
#include "toolkit/regExp/Pattern.h"
#include "toolkit/regExp/RegExp.h"

#ifdef BENCH_SPDLOG
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#endif
#ifdef BENCH_QT
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_POCO
#include <Poco/AutoPtr.h>
#include <Poco/FileChannel.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/PatternFormatter.h>
#include <Poco/Pipe.h>
#include <Poco/PipeStream.h>
#include <Poco/Process.h>
#include <Poco/StreamCopier.h>
#endif
#ifdef BENCH_RE2
#include <re2/re2.h>
#endif
#ifdef BENCH_BOOST_REGEX
#include <boost/regex.hpp>
#endif
#ifdef BENCH_SIMPLEINI
#define SI_NO_CONVERSION
#include <SimpleIni.h>
#endif

using namespace Toolkit;

namespace
{

// Registers a job, the time of which is what passes, in milliseconds.
template <class Work>
void Job(const std::string& name, Work work)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [work](benchmark::State& state) mutable
                                 {
                                     for (auto _ : state)
                                         work();
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

const char s_strPattern[] = R"((\w+)@(\w+)\.com)";

// Lines of a log, every tenth of which has an address.
const std::vector<std::string>& Lines()
{
    static const std::vector<std::string> s_vecLines = []
    {
        std::vector<std::string> lines;
        for (std::size_t i = 0; i < ToolkitBench::Scaled(100000); ++i)
            lines.push_back("2026-03-02 14:05:09 worker " + std::to_string(i % 7) + " took message " +
                            std::to_string(i) +
                            (i % 10 == 0 ? " from somebody@example.com" : " from nobody in particular"));
        return lines;
    }();
    return s_vecLines;
}

// Compiles with `compile()` once and counts the lines in which `search(compiled, line)` finds something.
template <class Compile, class Search>
void AddSearch(const std::string& whose, Compile compile, Search search)
{
    Job("JobSearch/" + whose,
        [compile, search]
        {
            const auto compiled = compile();
            std::size_t found = 0;
            for (const std::string& line : Lines())
                found += search(compiled, line) ? 1U : 0U;
            benchmark::DoNotOptimize(found);
        });
}

void AddBareSearch()
{
    struct Bare
    {
        std::shared_ptr<pcre2_code> code;
        std::shared_ptr<pcre2_match_data> data;
    };
    AddSearch(
        "limit",
        []
        {
            const std::shared_ptr<pcre2_code> code = CompileBare(s_strPattern);
            return Bare{
                code, std::shared_ptr<pcre2_match_data>(
                          pcre2_match_data_create_from_pattern(code.get(), nullptr), &pcre2_match_data_free)};
        },
        [](const Bare& bare, const std::string& line)
        {
            return pcre2_match(bare.code.get(), reinterpret_cast<PCRE2_SPTR>(line.data()), line.size(), 0, 0,
                               bare.data.get(), nullptr) > 0;
        });
}

void AddSearches()
{
    AddSearch(
        "Toolkit", [] { return Pattern::Compile(s_strPattern).value(); },
        [](const Pattern& pattern, const std::string& line) { return bool(pattern.Find(line)); });
    Job("JobSearchClassic/Toolkit",
        []
        {
            const RegExp expression(TString<char>(s_strPattern), RegExpOptions::Default);
            std::size_t found = 0;
            for (const std::string& line : Lines())
                found += expression.IsMatch(TString<char>(line)) ? 1U : 0U;
            benchmark::DoNotOptimize(found);
        });
    AddBareSearch();
    AddSearch(
        "std", [] { return std::regex(s_strPattern, std::regex::optimize); },
        [](const std::regex& regex, const std::string& line) { return std::regex_search(line, regex); });
#ifdef BENCH_RE2
    AddSearch(
        "RE2", [] { return std::make_shared<RE2>(s_strPattern); },
        [](const auto& regex, const std::string& line) { return RE2::PartialMatch(line, *regex); });
#endif
#ifdef BENCH_BOOST_REGEX
    AddSearch(
        "Boost", [] { return boost::regex(s_strPattern, boost::regex::optimize); },
        [](const boost::regex& regex, const std::string& line) { return boost::regex_search(line, regex); });
#endif
#ifdef BENCH_GLIB
    AddSearch(
        "GLib",
        []
        {
            return std::shared_ptr<GRegex>(
                g_regex_new(s_strPattern, G_REGEX_OPTIMIZE, GRegexMatchFlags(0), nullptr), &g_regex_unref);
        },
        [](const auto& regex, const std::string& line)
        { return g_regex_match(regex.get(), line.c_str(), GRegexMatchFlags(0), nullptr) != 0; });
#endif
#ifdef BENCH_QT
    std::vector<QString> lines;
    for (const std::string& line : Lines())
        lines.push_back(QString::fromStdString(line));
    Job("JobSearch/Qt",
        [lines]
        {
            const QRegularExpression regex(s_strPattern);
            std::size_t found = 0;
            for (const QString& line : lines)
                found += regex.match(line).hasMatch() ? 1U : 0U;
            benchmark::DoNotOptimize(found);
        });
#endif
}

const std::size_t s_uThreads = 4;

// A million lines from four threads: `open()` returns the function that logs a line of that number, and one
// that returns when all of them are in the file.
template <class Open>
void AddLog(const std::string& name, Open open)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [open](benchmark::State& state)
                                 {
                                     const std::size_t each = ToolkitBench::Scaled(1000000) / s_uThreads;
                                     for (auto _ : state)
                                     {
                                         const auto [log, finish] = open();
                                         state.SetIterationTime(ToolkitBench::SecondsOfThreads(
                                             s_uThreads,
                                             [each, &log = log](std::size_t)
                                             {
                                                 for (std::size_t i = 0; i < each; ++i)
                                                     log(i);
                                             },
                                             finish));
                                         Log::Install({});
                                     }
                                 })
        ->Iterations(1)
        ->Repetitions(ToolkitBench::IsBrief() ? 2 : 3)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

auto OpenRunLog(const RunLogOptions& options)
{
    const std::shared_ptr<RunLog> log =
        RunLog::Open(RunLogOptions(options).Folder(ToolkitBench::Folder() / "runs").Keep(2).MaxSize(64 << 20))
            .value();
    Log::Install({log});
    return std::make_pair([](std::size_t i) { TOOLKIT_LOG(LogSeverity::Info) << "message number " << i; },
                          [log] { log->Flush(); });
}

// A file logger says nothing when its queue is empty; its file says it.
void WaitForLastLine(const std::string& path)
{
    for (int i = 0; i < 60000; ++i)
    {
        std::ifstream file(path, std::ios::binary | std::ios::ate);
        const auto size = file.tellg();
        std::string tail(64, '\0');
        if (size > 64 && file.seekg(size - std::streamoff(64)).read(&tail[0], 64) &&
            tail.find("the last line") != tail.npos)
            return;
        usleep(1000);
    }
}

auto OpenFileLogger()
{
    const std::string name = "toolkit-bench-everyday-" + std::to_string(getpid());
    const std::string path = "/tmp/" + name + ".vxlog";
    const auto logger = std::shared_ptr<void>(nullptr,
                                              [path](void*)
                                              {
                                                  ILogger::SetLogger(smart_ptr<ILogger>(new NullLogger));
                                                  unlink(path.c_str());
                                              });
    ILogger::SetLogger(smart_ptr<ILogger>(new FileLogger(
        LogSeverity::Verbose, TString<wchar_t>(std::wstring(name.begin(), name.end())), 1U << 30)));
    return std::make_pair([logger](std::size_t i)
                          { TOOLKIT_LOG(LogSeverity::Info) << "message number " << i; },
                          [path]
                          {
                              TOOLKIT_LOG(LogSeverity::Info) << "the last line";
                              WaitForLastLine(path);
                          });
}

#ifdef BENCH_SPDLOG
const char s_strSpdlogLine[] = "%Y-%m-%dT%H:%M:%S.%e%z %l %t %! %v";

auto OpenSpdlog()
{
    const auto logger =
        std::make_shared<spdlog::logger>("log", std::make_shared<spdlog::sinks::basic_file_sink_mt>(
                                                    (ToolkitBench::Folder() / "spdlog").string(), true));
    logger->set_pattern(s_strSpdlogLine);
    logger->flush_on(spdlog::level::trace);
    return std::make_pair([logger](std::size_t i) { SPDLOG_LOGGER_INFO(logger, "message number {}", i); },
                          [] {});
}

// With the queue of its documentation, which makes threads wait when it is full.
auto OpenAsyncSpdlog()
{
    const auto pool = std::make_shared<std::shared_ptr<spdlog::details::thread_pool>>(
        std::make_shared<spdlog::details::thread_pool>(8192, 1));
    const auto logger =
        std::make_shared<spdlog::async_logger>("log",
                                               std::make_shared<spdlog::sinks::basic_file_sink_mt>(
                                                   (ToolkitBench::Folder() / "async").string(), true),
                                               *pool);
    logger->set_pattern(s_strSpdlogLine);
    return std::make_pair([logger](std::size_t i) { SPDLOG_LOGGER_INFO(logger, "message number {}", i); },
                          [logger, pool]
                          {
                              logger->flush();
                              pool->reset();
                          });
}
#endif

#ifdef BENCH_POCO
auto OpenPoco()
{
    const Poco::AutoPtr<Poco::FileChannel> file(
        new Poco::FileChannel((ToolkitBench::Folder() / "poco").string()));
    const Poco::AutoPtr<Poco::PatternFormatter> format(
        new Poco::PatternFormatter("%Y-%m-%dT%H:%M:%S.%i%z %p %I %s %t"));
    const Poco::AutoPtr<Poco::FormattingChannel> channel(new Poco::FormattingChannel(format, file));
    Poco::Logger* const logger = &Poco::Logger::get("everyday");
    logger->setChannel(channel);
    return std::make_pair([logger](std::size_t i) { logger->information("message number %z", i); }, [] {});
}
#endif

void AddLogs()
{
    AddLog("JobLog/Toolkit", [] { return OpenRunLog(RunLogOptions("everyday")); });
    AddLog("JobLogQueued/Toolkit", [] { return OpenRunLog(RunLogOptions("queued").Background(512 << 20)); });
    AddLog("JobLogClassic/Toolkit", &OpenFileLogger);
#ifdef BENCH_SPDLOG
    AddLog("JobLog/spdlog", &OpenSpdlog);
    AddLog("JobLogQueued/spdlog", &OpenAsyncSpdlog);
#endif
#ifdef BENCH_POCO
    AddLog("JobLog/POCO", &OpenPoco);
#endif
}

std::string SettingsFile(const std::string& whose)
{
    const std::string path = (ToolkitBench::Folder() / (whose + ".ini")).string();
    std::ofstream file(path);
    file << "; settings of an application\n";
    for (int section = 0; section < 10; ++section)
    {
        file << "\n[section" << section << "]\n";
        for (int key = 0; key < 10; ++key)
            file << "key" << key << " = value " << key << "\n";
    }
    return path;
}

// Loads a hundred keys, changes one and saves them.
void AddSettings()
{
    Job("JobSettings/Toolkit",
        [path = SettingsFile("toolkit"), value = 0]() mutable
        {
            Settings settings = Settings::Load(path).value();
            settings.Set("section5", "key5", ++value).value();
            settings.Save().value();
        });
#ifdef BENCH_GLIB
    Job("JobSettings/GLib",
        [path = SettingsFile("glib"), value = 0]() mutable
        {
            GKeyFile* const file = g_key_file_new();
            g_key_file_load_from_file(file, path.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr);
            g_key_file_set_integer(file, "section5", "key5", ++value);
            g_key_file_save_to_file(file, path.c_str(), nullptr);
            g_key_file_free(file);
        });
#endif
#ifdef BENCH_QT
    Job("JobSettings/Qt",
        [path = QString::fromStdString(SettingsFile("qt")), value = 0]() mutable
        {
            QSettings settings(path, QSettings::IniFormat);
            settings.setValue("section5/key5", ++value);
            settings.sync();
        });
#endif
#ifdef BENCH_SIMPLEINI
    Job("JobSettings/SimpleIni",
        [path = SettingsFile("simpleini"), value = 0]() mutable
        {
            CSimpleIniA file(true, false, false);
            file.LoadFile(path.c_str());
            file.SetLongValue("section5", "key5", ++value);
            file.SaveFile(path.c_str(), false);
        });
#endif
}

// Runs a program of PATH and takes what it writes and its exit code. The C library has a shell start it.
void AddRuns()
{
    Job("JobRun/Toolkit",
        []
        {
            const Result<ProcessResult> result = Process::Run({"uname", "-a"});
            benchmark::DoNotOptimize(result->Output().size() + static_cast<std::size_t>(result->ExitCode()));
        });
    Job("JobRun/libc",
        []
        {
            std::FILE* const output = popen("exec uname -a", "re");
            char text[4096];
            benchmark::DoNotOptimize(std::fread(text, 1, sizeof text, output));
            benchmark::DoNotOptimize(pclose(output));
        });
#ifdef BENCH_GLIB
    Job("JobRun/GLib",
        []
        {
            char program[] = "uname";
            char option[] = "-a";
            char* vector[] = {program, option, nullptr};
            gint status = 0;
            char* output = nullptr;
            char* errors = nullptr;
            g_spawn_sync(nullptr, vector, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, &output, &errors,
                         &status, nullptr);
            g_free(output);
            g_free(errors);
        });
#endif
#ifdef BENCH_QT
    Job("JobRun/Qt",
        []
        {
            QProcess process;
            process.start("uname", QStringList{"-a"});
            process.waitForFinished();
            benchmark::DoNotOptimize(process.readAllStandardOutput().size() + process.exitCode());
        });
#endif
#ifdef BENCH_POCO
    Job("JobRun/POCO",
        []
        {
            Poco::Pipe output;
            const Poco::ProcessHandle process =
                Poco::Process::launch("uname", Poco::Process::Args{"-a"}, nullptr, &output, nullptr);
            Poco::PipeInputStream stream(output);
            std::string text;
            Poco::StreamCopier::copyToString(stream, text);
            benchmark::DoNotOptimize(process.wait());
        });
#endif
}

} // namespace

void ToolkitBench::Register()
{
    static const ToolkitSession s_session;
    AddSearches();
    AddLogs();
    AddSettings();
    AddRuns();
}
