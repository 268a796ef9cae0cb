// SPDX-License-Identifier: MIT
#include "toolkit/internal/process/ChildProcess.h"

#include <cerrno>
#include <csignal>

#include <poll.h>

#include "toolkit/internal/system/NoCancellation.h"

// Not every release of the C library says in its header that the function is one of C.
extern "C" int pidfd_open(pid_t process, unsigned int flags) noexcept;

namespace Toolkit
{

ChildProcess::~ChildProcess()
{
    if (!m_bRuns)
        return;
    const NoCancellation whole;
    Signal(SIGKILL);
    TakeEnd();
}

bool ChildProcess::Start(const ChildPlan& plan, ChildStarter::Trouble& trouble)
{
    const NoCancellation whole;
    if (ChildKeeper::IsNeeded())
        m_keeper.emplace();
    m_child = m_keeper ? m_keeper->Start(plan, trouble) : ChildStarter::StartOrTell(plan, trouble);
    m_bRuns = m_child != -1;
    if (m_bRuns && !m_keeper)
        m_end = Descriptor(pidfd_open(m_child, 0));
    return m_bRuns;
}

int ChildProcess::EndDescriptor() const
{
    return m_keeper ? m_keeper->EndDescriptor() : m_end.Get();
}

bool ChildProcess::HasEnded() const
{
    if (m_keeper)
    {
        pollfd end = {m_keeper->EndDescriptor(), POLLIN, 0};
        return poll(&end, 1, 0) == 1;
    }
    siginfo_t info = {};
    return !Wait(info, WNOHANG | WNOWAIT) || info.si_pid != 0;
}

// Where the host has waited for the child itself, nobody knows any more how it ended.
ChildEnd ChildProcess::TakeEnd()
{
    m_bRuns = false;
    if (m_keeper)
        return m_keeper->TakeEnd();
    siginfo_t info = {};
    return Wait(info, 0) ? ChildEnd::Of(info) : ChildEnd();
}

// A number that somebody else took back may be another's by now.
void ChildProcess::Signal(int number) const
{
    siginfo_t info = {};
    if (m_bRuns && (m_keeper || Wait(info, WNOHANG | WNOWAIT)))
        kill(-m_child, number);
}

void ChildProcess::Abandon()
{
    m_bRuns = false;
}

bool ChildProcess::Wait(siginfo_t& info, int options) const
{
    int answer = 0;
    do
        answer = m_end.IsOpen() ? waitid(P_PIDFD, static_cast<id_t>(m_end.Get()), &info, WEXITED | options)
                                : waitid(P_PID, static_cast<id_t>(m_child), &info, WEXITED | options);
    while (answer == -1 && errno == EINTR);
    return answer == 0;
}

} // namespace Toolkit
