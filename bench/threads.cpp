// SPDX-License-Identifier: MIT
// What one operation costs while 1, 2, 4, 8 and 16 threads, or processes, do it at once; the rows are in
// bench/threads.txt.
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "bench/BareCode.h"
#include "bench/Bench.h"
#include "bench/Threads.h"
#include "toolkit/app/Instance.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/files/Settings.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/NullLogger.h"
#include "toolkit/log/RunLog.h"
#include "toolkit/regExp/Pattern.h"
#include "toolkit/threading/Task.h"

#ifdef BENCH_SPDLOG
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_RE2
#include <re2/re2.h>
#endif

using namespace Toolkit;

namespace
{

const std::size_t s_uMost = 16;
const char s_strMessage[] = "a message of the usual length, more or less";

// How many threads there are at a time; where nothing is measured well, two numbers are enough.
std::vector<std::size_t> Counts()
{
    if (ToolkitBench::IsBrief())
        return {1, 4};
    return {1, 2, 4, 8, s_uMost};
}

// What the threads share, made anew for each measurement, and what one of them does `times` times.
using Loop = std::function<void(std::size_t times)>;

// Registers `make()`, which returns the loop, as "threads:<operation>/<whose>/<threads>": `operations` in
// all, whatever the number of threads, and the time of one.
template <class Make>
void Add(const std::string& operation, const std::string& whose, std::size_t operations, Make make)
{
    for (const std::size_t threads : Counts())
        benchmark::RegisterBenchmark(
            ("threads:" + operation + "/" + whose + "/" + std::to_string(threads)).c_str(),
            [=](benchmark::State& state)
            {
                for (auto _ : state)
                {
                    const Loop loop = make();
                    const std::size_t each = operations / threads;
                    const double seconds =
                        ToolkitBench::SecondsOfThreads(threads, [&](std::size_t) { loop(each); });
                    state.SetIterationTime(seconds / static_cast<double>(each * threads));
                }
            })
            ->Iterations(1)
            ->UseManualTime();
}

// The loop of a single operation.
template <class Work>
Loop Repeated(Work work)
{
    return [work](std::size_t times)
    {
        for (std::size_t i = 0; i < times; ++i)
            work();
    };
}

// Runs `end` when the last copy is gone.
std::shared_ptr<void> AtEnd(std::function<void()> end)
{
    return std::shared_ptr<void>(nullptr, [end](void*) { end(); });
}

// Each line is in the file when the statement ends.
void AddRunLog()
{
    const std::size_t lines = ToolkitBench::Scaled(32000);
    Add("RunLog", "Toolkit", lines,
        []
        {
            Log::Install(
                {RunLog::Open(RunLogOptions("threads").Folder(ToolkitBench::Folder() / "runs").Keep(2))
                     .value()});
            return Repeated([end = AtEnd([] { Log::Install({}); })]
                            { TOOLKIT_LOG(LogSeverity::Info) << s_strMessage; });
        });
    Add("RunLog", "limit", lines,
        []
        {
            const int file = open((ToolkitBench::Folder() / "bare").c_str(),
                                  O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
            return Repeated(
                [file, end = AtEnd([file] { close(file); }), mutex = std::make_shared<std::mutex>(),
                 line = "2026-03-02T14:05:09.250+01:00 info 12345 operator() " + std::string(s_strMessage) +
                        "\n"]
                {
                    const std::lock_guard<std::mutex> lock(*mutex);
                    benchmark::DoNotOptimize(write(file, line.data(), line.size()));
                });
        });
#ifdef BENCH_SPDLOG
    Add("RunLog", "spdlog", lines,
        []
        {
            const auto logger = std::make_shared<spdlog::logger>(
                "threads", std::make_shared<spdlog::sinks::basic_file_sink_mt>(
                               (ToolkitBench::Folder() / "spdlog").string(), true));
            logger->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z %l %t %! %v");
            logger->flush_on(spdlog::level::trace);
            return Repeated([logger] { SPDLOG_LOGGER_INFO(logger, s_strMessage); });
        });
#endif
}

// The time of the threads that log alone; another one writes the file.
void AddClassicLine()
{
    const std::size_t lines = ToolkitBench::Scaled(16000);
    static int s_iFiles = 0;
    Add("ClassicLine", "Toolkit", lines,
        []
        {
            const std::string name =
                "toolkit-bench-" + std::to_string(getpid()) + "-" + std::to_string(++s_iFiles);
            ILogger::SetLogger(smart_ptr<ILogger>(new FileLogger(
                LogSeverity::Verbose, TString<wchar_t>(std::wstring(name.begin(), name.end())), 1U << 30)));
            const auto end = [name]
            {
                ILogger::SetLogger(smart_ptr<ILogger>(new NullLogger));
                unlink(("/tmp/" + name + ".vxlog").c_str());
            };
            return Repeated([end = AtEnd(end)] { TOOLKIT_LOG(LogSeverity::Info) << s_strMessage; });
        });
#ifdef BENCH_SPDLOG
    Add("ClassicLine", "spdlog", lines,
        []
        {
            const auto pool = std::make_shared<spdlog::details::thread_pool>(32768, 1);
            const auto logger = std::make_shared<spdlog::async_logger>(
                "threads",
                std::make_shared<spdlog::sinks::basic_file_sink_mt>(
                    (ToolkitBench::Folder() / "queued").string(), true),
                pool);
            return Repeated([pool, logger] { logger->info(s_strMessage); });
        });
#endif
}

const char s_strPattern[] = "(\\w+)@(\\w+)\\.com";
const std::string s_strSubject = "write to somebody@example.com or call";

// One object, searched by all threads.
void AddFind()
{
    const std::size_t times = ToolkitBench::Scaled(160000);
    Add("Find", "Toolkit", times,
        []
        {
            return Repeated([pattern = Pattern::Compile(s_strPattern).value()]
                            { benchmark::DoNotOptimize(pattern.Find(s_strSubject).Position()); });
        });
    Add("Find", "limit", times,
        []
        {
            const std::shared_ptr<pcre2_code> code = CompileBare(s_strPattern);
            return [code](std::size_t count)
            {
                const std::unique_ptr<pcre2_match_data, void (*)(pcre2_match_data*)> data(
                    pcre2_match_data_create_from_pattern(code.get(), nullptr), &pcre2_match_data_free);
                for (std::size_t i = 0; i < count; ++i)
                    benchmark::DoNotOptimize(pcre2_match(code.get(),
                                                         reinterpret_cast<PCRE2_SPTR>(s_strSubject.data()),
                                                         s_strSubject.size(), 0, 0, data.get(), nullptr));
            };
        });
#ifdef BENCH_RE2
    Add("Find", "RE2", times,
        []
        {
            return Repeated([regex = std::make_shared<RE2>(s_strPattern)]
                            { benchmark::DoNotOptimize(RE2::PartialMatch(s_strSubject, *regex)); });
        });
#endif
#ifdef BENCH_GLIB
    Add("Find", "GLib", times,
        []
        {
            const std::shared_ptr<GRegex> regex(
                g_regex_new(s_strPattern, G_REGEX_OPTIMIZE, GRegexMatchFlags(0), nullptr), &g_regex_unref);
            return Repeated(
                [regex]
                {
                    benchmark::DoNotOptimize(
                        g_regex_match(regex.get(), s_strSubject.c_str(), GRegexMatchFlags(0), nullptr));
                });
        });
#endif
}

// One object, read by all threads.
void AddGet()
{
    const std::size_t times = ToolkitBench::Scaled(320000);
    const std::filesystem::path path = ToolkitBench::Folder() / "threads.ini";
    WriteFile(path, "[mail]\nname = nobody\npreview = 80\n").value();
    Add("Get", "Toolkit", times,
        [path]
        {
            return Repeated([settings = std::make_shared<Settings>(*Settings::Load(path))]
                            { benchmark::DoNotOptimize(settings->Get("mail", "name", "").data()); });
        });
    Add("Get", "limit", times,
        []
        {
            using Values = std::unordered_map<std::string, std::string>;
            return Repeated(
                [mutex = std::make_shared<std::mutex>(),
                 values = std::make_shared<Values>(Values{{"mail/name", "nobody"}, {"mail/preview", "80"}})]
                {
                    const std::lock_guard<std::mutex> lock(*mutex);
                    benchmark::DoNotOptimize(std::string(values->find("mail/name")->second));
                });
        });
#ifdef BENCH_GLIB
    Add("Get", "GLib", times,
        [path]
        {
            const std::shared_ptr<GKeyFile> file(g_key_file_new(), &g_key_file_free);
            g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr);
            const std::shared_ptr<GMutex> mutex(new GMutex, [](GMutex* held) { delete held; });
            g_mutex_init(mutex.get());
            return Repeated(
                [file, mutex]
                {
                    g_mutex_lock(mutex.get());
                    g_free(g_key_file_get_value(file.get(), "mail", "name", nullptr));
                    g_mutex_unlock(mutex.get());
                });
        });
#endif
}

// Each thread starts one task after the other and waits for its result.
void AddTask()
{
    const std::size_t times = ToolkitBench::Scaled(1600);
    Add("Task", "Toolkit", times,
        []
        {
            return Repeated(
                [] { benchmark::DoNotOptimize(Task<int>::Start([](TaskContext&) { return 7; }).Get()); });
        });
    Add("Task", "limit", times,
        [] { return Repeated([] { std::thread([] { benchmark::DoNotOptimize(getpid()); }).join(); }); });
    Add("Task", "std", times,
        []
        {
            return Repeated(
                [] { benchmark::DoNotOptimize(std::async(std::launch::async, [] { return 7; }).get()); });
        });
#ifdef BENCH_GLIB
    Add("Task", "GLib", times,
        []
        {
            return Repeated(
                []
                {
                    benchmark::DoNotOptimize(g_thread_join(g_thread_new(
                        "task", +[](gpointer given) { return given; }, nullptr)));
                });
        });
#endif
}

// A child process that ends with this one. Forked before any thread is started.
template <class Run>
void Fork(Run run)
{
    const pid_t parent = getpid();
    if (fork() != 0)
        return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent)
        run();
    _exit(0);
}

