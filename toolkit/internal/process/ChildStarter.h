// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDSTARTER_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDSTARTER_H

#include <sys/types.h>

#include "toolkit/internal/process/ChildPlan.h"

namespace Toolkit
{

// Starts child processes. A child borrows the host's memory instead of copying the tables of it, which would
// take the longer the larger the host is, and does nothing but replace its image. The host's signal handlers
// never run in it. Any thread may call it.
class ChildStarter
{
public:
    // Where a child failed.
    enum class Step : int
    {
        Start,
        Folder,
        File,
        Interpreter
    };

    struct Trouble
    {
        int m_iError;
        Step m_step;
    };

    // The child's number; -1 when there is none, with the reason in `error`. A child that cannot run its
    // program ends with the error's number as its exit code.
    static pid_t Start(const ChildPlan& plan, int& error);

    // The number of a child that runs its program; -1 when there is none, with the reason in `trouble`.
    static pid_t StartOrTell(const ChildPlan& plan, Trouble& trouble);
};

} // namespace Toolkit

#endif
