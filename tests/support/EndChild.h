// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_ENDCHILD_H
#define TOOLKIT_TESTS_SUPPORT_ENDCHILD_H

#include <unistd.h>

#ifdef TOOLKIT_COUNTERS
// In a build with counters only: writes those of the program to their files, and those of the library.
extern "C" void __gcov_dump();
namespace Toolkit
{
void WriteCounters();
} // namespace Toolkit
#endif

namespace ToolkitTest
{

// Ends a forked copy of a program at once: without destructors, and without a second copy of what its
// original has not written yet. Only what it ran is noted, in a build with counters.
[[noreturn]] inline void EndChild(int status)
{
#ifdef TOOLKIT_COUNTERS
    __gcov_dump();
    Toolkit::WriteCounters();
#endif
    _exit(status);
}

} // namespace ToolkitTest

#endif
