// SPDX-License-Identifier: MIT
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <sys/times.h>
#include <unistd.h>

#include "bench/Bench.h"
#include "bench/Sink.h"
#include "toolkit/Toolkit.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/RunLog.h"

#ifdef BENCH_SPDLOG
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>
#endif
#ifdef BENCH_QT
#include <QFile>
#include <QLoggingCategory>
#endif
#ifdef BENCH_GLIB
#define G_LOG_USE_STRUCTURED 1
#include <glib.h>
#endif
#ifdef BENCH_POCO
#include <Poco/Logger.h>
#endif

using namespace Toolkit;
using ToolkitBench::Sink;

namespace
{

void Install(ILogger* sink)
{
    ILogger::SetLogger(smart_ptr<ILogger>(sink));
}

void Pieces(LogSeverity severity, int value)
{
    *ILogger::s_pInstance->get() << SetSeverity(severity) << static_cast<unsigned int>(severity) << L" "
                                 << GetTickCount() << L" : " << 42 << L" : " << "Function" << L" : " << value
                                 << L"\n";
}

// Registers `work` with a sink installed that only the benchmark uses.
template <class Work>
void WithSink(const char* name, LogSeverity threshold, Work work)
{
    benchmark::RegisterBenchmark(name,
                                 [threshold, work](benchmark::State& state) mutable
                                 {
                                     Install(new Sink(threshold));
                                     ToolkitBench::Measure(state, work);
                                     Install(new NullLogger);
                                 });
}

void RegisterDropped()
{
    WithSink("DroppedLine/Toolkit", LogSeverity::Error,
             [value = 7] { TOOLKIT_LOG(LogSeverity::Verbose) << "value " << value; });
    WithSink("DroppedPieces/Toolkit", LogSeverity::Error, [] { Pieces(LogSeverity::Verbose, 7); });
    ToolkitBench::Operation("DroppedPieces/limit", [] { benchmark::DoNotOptimize(times(nullptr)); });
    ToolkitBench::Operation("DroppedLine/limit",
                            [threshold = 1]() mutable
                            {
                                benchmark::DoNotOptimize(threshold);
                                if (threshold > 3)
                                    std::abort();
                            });
#ifdef BENCH_SPDLOG
    const auto logger =
        std::make_shared<spdlog::logger>("dropped", std::make_shared<spdlog::sinks::null_sink_st>());
    logger->set_level(spdlog::level::critical);
    ToolkitBench::Operation("DroppedLine/spdlog", [logger] { logger->debug("value {}", 7); });
#endif
#ifdef BENCH_QT
    static const QLoggingCategory s_category("bench.dropped", QtCriticalMsg);
    ToolkitBench::Operation("DroppedLine/Qt", [] { qCDebug(s_category, "value %d", 7); });
#endif
#ifdef BENCH_GLIB
    ToolkitBench::Operation("DroppedLine/GLib", [] { g_debug("value %d", 7); });
#endif
#ifdef BENCH_POCO
    Poco::Logger* const poco = &Poco::Logger::get("dropped");
    poco->setLevel(Poco::Message::PRIO_CRITICAL);
    ToolkitBench::Operation("DroppedLine/POCO", [poco] { poco->debug("value %d", 7); });
#endif
}

void RegisterWritten()
{
    WithSink("WrittenLine/Toolkit", LogSeverity::Verbose,
             [value = 7] { TOOLKIT_LOG(LogSeverity::Info) << "value " << value; });
    WithSink("WrittenPieces/Toolkit", LogSeverity::Verbose, [] { Pieces(LogSeverity::Info, 7); });
#ifdef BENCH_SPDLOG
    class Formatted : public spdlog::sinks::base_sink<spdlog::details::null_mutex>
    {
        void sink_it_(const spdlog::details::log_msg& message) override
        {
            spdlog::memory_buf_t text;
            formatter_->format(message, text);
            benchmark::DoNotOptimize(text.data());
        }
        void flush_() override {}
    };
    for (const char* name : {"WrittenLine/spdlog", "WrittenPieces/spdlog"})
        ToolkitBench::Operation(
            name, [logger = std::make_shared<spdlog::logger>("written", std::make_shared<Formatted>())]
            { logger->info("value {}", 7); });
#endif
}

void RegisterProducer()
{
    benchmark::RegisterBenchmark(
        "Producer/Toolkit",
        [](benchmark::State& state)
        {
            const std::string name = "toolkit-bench-producer-" + std::to_string(getpid());
            Install(new FileLogger(LogSeverity::Verbose,
                                   TString<wchar_t>(std::wstring(name.begin(), name.end())), 1U << 30));
            const auto work = [] { TOOLKIT_LOG(LogSeverity::Info) << "value " << 7; };
            ToolkitBench::Measure(state, work);
            Install(new NullLogger);
            unlink(("/tmp/" + name + ".vxlog").c_str());
        })
        ->Iterations(20000);
#ifdef BENCH_SPDLOG
    benchmark::RegisterBenchmark("Producer/spdlog",
                                 [](benchmark::State& state)
                                 {
                                     const auto pool =
                                         std::make_shared<spdlog::details::thread_pool>(32768, 1);
                                     const auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(
                                         (ToolkitBench::Folder() / "producer").string(), true);
                                     const auto logger =
                                         std::make_shared<spdlog::async_logger>("producer", sink, pool);
                                     const auto work = [logger] { logger->info("value {}", 7); };
                                     ToolkitBench::Measure(state, work);
                                     logger->flush();
                                 })
        ->Iterations(20000);
#endif
#ifdef BENCH_QT
    // It knows no file: a handler writes the line to one at once, as programs with Qt do.
    benchmark::RegisterBenchmark(
        "Producer/Qt",
        [](benchmark::State& state)
        {
            static QFile* s_pFile;
            QFile file(QString::fromStdString((ToolkitBench::Folder() / "qt").string()));
            file.open(QIODevice::WriteOnly);
            s_pFile = &file;
            const auto before = qInstallMessageHandler(
                [](QtMsgType type, const QMessageLogContext& context, const QString& message)
                {
                    s_pFile->write(qFormatLogMessage(type, context, message).toUtf8() + '\n');
                    s_pFile->flush();
                });
            const auto work = [] { qInfo("value %d", 7); };
            ToolkitBench::Measure(state, work);
            qInstallMessageHandler(before);
        })
        ->Iterations(20000);
#endif
}

const std::size_t s_uLines = 20000;
const char s_strLine[] = "2 123456789 : 42 : Function : a message of the usual length, more or less\n";

// What the worker does with a full queue, beside the same number of writes.
void RegisterDrain()
{
    benchmark::RegisterBenchmark(
        "Drain/Toolkit",
        [](benchmark::State& state)
        {
            const std::vector<TString<wchar_t>> lines(
                s_uLines, std::wstring(s_strLine, s_strLine + sizeof(s_strLine) - 1));
            FFile file;
            std::FILE* const stream = std::fopen((ToolkitBench::Folder() / "drain").c_str(), "w");
            std::setvbuf(stream, nullptr, _IONBF, 0);
            file.Attach(stream);
            const auto work = [&]
            {
                file.Seek(0, true);
                for (const TString<wchar_t>& line : lines)
                {
                    file.Write(line);
                    file.Flush();
                }
            };
            ToolkitBench::Measure(state, work);
        })
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(
        "Drain/limit",
        [](benchmark::State& state)
        {
            const int file =
                open((ToolkitBench::Folder() / "drain").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            const auto work = [file]
            {
                lseek(file, 0, SEEK_SET);
                for (std::size_t i = 0; i < s_uLines; ++i)
                    benchmark::DoNotOptimize(write(file, s_strLine, sizeof(s_strLine) - 1));
            };
            ToolkitBench::Measure(state, work);
            close(file);
        })
        ->Unit(benchmark::kMillisecond);
#ifdef BENCH_SPDLOG
    benchmark::RegisterBenchmark("Drain/spdlog",
                                 [](benchmark::State& state)
                                 {
                                     const auto sink = std::make_shared<spdlog::sinks::basic_file_sink_st>(
                                         (ToolkitBench::Folder() / "spdlog").string(), true);
                                     spdlog::logger logger("drain", sink);
                                     logger.flush_on(spdlog::level::trace);
                                     const auto work = [&logger]
                                     {
                                         for (std::size_t i = 0; i < s_uLines; ++i)
                                             logger.info("a message of the usual length, more or less");
                                     };
                                     ToolkitBench::Measure(state, work);
                                 })
        ->Unit(benchmark::kMillisecond);
#endif
}

const std::size_t s_uMaxSize = 64 << 20;

std::shared_ptr<RunLog> InstallRunLog(RunLogOptions options)
{
    options.Folder(ToolkitBench::Folder() / "runs").Keep(2).MaxSize(s_uMaxSize);
    const std::shared_ptr<RunLog> log = RunLog::Open(options).value();
    Log::Install({log});
    return log;
}

// A line of new code that is in the file when the statement ends, beside the bare system call.
void RegisterRunLog()
{
    benchmark::RegisterBenchmark("RunLog/Toolkit",
                                 [](benchmark::State& state)
                                 {
                                     const auto log = InstallRunLog(RunLogOptions("line"));
                                     const auto work = [] {
                                         TOOLKIT_LOG(LogSeverity::Info)
                                             << "a message of the usual length, more or less";
                                     };
                                     ToolkitBench::Measure(state, work);
                                     Log::Install({});
                                 });
    benchmark::RegisterBenchmark("RunLog/limit",
                                 [](benchmark::State& state)
                                 {
                                     const std::string line =
                                         "2026-03-02T14:05:09.250+01:00 info 12345 operator() " +
                                         std::string("a message of the usual length, more or less\n");
                                     const int file = open((ToolkitBench::Folder() / "bare").c_str(),
                                                           O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
                                     std::size_t size = 0;
                                     const auto work = [&]
                                     {
                                         benchmark::DoNotOptimize(write(file, line.data(), line.size()));
                                         size += line.size();
                                         if (size > s_uMaxSize)
                                             size = static_cast<std::size_t>(ftruncate(file, 0));
                                     };
                                     ToolkitBench::Measure(state, work);
                                     close(file);
                                 });
}

// Logs so many lines, which another thread writes, and waits until the last of them is in the file: all of it
// is measured, or the time of the thread that logs alone. No line is dropped.
template <class LogLines, class WaitForTheLast>
void RegisterBackground(const std::string& whose, LogLines log, WaitForTheLast wait)
{
    const auto unit = benchmark::kMillisecond;
    benchmark::RegisterBenchmark(("RunLogBackground/" + whose).c_str(),
                                 [log, wait](benchmark::State& state)
                                 {
                                     const auto logger = log();
                                     const auto work = [&logger, &wait]
                                     {
                                         logger();
                                         wait();
                                     };
                                     ToolkitBench::Measure(state, work);
                                     Log::Install({});
                                 })
        ->UseRealTime()
        ->Unit(unit);
    benchmark::RegisterBenchmark(("RunLogProducer/" + whose).c_str(),
                                 [log, wait](benchmark::State& state)
                                 {
                                     const auto logger = log();
                                     for (auto _ : state)
                                     {
                                         logger();
                                         state.PauseTiming();
                                         wait();
                                         state.ResumeTiming();
                                     }
                                     Log::Install({});
                                 })
        ->Unit(unit);
}

#ifdef BENCH_SPDLOG
// Tells when all that was logged before a flush is in the file of the sink before it.
class Flushed : public spdlog::sinks::base_sink<std::mutex>
{
public:
    void Wait()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        m_change.wait(lock, [this] { return m_bFlushed; });
        m_bFlushed = false;
    }

private:
    void sink_it_(const spdlog::details::log_msg&) override {}
    void flush_() override
    {
        m_bFlushed = true;
        m_change.notify_all();
    }

    std::condition_variable m_change;
    bool m_bFlushed = false;
};

// An asynchronous logger of the same lines, in files of the same size, whose queue holds all of them.
struct RotatingSpdlog
{
    RotatingSpdlog()
    {
        m_flushed->set_level(spdlog::level::off);
        m_logger->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z %l %t %! %v");
    }

    const std::shared_ptr<spdlog::details::thread_pool> m_pool =
        std::make_shared<spdlog::details::thread_pool>(32768, 1);
    const std::shared_ptr<Flushed> m_flushed = std::make_shared<Flushed>();
    const std::shared_ptr<spdlog::async_logger> m_logger = std::make_shared<spdlog::async_logger>(
        "rotating",
        spdlog::sinks_init_list{std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
                                    (ToolkitBench::Folder() / "rotating").string(), s_uMaxSize, 2),
                                m_flushed},
        m_pool);
};
#endif

void RegisterRunLogBackground()
{
    const auto file = std::make_shared<std::shared_ptr<RunLog>>();
    RegisterBackground(
        "Toolkit",
        [file]
        {
            *file = InstallRunLog(RunLogOptions("queued").Background(64 << 20));
            return []
            {
                for (std::size_t i = 0; i < s_uLines; ++i)
                    TOOLKIT_LOG(LogSeverity::Info) << "value " << i;
            };
        },
        [file] { (*file)->Flush(); });
#ifdef BENCH_SPDLOG
    const auto peer = std::make_shared<std::unique_ptr<RotatingSpdlog>>();
    RegisterBackground(
        "spdlog",
        [peer]
        {
            *peer = std::make_unique<RotatingSpdlog>();
            return [logger = (*peer)->m_logger]
            {
                for (std::size_t i = 0; i < s_uLines; ++i)
                    SPDLOG_LOGGER_INFO(logger, "value {}", i);
            };
        },
        [peer]
        {
            (*peer)->m_logger->flush();
            (*peer)->m_flushed->Wait();
        });
#endif
}

} // namespace

void ToolkitBench::Register()
{
    static const ToolkitSession s_session;
    RegisterDropped();
    RegisterWritten();
    RegisterProducer();
    RegisterDrain();
    RegisterRunLog();
    RegisterRunLogBackground();
}
