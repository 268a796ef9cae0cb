// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_PROCESSSTATE_H
#define TOOLKIT_INTERNAL_SYSTEM_PROCESSSTATE_H

#include <ctime>

#include <sys/types.h>

// What the system tells about another process by its number. Numbers are given again: to other processes, and
// to the threads of other processes.
namespace Toolkit::ProcessState
{

// True while a process of this number runs that this user may signal. A thread is no process, and one
// that has ended runs no more, even if nobody has asked how it ended.
bool IsRunning(pid_t process);

// True when the process of this number surely started after that moment of the system's clock, a second
// of inaccuracy allowed for. False where the system does not tell.
bool StartedAfter(pid_t process, const timespec& moment);

} // namespace Toolkit::ProcessState

#endif
