// SPDX-License-Identifier: MIT
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

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

// Programs that are compared with each other. They are started in turn, so that what else the machine does
// delays each alike.
class Row
{
public:
    using Seconds = std::chrono::duration<double>;

    struct Load
    {
        std::string whose;
        const char* program;
    };

    Row(std::vector<Load> loads, bool isAsking) : m_loads(std::move(loads)), m_bAsking(isAsking) {}

    const std::vector<Load>& Loads() const { return m_loads; }

    // The time of one program, which is given away once: of the rounds that gave one to each.
    Seconds Take(const std::string& whose)
    {
        if (m_times.count(whose) == 0)
            Measure();
        return m_times.extract(whose).mapped();
    }

private:
    // A neighbour delays whole seconds by half. The quickest tenth tells of the programs alone.
    void Measure()
    {
        std::optional<Toolkit::Result<Toolkit::Instance>> first;
        if (m_bAsking)
            first = ServeCommands();
        std::map<std::string, std::vector<Seconds>> times;
        for (int round = 0; round < (ToolkitBench::IsBrief() ? 1 : s_iRounds); ++round)
            for (const Load& load : m_loads)
                times[load.whose].push_back(TimeOf(load.program));
        for (auto& [whose, all] : times)
        {
            const auto tenth = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 10);
            std::nth_element(all.begin(), tenth, all.end());
            m_times[whose] = *tenth;
        }
    }

    static Seconds TimeOf(const char* program)
    {
        const auto start = std::chrono::steady_clock::now();
        Run{program}();
        return std::chrono::steady_clock::now() - start;
    }

    static constexpr int s_iRounds = 51;
    const std::vector<Load> m_loads;
    const bool m_bAsking;
    std::map<std::string, Seconds> m_times;
};

void RegisterRow(const std::string& name, const std::shared_ptr<Row>& row)
{
    for (const Row::Load& load : row->Loads())
        benchmark::RegisterBenchmark((name + '/' + load.whose).c_str(),
                                     [row, load](benchmark::State& state)
                                     {
                                         for (auto _ : state)
                                             state.SetIterationTime(row->Take(load.whose).count());
                                         CountMemory(state, load.program);
                                     })
            ->Iterations(1)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
}

} // namespace

void ToolkitBench::Register()
{
    std::vector<Row::Load> session = {{"Toolkit", BENCH_LOAD_toolkit}, {"limit", BENCH_LOAD_base}};
#ifdef BENCH_LOAD_qt
    session.push_back({"Qt", BENCH_LOAD_qt});
#endif
    const std::vector<Row::Load> handOver = {{"Toolkit", BENCH_LOAD_handover}, {"limit", BENCH_LOAD_base}};
    RegisterRow("LoadToUnload", std::make_shared<Row>(session, false));
    RegisterRow("HandOver", std::make_shared<Row>(handOver, true));
}
