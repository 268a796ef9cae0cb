// SPDX-License-Identifier: MIT
#include "tests/faults/BrokenSystem.h"

#include <filesystem>
#include <iostream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace ToolkitTest
{

namespace
{

const unsigned long s_uMostPoints = 10000;

struct Kind
{
    FailingSystem::Fault fault;
    bool onwards;
    const char* name;
};

const Kind s_kinds[] = {
    {FailingSystem::NoSpace, false, "ENOSPC"},
    {FailingSystem::NoSpace, true, "ENOSPC from then on"},
    {FailingSystem::Broken, false, "EIO"},
    {FailingSystem::Broken, true, "EIO from then on"},
    {FailingSystem::Interrupted, false, "EINTR"},
    {FailingSystem::Short, false, "short"},
    {FailingSystem::Short, true, "short all along"},
    {FailingSystem::NoDescriptors, false, "EMFILE"},
    {FailingSystem::NoDescriptors, true, "EMFILE from then on"},
};

long CountDescriptors()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

// The number of points at which the system can fail in this way.
unsigned long RunThrough(const SystemOperation& operation, const Kind& kind)
{
    for (unsigned long failing = 1; failing < s_uMostPoints && !testing::Test::HasFailure(); ++failing)
    {
        const long before = CountDescriptors();
        FailingSystem::Set(failing, kind.fault, kind.onwards);
        operation.test(Faults());
        if (!FailingSystem::HasFailed())
            return failing - 1;
        const std::string where = std::string(operation.name) + ", " + kind.name + " at call " +
                                  std::to_string(failing) + ", " + FailingSystem::GetFailed();
        EXPECT_EQ(before, CountDescriptors()) << where;
        EXPECT_FALSE(FailingSystem::HasClosedStrange()) << where;
        if (testing::Test::HasFailure())
            std::cout << "failed after " << where << std::endl;
    }
    EXPECT_TRUE(testing::Test::HasFailure()) << operation.name << " never succeeds";
    return 0;
}

} // namespace

void FailEachCall(const std::vector<SystemOperation>& operations)
{
    unsigned long points = 0;
    for (const SystemOperation& operation : operations)
    {
        std::cout << "  " << operation.name << ": " << std::flush;
        unsigned long own = 0;
        for (const Kind& kind : s_kinds)
            own += RunThrough(operation, kind);
        std::cout << own << std::endl;
        points += own;
    }
    std::cout << "  operations: " << operations.size() << ", points of failure: " << points << std::endl;
}

} // namespace ToolkitTest
