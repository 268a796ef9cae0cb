// SPDX-License-Identifier: MIT
#ifndef DESK_CLASSIC_RESTART_H
#define DESK_CLASSIC_RESTART_H

namespace Desk
{

// A host that restarts as the classic classes do it: it leaves a lock file, starts itself once more with
// "-restart" and ends; the new process finds the lock and removes it. Both print what they do; this returns
// the exit code of the process.
int RestartOnce(int argc, char** argv);

} // namespace Desk

#endif
