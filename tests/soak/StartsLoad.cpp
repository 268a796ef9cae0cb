// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/soak/Loads.h"
#include "toolkit/app/SystemInfo.h"

namespace ToolkitTest
{

void StartProcesses(unsigned long starts)
{
    for (unsigned long i = 0; i < starts && !testing::Test::HasFailure(); ++i)
    {
        const bool wait = i % 2 == 0;
        const int child = Toolkit::SystemInfo::StartProcess(L"/bin/true", L"-an argument", wait);
        EXPECT_LT(0, child);
        // What is not waited for is the caller's to wait for.
        EXPECT_TRUE(wait || waitpid(child, nullptr, 0) == child);
    }
}

} // namespace ToolkitTest
