// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_FAULTS_FAILINGSYSTEM_H
#define TOOLKIT_TESTS_FAULTS_FAILINGSYSTEM_H

#include <cstdint>

namespace ToolkitTest
{

// The calls of the system and of the C library's files in a program that links FailingSystem.cpp: they are
// counted while the system is armed, and one of them fails, or one and all later ones. A forked process is
// armed as the other is, and goes on with the same count.
class FailingSystem
{
public:
    // A call fails only in ways in which it can fail.
    enum Fault : std::uint32_t
    {
        // ENOSPC (no memory in the system for a socket, ENOLCK for a lock), EIO, EINTR, EMFILE (EAGAIN for a
        // fork), and less transferred than asked for.
        NoSpace = 1,
        Broken = 2,
        Interrupted = 4,
        NoDescriptors = 8,
        Short = 16,
        // The process is killed before the call, whichever it is.
        Killed = 32
    };

    // Begins to count anew the calls that can fail so; the one of that number, from 1, does.
    static void Set(unsigned long failing, Fault fault, bool onwards);

    // Each call of that name does, and no other, until the next `Set`.
    static void SetAlways(const char* call, Fault fault);

    // As set.
    static Fault GetFault();
    static bool IsOnwards();

    // Armed on every thread, or on every one but the calling one, until `Disarm`. The count goes on where it
    // stood.
    static void Arm();
    static void ArmOtherThreads();
    static void Disarm();

    // True when a call failed since `Set`, or the call of that name, and which one failed first.
    static bool HasFailed();
    static bool HasFailed(const char* call);
    static const char* GetFailed();

    // True when a descriptor was closed since `Set` that was not open, and so might have been another's.
    static bool HasClosedStrange();
};

} // namespace ToolkitTest

#endif
