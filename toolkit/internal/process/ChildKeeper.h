// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDKEEPER_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDKEEPER_H

#include <sys/types.h>

#include "toolkit/internal/process/ChildEnd.h"
#include "toolkit/internal/process/ChildPlan.h"
#include "toolkit/internal/process/ChildStarter.h"
#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

// The parent of a child whose host ignores the ends of its children: the system tells such a host nothing of
// them. A forked copy of the host starts the child, waits for it and tells how it ended; it needs a copy of
// the tables of the host's memory, which is why other hosts have none. One thread at a time uses it.
class ChildKeeper
{
public:
    // True while this process ignores the ends of its children.
    static bool IsNeeded();

    // As `ChildStarter::StartOrTell`.
    pid_t Start(const ChildPlan& plan, ChildStarter::Trouble& trouble);

    // Readable when the child has ended.
    int EndDescriptor() const { return m_report.Get(); }
    // Waits until the child has ended. Its number is not given again before.
    ChildEnd TakeEnd();

private:
    // What runs in the copy.
    [[noreturn]] static void Keep(const ChildPlan& plan, int report, int leash);
    // The copy ends by itself once its leash is gone.
    void Release();

    pid_t m_keeper = -1;
    Descriptor m_report;
    UnsharedDescriptor m_leash;
};

} // namespace Toolkit

#endif
