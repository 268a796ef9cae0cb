// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_CHILDPROCESS_H
#define TOOLKIT_INTERNAL_PROCESS_CHILDPROCESS_H

#include <optional>

#include <sys/types.h>

#include "toolkit/internal/process/ChildEnd.h"
#include "toolkit/internal/process/ChildKeeper.h"
#include "toolkit/internal/process/ChildPlan.h"
#include "toolkit/internal/process/ChildStarter.h"
#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{

// A fresh child and the process group that it leads, from its start until it is known how it ended. Its
// number belongs to it until then. One thread at a time uses it.
class ChildProcess
{
public:
    ChildProcess() = default;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    // Kills the group of a child that has not ended, and waits for it.
    ~ChildProcess();

    // Once. False when there is no child, with the reason in `trouble`.
    bool Start(const ChildPlan& plan, ChildStarter::Trouble& trouble);

    pid_t Id() const { return m_child; }

    // Readable when the child has ended; -1 on a system without such a thing, where one has to look.
    int EndDescriptor() const;
    // Never waits.
    bool HasEnded() const;
    // Waits until the child has ended. Once.
    ChildEnd TakeEnd();
    // Sends a signal to everyone in the group; nothing after the end was taken.
    void Signal(int number) const;

    // Forgets the child, which goes on.
    void Abandon();

private:
    // As `waitid`, whichever way the child is known.
    bool Wait(siginfo_t& info, int options) const;

    pid_t m_child = -1;
    Descriptor m_end;
    std::optional<ChildKeeper> m_keeper;
    bool m_bRuns = false;
};

} // namespace Toolkit

#endif
