// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_LOAD_TALLY_H
#define TOOLKIT_BENCH_LOAD_TALLY_H

#ifdef BENCH_COUNTED
#include <cstdio>

#include "bench/Memory.h"
#endif

namespace ToolkitBench
{

#ifdef BENCH_COUNTED

// Prints what memory was asked for while it lived.
class Tally
{
public:
    Tally() : m_uBefore(Allocations()) { Watch(); }
    ~Tally()
    {
        const std::size_t peak = Peak();
        std::printf("%zu %zu\n", Allocations() - m_uBefore, peak);
    }
    Tally(const Tally&) = delete;
    Tally& operator=(const Tally&) = delete;

private:
    const std::size_t m_uBefore;
};

#else

// Nothing, in the program whose time is measured.
struct Tally
{
    Tally() {}
};

#endif

} // namespace ToolkitBench

#endif
