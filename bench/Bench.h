// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_BENCH_H
#define TOOLKIT_BENCH_BENCH_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

#include "bench/Memory.h"

namespace ToolkitBench
{

// Runs `work` as the loop of a benchmark and counts what it allocates.
template <class Work>
void Measure(benchmark::State& state, Work&& work)
{
    work();
    Watch();
    work();
    state.counters["peak"] = static_cast<double>(Peak());
    const std::size_t before = Allocations();
    for (auto _ : state)
        work();
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(Allocations() - before), benchmark::Counter::kAvgIterations);
}

// Registers `work`, one operation, as "<operation>/<whose>": Toolkit, limit, or a peer's name.
template <class Work>
void Operation(const std::string& name, Work work)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [work](benchmark::State& state) mutable { Measure(state, work); });
}

// The same where most of the time passes in other processes.
template <class Work>
void WholeOperation(const std::string& name, Work work)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [work](benchmark::State& state) mutable { Measure(state, work); })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

// A folder that goes with the process.
const std::filesystem::path& Folder();

// A text of that many characters in lower-case words.
std::string Words(std::size_t length);
std::wstring WideWords(std::size_t length);

// True where the environment has BENCH_BRIEF: nothing is measured well then, all of it is only tried.
bool IsBrief();

// That many, or a thousandth of it where all is only tried, but sixteen at least.
std::size_t Scaled(std::size_t count);

// Each program registers its operations here.
void Register();

} // namespace ToolkitBench

#endif
