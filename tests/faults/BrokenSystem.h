// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_FAULTS_BROKENSYSTEM_H
#define TOOLKIT_TESTS_FAULTS_BROKENSYSTEM_H

#include <functional>
#include <vector>

#include "tests/faults/FailingSystem.h"

namespace ToolkitTest
{

// Runs the part of an operation's test in which the system fails. What comes before prepares; what comes
// after looks at what is promised of a failure, and whether the same works again.
class Faults
{
public:
    template <class Work>
    void operator()(Work work) const
    {
        FailingSystem::Arm();
        work();
        FailingSystem::Disarm();
    }

    // The calling thread itself meets no fault.
    template <class Work>
    void OnOtherThreads(Work work) const
    {
        FailingSystem::ArmOtherThreads();
        work();
        FailingSystem::Disarm();
    }
};

// A public operation by its name, and its test.
struct SystemOperation
{
    const char* name;
    std::function<void(const Faults&)> test;
};

// Runs each test with the 1st call of the system failing in each way that it can, then the 2nd and so on,
// each alone, and with all later ones (but for what a caller must try again). Each time the test must come to
// its end and leave no descriptor open. Prints how many points of failure each operation has.
void FailEachCall(const std::vector<SystemOperation>& operations);

} // namespace ToolkitTest

#endif
