// SPDX-License-Identifier: MIT
// Part of the library in a build with counters: only the library can write its own.

extern "C" void __gcov_dump();

namespace Toolkit
{

[[gnu::visibility("default")]] void WriteCounters();

void WriteCounters()
{
    __gcov_dump();
}

} // namespace Toolkit
