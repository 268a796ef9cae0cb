// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_LOAD_TALLY_H
#define TOOLKIT_BENCH_LOAD_TALLY_H

#include <cstdio>
#include <cstdlib>

#include "bench/Memory.h"

namespace ToolkitBench
{

// Prints what memory was asked for while it lived, where the environment wants to know.
class Tally
{
public:
    Tally() : m_uBefore(Allocations()) { Watch(); }
    ~Tally()
    {
        const std::size_t peak = Peak();
        if (std::getenv("BENCH_TALLY") != nullptr)
            std::printf("%zu %zu\n", Allocations() - m_uBefore, peak);
    }
    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;

private:
    const std::size_t m_uBefore;
};

} // namespace ToolkitBench

#endif
