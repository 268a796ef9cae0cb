// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_FAULTS_OUTOFMEMORY_H
#define TOOLKIT_TESTS_FAULTS_OUTOFMEMORY_H

#include <functional>
#include <new>
#include <vector>

#include "tests/faults/FailingMemory.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/regExp/RegExp.Exceptions"

namespace ToolkitTest
{

// Runs the part of an operation's test in which memory runs out. What comes before prepares; what comes after
// uses the objects once more, with all the memory that they want.
class Attempt
{
public:
    // True when the work came to its end; false when it said that there is no memory.
    template <class Work>
    bool operator()(Work work) const
    {
        return Run(&FailingMemory::Arm, work);
    }

    // The same with every thread of the process short of memory, or every one but this.
    template <class Work>
    bool OnAllThreads(Work work) const
    {
        return Run(&FailingMemory::ArmAllThreads, work);
    }

    template <class Work>
    bool OnOtherThreads(Work work) const
    {
        return Run(&FailingMemory::ArmOtherThreads, work);
    }

private:
    template <class Work>
    bool Run(void (*arm)(), Work work) const
    {
        bool ended = false;
        arm();
        try
        {
            work();
            ended = true;
        }
        catch (const std::bad_alloc&)
        {
        }
        catch (const Toolkit::smart_ptr<Toolkit::RegExpException>&)
        {
        }
        FailingMemory::Disarm();
        return ended;
    }
};

// A public operation by its name, and its test.
struct MemoryOperation
{
    const char* name;
    std::function<void(const Attempt&)> test;
};

// Runs each test as often as it allocates: with the 1st allocation failing, the 2nd and so on, then with the
// 1st and all later ones, the 2nd and all later ones ... until none fails. Each time the test must come to
// its end, leave no memory and no descriptor and hold no mutex. Prints how many points of failure each
// operation has, and answers how many all have.
unsigned long FailEachAllocation(const std::vector<MemoryOperation>& operations);

} // namespace ToolkitTest

#endif