struct Ends
{
    Ends()
    {
        int both[2] = {-1, -1};
        benchmark::DoNotOptimize(pipe(both));
        reader = both[0];
        writer = both[1];
    }
    int reader = -1;
    int writer = -1;
};

// Processes that ask a server as often as they are told to, one after the other in each.
class Askers
{
public:
    // `makeAsk()` is called in each of them.
    template <class MakeAsk>
    explicit Askers(MakeAsk makeAsk)
    {
        for (Ends& told : m_told)
            Fork(
                [&]
                {
                    const std::function<void()> ask = makeAsk();
                    std::size_t times = 0;
                    while (read(told.reader, &times, sizeof times) == sizeof times)
                    {
                        for (std::size_t i = 0; i < times; ++i)
                            ask();
                        benchmark::DoNotOptimize(write(m_done.writer, "!", 1));
                    }
                });
    }

    // The seconds until that many of them have asked so often; 0 when one of them fails.
    double Ask(std::size_t askers, std::size_t times)
    {
        const auto start = std::chrono::steady_clock::now();
        for (std::size_t i = 0; i < askers; ++i)
            benchmark::DoNotOptimize(write(m_told[i].writer, &times, sizeof times));
        for (std::size_t i = 0; i < askers; ++i)
        {
            pollfd done = {m_done.reader, POLLIN, 0};
            char said = 0;
            if (poll(&done, 1, 60000) != 1 || read(m_done.reader, &said, 1) != 1)
                return 0;
        }
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    Ends m_told[s_uMost];
    Ends m_done;
};

void AddAskers(const std::string& whose, const std::shared_ptr<Askers>& askers)
{
    const std::size_t times = ToolkitBench::Scaled(1600);
    for (const std::size_t count : Counts())
        benchmark::RegisterBenchmark(("threads:Ask/" + whose + "/" + std::to_string(count)).c_str(),
                                     [=](benchmark::State& state)
                                     {
                                         for (auto _ : state)
                                         {
                                             const std::size_t each = times / count;
                                             const double seconds = askers->Ask(count, each);
                                             if (seconds == 0)
                                                 state.SkipWithError("no answer");
                                             state.SetIterationTime(seconds /
                                                                    static_cast<double>(each * count));
                                         }
                                     })
            ->Iterations(1)
            ->UseManualTime();
}

int ConnectedSocket(const sockaddr_un& address)
{
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        _exit(1);
    return client;
}

// A command of that many bytes and its answer through a socket, one connection after the other.
std::shared_ptr<Askers> BareAskers()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    (ToolkitBench::Folder() / "bare.ask").string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 128) != 0)
        return nullptr;
    Fork(
        [listener]
        {
            for (;;)
            {
                const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
                char text[64];
                const ssize_t count = read(client, text, sizeof text);
                benchmark::DoNotOptimize(write(client, text, static_cast<std::size_t>(count)));
                close(client);
            }
        });
    return std::make_shared<Askers>(
        [address]
        {
            return [address]
            {
                const int client = ConnectedSocket(address);
                char text[64] = "open /home/user/document.txt";
                benchmark::DoNotOptimize(write(client, text, sizeof text));
                benchmark::DoNotOptimize(read(client, text, sizeof text));
                close(client);
            };
        });
}

std::shared_ptr<Askers> ToolkitAskers()
{
    const std::string key = "org.example.bench." + std::to_string(getpid());
    Ends serving;
    Fork(
        [&]
        {
            Result<Instance> instance = Instance::Claim(key);
            instance->Serve([](const Instance::Command& command)
                            { return Instance::Answer(0, command.Arguments().back()); });
            benchmark::DoNotOptimize(write(serving.writer, "!", 1));
            for (;;)
                pause();
        });
    char ready = 0;
    benchmark::DoNotOptimize(read(serving.reader, &ready, 1));
    return std::make_shared<Askers>(
        [key]
        {
            const auto instance = std::make_shared<Instance>(Instance::Claim(key).value());
            return [instance]
            {
                if (!instance->Ask({"open", "/home/user/document.txt"}))
                    _exit(1);
            };
        });
}

} // namespace

void ToolkitBench::Register()
{
    const auto toolkit = ToolkitAskers();
    const auto bare = BareAskers();
    static const ToolkitSession s_session;
    AddRunLog();
    AddClassicLine();
    AddFind();
    AddGet();
    AddTask();
    AddAskers("Toolkit", toolkit);
    if (bare != nullptr)
        AddAskers("limit", bare);
}
