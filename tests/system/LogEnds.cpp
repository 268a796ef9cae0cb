// SPDX-License-Identifier: MIT
// LogEnds <folder> <how>: logs 200 lines into a RunLog in that folder and ends so; with "background" as third
// argument it queues them.
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

#include "toolkit/log/Log.h"
#include "toolkit/log/RunLog.h"

using namespace Toolkit;

namespace
{

void LogLines()
{
    for (int i = 0; i < 200; ++i)
        TOOLKIT_LOG(LogSeverity::Info) << "line " << i;
}

// Logs when the program's static objects are destroyed.
struct Last
{
    ~Last() { TOOLKIT_LOG(LogSeverity::Info) << "last"; }
};

const Last s_last;

// A sanitizer would end the process in a way of its own.
[[noreturn]] __attribute__((no_sanitize("undefined"))) void Crash()
{
    std::signal(SIGSEGV, SIG_DFL);
    volatile int* volatile nothing = nullptr;
    *nothing = 7;
    std::abort();
}

} // namespace

int main(int argc, char** argv)
{
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    if (argc < 3)
        return 100;
    RunLogOptions options("ends");
    options.Folder(argv[1]);
    if (argc > 3)
        options.Background();
    const Result<std::shared_ptr<RunLog>> file = RunLog::Open(options);
    if (!file)
        return 101;
    Log::Install({*file});
    LogLines();

    const std::string how = argv[2];
    if (how == "exit")
        std::exit(0);
    if (how == "_exit")
        _exit(0);
    if (how == "abort")
        std::abort();
    if (how == "exception")
        throw std::runtime_error("nobody catches this");
    if (how == "SIGTERM")
        std::raise(SIGTERM);
    if (how == "SIGSEGV")
        Crash();
    if (how == "SIGKILL")
        std::raise(SIGKILL);
    return 0;
}
