// SPDX-License-Identifier: MIT
#include <cstdio>
#include <string>

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

// What the program itself counts in its main function; nothing of this process.
void CountMemory(benchmark::State& state, const char* program)
{
    std::FILE* const told = popen((std::string("BENCH_TALLY=1 ") + program).c_str(), "r");
    unsigned long allocations = 0;
    unsigned long peak = 0;
    if (told != nullptr && std::fscanf(told, "%lu %lu", &allocations, &peak) == 2)
    {
        state.counters["allocations"] = static_cast<double>(allocations);
        state.counters["peak"] = static_cast<double>(peak);
    }
    if (told != nullptr)
        pclose(told);
}

void RegisterLoad(const std::string& whose, const char* program)
{
    benchmark::RegisterBenchmark(("LoadToUnload/" + whose).c_str(),
                                 [program](benchmark::State& state)
                                 {
                                     const Run run{program};
                                     for (auto _ : state)
                                         run();
                                     CountMemory(state, program);
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

void ToolkitBench::Register()
{
    RegisterLoad("Toolkit", BENCH_LOAD_toolkit);
    RegisterLoad("limit", BENCH_LOAD_base);
#ifdef BENCH_LOAD_qt
    RegisterLoad("Qt", BENCH_LOAD_qt);
#endif
}
