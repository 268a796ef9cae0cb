// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_MEMORY_H
#define TOOLKIT_BENCH_MEMORY_H

#include <cstddef>

namespace ToolkitBench
{

// How often this thread has asked for memory, from whichever library.
std::size_t Allocations();

// Between the two calls, the most memory that this thread held at a time beyond what it held before.
void Watch();
std::size_t Peak();

} // namespace ToolkitBench

#endif
