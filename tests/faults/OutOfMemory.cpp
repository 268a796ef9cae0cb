// SPDX-License-Identifier: MIT
#include "tests/faults/OutOfMemory.h"

#include <iostream>

#include <gtest/gtest.h>

#include "tests/faults/HeldLocks.h"
#include "tests/support/Resources.h"

namespace ToolkitTest
{

namespace
{

const unsigned long s_uMostPoints = 100000;

// What is left after one run with the memory as it was set.
long RunOnce(const MemoryOperation& operation, unsigned long failing, FailingMemory::Mode mode)
{
    const long before = FailingMemory::GetLive();
    const int held = GetHeldLocks();
    const long descriptors = OpenDescriptors();
    FailingMemory::Set(failing, mode);
    operation.test(Attempt());
    EXPECT_EQ(held, GetHeldLocks()) << operation.name << ", allocation " << failing;
    // The first run may open what stays for the process.
    EXPECT_TRUE(failing == 0 || OpenDescriptors() <= descriptors)
        << operation.name << ", allocation " << failing << " leaves a descriptor";
    return FailingMemory::GetLive() - before;
}

// The number of points at which memory can run out.
unsigned long RunThrough(const MemoryOperation& operation, FailingMemory::Mode mode)
{
    unsigned long failing = 1;
    for (; failing < s_uMostPoints; ++failing)
    {
        const long left = RunOnce(operation, failing, mode);
        if (!FailingMemory::HasFailed())
            break;
        // What is kept from then on is no leak; what is left again each time is one.
        const long leftAgain = left > 0 ? RunOnce(operation, failing, mode) : 0;
        EXPECT_GE(0, leftAgain) << operation.name << ", allocation " << failing;
        if (testing::Test::HasFailure())
            break;
    }
    EXPECT_GT(s_uMostPoints, failing) << operation.name << " never succeeds";
    return failing - 1;
}

} // namespace

unsigned long FailEachAllocation(const std::vector<MemoryOperation>& operations)
{
    unsigned long points = 0;
    for (const MemoryOperation& operation : operations)
    {
        std::cout << "  " << operation.name << ": " << std::flush;
        // What is made once for the process.
        RunOnce(operation, 0, FailingMemory::Mode::Once);
        const unsigned long once = RunThrough(operation, FailingMemory::Mode::Once);
        const unsigned long onwards = RunThrough(operation, FailingMemory::Mode::Onwards);
        std::cout << once << " + " << onwards << std::endl;
        points += once + onwards;
    }
    std::cout << "  operations: " << operations.size() << ", points of failure: " << points << std::endl;
    return points;
}

} // namespace ToolkitTest
