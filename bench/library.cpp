// SPDX-License-Identifier: MIT
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/Bench.h"
#include "toolkit/app/Instance.h"

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
        int status = -1;
        if (posix_spawn(&child, program, nullptr, nullptr, vector, environ) == 0)
            waitpid(child, &status, 0);
        if (status != 0)
            throw std::runtime_error(std::string(program) + " failed");
    }
};

// What the program itself counts in its main function; nothing of this process.
void CountMemory(benchmark::State& state, const char* program)
{
    std::FILE* const told = popen((std::string(program) + "_counted").c_str(), "r");
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

// What a second start finds.
Toolkit::Result<Toolkit::Instance> ServeCommands()
{
    const std::string key = "org.example.bench." + std::to_string(getpid());
    setenv("BENCH_KEY", key.c_str(), 1);
    Toolkit::Result<Toolkit::Instance> instance = Toolkit::Instance::Claim(key);
    if (instance)
        instance->Serve([](const Toolkit::Instance::Command& /*command*/)
                        { return Toolkit::Instance::Answer(0, "done"); });
    return instance;
}

void RegisterLoad(const std::string& name, const char* program, bool isAsking = false)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [program, isAsking](benchmark::State& state)
                                 {
                                     const auto first = isAsking
                                                            ? ServeCommands()
                                                            : Toolkit::Failure(Toolkit::Errc::Refused, "");
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
    RegisterLoad("LoadToUnload/Toolkit", BENCH_LOAD_toolkit);
    RegisterLoad("LoadToUnload/limit", BENCH_LOAD_base);
#ifdef BENCH_LOAD_qt
    RegisterLoad("LoadToUnload/Qt", BENCH_LOAD_qt);
#endif
    RegisterLoad("HandOver/Toolkit", BENCH_LOAD_handover, true);
    RegisterLoad("HandOver/limit", BENCH_LOAD_base);
}
