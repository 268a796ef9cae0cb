#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/Bench.h"

namespace
{

// Starts a program without arguments and waits for it.
struct Run
{
    const char* program;
    void operator()() const
    {
        char* const vector[] = {const_cast<char*>(program), nullptr};
        pid_t child = -1;
        int status = 0;
        if (posix_spawn(&child, program, nullptr, nullptr, vector, environ) == 0)
            waitpid(child, &status, 0);
        benchmark::DoNotOptimize(status);
    }
};

} // namespace

void ToolkitBench::Register()
{
    WholeOperation("LoadToUnload/Toolkit", Run{BENCH_LOAD_toolkit});
    WholeOperation("LoadToUnload/limit", Run{BENCH_LOAD_base});
#ifdef BENCH_LOAD_qt
    WholeOperation("LoadToUnload/Qt", Run{BENCH_LOAD_qt});
#endif
}
