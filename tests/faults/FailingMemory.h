// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_FAULTS_FAILINGMEMORY_H
#define TOOLKIT_TESTS_FAULTS_FAILINGMEMORY_H

namespace ToolkitTest
{

// The `operator new` of a program that links FailingMemory.cpp: it counts what is allocated while it is
// armed, and has no memory for one of these allocations, or for one and all later ones. What wxWidgets
// wants for itself is neither counted nor refused: it ends the process where it runs out of memory, and
// nothing outside can keep it from that.
class FailingMemory
{
public:
    enum class Mode
    {
        Once,
        Onwards
    };

    // Begins to count anew; the allocation of that number, from 1, fails.
    static void Set(unsigned long failing, Mode mode);

    // Armed on the calling thread, on every other one, or on all of the process, until `Disarm`. The count
    // goes on where it stood.
    static void Arm();
    static void ArmOtherThreads();
    static void ArmAllThreads();
    static void Disarm();

    // True when an allocation failed since `Set`.
    static bool HasFailed();

    // The allocations of the process that were not freed.
    static long GetLive();
};

} // namespace ToolkitTest

#endif
