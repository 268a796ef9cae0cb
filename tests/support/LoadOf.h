// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_LOADOF_H
#define TOOLKIT_TESTS_SUPPORT_LOADOF_H

#include <cstdlib>

namespace ToolkitTest
{

// How often a test of load does what it does: what the environment variable says, for the long runs of
// tests/soak/run, or a number that suits every day.
inline unsigned long LoadOf(const char* variable, unsigned long everyDay)
{
    const char* const given = std::getenv(variable);
    return given != nullptr ? std::strtoul(given, nullptr, 10) : everyDay;
}

} // namespace ToolkitTest

#endif
