// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_SINK_H
#define TOOLKIT_BENCH_SINK_H

#include <benchmark/benchmark.h>

#include "toolkit/log/ILogger.h"

namespace ToolkitBench
{

// Takes what is logged and keeps nothing.
class Sink : public Toolkit::ILogger
{
public:
    explicit Sink(Toolkit::LogSeverity threshold) : ILogger(threshold) {}
    void Write(const Toolkit::TString<wchar_t>& text) override { benchmark::DoNotOptimize(text.data()); }
};

} // namespace ToolkitBench

#endif
