// SPDX-License-Identifier: MIT
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/Bench.h"
#include "toolkit/app/Process.h"
#include "toolkit/app/SystemInfo.h"

#ifdef BENCH_QT
#include <QProcess>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_POCO
#include <Poco/Process.h>
#endif

namespace
{

// Makes this process use that much memory more than it needs.
void UseMemory(std::size_t bytes)
{
    static std::size_t s_uUsed = 0;
    static std::unique_ptr<char[]> s_pMemory;
    if (bytes == s_uUsed)
        return;
    s_pMemory.reset();
    s_pMemory.reset(new char[bytes]);
    std::memset(s_pMemory.get(), 1, bytes);
    s_uUsed = bytes;
}

// Registers `work` with that much memory in use by this process.
template <class Work>
void WithMemory(const std::string& name, std::size_t bytes, Work work)
{
    ToolkitBench::WholeOperation(name,
                                 [bytes, work]
                                 {
                                     UseMemory(bytes);
                                     work();
                                 });
}

void Spawn()
{
    char program[] = "/bin/true";
    char argument[] = "argument";
    char* const vector[] = {program, argument, nullptr};
    pid_t child = -1;
    int status = 0;
    if (posix_spawn(&child, program, nullptr, nullptr, vector, environ) == 0)
        waitpid(child, &status, 0);
    benchmark::DoNotOptimize(status);
}

// The raw calls that Process makes, by posix_spawn: three pipes, everything the program writes, its end.
class RawProcess
{
public:
    explicit RawProcess(char* const* vector)
    {
        int ends[3][2];
        for (int(&pipe)[2] : ends)
            benchmark::DoNotOptimize(pipe2(pipe, O_CLOEXEC));
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[0][0], 0);
        posix_spawn_file_actions_adddup2(&actions, ends[1][1], 1);
        posix_spawn_file_actions_adddup2(&actions, ends[2][1], 2);
        posix_spawnp(&m_child, vector[0], &actions, nullptr, vector, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[0][0]);
        close(ends[1][1]);
        close(ends[2][1]);
        m_iInput = ends[0][1];
        m_iOutput = ends[1][0];
        m_iErrors = ends[2][0];
        fcntl(m_iInput, F_SETFL, O_NONBLOCK);
    }
    ~RawProcess() { waitpid(m_child, nullptr, 0); }

    // Everything that the program writes while it is fed.
    std::string Talk(std::string_view input)
    {
        std::string output;
        char buffer[64 * 1024];
        pollfd polled[] = {{m_iInput, POLLOUT, 0}, {m_iOutput, POLLIN, 0}, {m_iErrors, POLLIN, 0}};
        const auto end = [&polled](int number)
        {
            close(polled[number].fd);
            polled[number].fd = -1;
        };
        if (input.empty())
            end(0);
        while (polled[1].fd != -1 || polled[2].fd != -1)
        {
            poll(polled, 3, -1);
            if (const ssize_t count =
                    polled[0].revents != 0 ? write(m_iInput, input.data(), input.size()) : 0;
                count > 0)
                input.remove_prefix(static_cast<std::size_t>(count));
            if (input.empty() && polled[0].fd != -1)
                end(0);
            for (const int number : {1, 2})
                if (polled[number].revents != 0)
                {
                    const ssize_t count = read(polled[number].fd, buffer, sizeof buffer);
                    if (count > 0)
                        output.append(buffer, static_cast<std::size_t>(count));
                    else
                        end(number);
                }
        }
        return output;
    }

private:
    pid_t m_child = -1;
    int m_iInput = -1;
    int m_iOutput = -1;
    int m_iErrors = -1;
};

void RegisterRun(const std::string& operation, std::size_t bytes)
{
    WithMemory(operation + "/Toolkit", bytes,
               [] { benchmark::DoNotOptimize(Toolkit::Process::Run({"true"})->ExitCode()); });
    WithMemory(operation + "/limit", bytes,
               []
               {
                   char program[] = "true";
                   char* const vector[] = {program, nullptr};
                   benchmark::DoNotOptimize(RawProcess(vector).Talk(std::string_view()));
               });
#ifdef BENCH_QT
    WithMemory(operation + "/Qt", bytes,
               []
               {
                   QProcess process;
                   process.start("true", QStringList());
                   process.waitForFinished();
                   benchmark::DoNotOptimize(process.exitCode());
               });
#endif
#ifdef BENCH_GLIB
    WithMemory(operation + "/GLib", bytes,
               []
               {
                   char program[] = "true";
                   char* vector[] = {program, nullptr};
                   gint status = 0;
                   char* output = nullptr;
                   char* errors = nullptr;
                   g_spawn_sync(nullptr, vector, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, &output,
                                &errors, &status, nullptr);
                   g_free(output);
                   g_free(errors);
               });
#endif
}

void RegisterTalk()
{
    const auto input = std::make_shared<const std::string>(std::size_t{64} << 20, 'a');
    ToolkitBench::WholeOperation(
        "Talk64MiB/Toolkit", [options = Toolkit::ProcessOptions().Input(*input)]
        { benchmark::DoNotOptimize(Toolkit::Process::Run({"cat"}, options)->Output().size()); });
    ToolkitBench::WholeOperation("Talk64MiB/limit",
                                 [input]
                                 {
                                     char program[] = "cat";
                                     char* const vector[] = {program, nullptr};
                                     benchmark::DoNotOptimize(RawProcess(vector).Talk(*input).size());
                                 });
}

void RegisterStart(const std::string& operation, std::size_t bytes)
{
    WithMemory(
        operation + "/Toolkit", bytes,
        [path = Toolkit::TString<wchar_t>(L"/bin/true"), arguments = Toolkit::TString<wchar_t>(L"argument")]
        { benchmark::DoNotOptimize(Toolkit::SystemInfo::StartProcess(path, arguments, true)); });
    WithMemory(operation + "/limit", bytes, &Spawn);
#ifdef BENCH_QT
    WithMemory(operation + "/Qt", bytes,
               [] { benchmark::DoNotOptimize(QProcess::execute("/bin/true", {"argument"})); });
#endif
#ifdef BENCH_GLIB
    WithMemory(operation + "/GLib", bytes,
               []
               {
                   char program[] = "/bin/true";
                   char argument[] = "argument";
                   char* vector[] = {program, argument, nullptr};
                   gint status = 0;
                   g_spawn_sync(nullptr, vector, nullptr, G_SPAWN_LEAVE_DESCRIPTORS_OPEN, nullptr, nullptr,
                                nullptr, nullptr, &status, nullptr);
                   benchmark::DoNotOptimize(status);
               });
#endif
#ifdef BENCH_POCO
    WithMemory(operation + "/POCO", bytes,
               [] { benchmark::DoNotOptimize(Poco::Process::launch("/bin/true", {"argument"}).wait()); });
#endif
}

} // namespace

void ToolkitBench::Register()
{
    RegisterTalk();
    RegisterRun("RunTrue10MiB", std::size_t{10} << 20);
    RegisterStart("StartAndWait10MiB", std::size_t{10} << 20);
    RegisterRun("RunTrue1GiB", std::size_t{1} << 30);
    RegisterStart("StartAndWait1GiB", std::size_t{1} << 30);
}
