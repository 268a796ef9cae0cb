// SPDX-License-Identifier: MIT
#include <cstring>
#include <memory>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/Bench.h"
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
    RegisterStart("StartAndWait10MiB", std::size_t{10} << 20);
    RegisterStart("StartAndWait1GiB", std::size_t{1} << 30);
}
