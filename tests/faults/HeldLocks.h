// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_FAULTS_HELDLOCKS_H
#define TOOLKIT_TESTS_FAULTS_HELDLOCKS_H

namespace ToolkitTest
{

// How many mutexes the calling thread holds, in a program that links HeldLocks.cpp; a mutex locked twice
// counts twice. Always 0 under ThreadSanitizer, which needs the functions for itself.
int GetHeldLocks();

} // namespace ToolkitTest

#endif
