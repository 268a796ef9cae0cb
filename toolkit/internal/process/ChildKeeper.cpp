// SPDX-License-Identifier: MIT
#include "toolkit/internal/process/ChildKeeper.h"

#include <cerrno>
#include <csignal>
#include <utility>

#include <unistd.h>

#include "toolkit/internal/process/Pipe.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

// What the keeper tells of the start.
struct Started
{
    pid_t m_child;
    ChildStarter::Trouble m_trouble;
};

// What the keeper holds: nothing of the host's, or its files and pipes would stay open.
const int s_iReport = 0;
const int s_iLeash = 1;

void HoldNothingElse(int report, int leash)
{
    dup2(report, s_iReport);
    dup2(leash, s_iLeash);
    closefrom(s_iLeash + 1);
    const int ignored = chdir("/");
    static_cast<void>(ignored);
}

ChildEnd AwaitEnd(pid_t child)
{
    siginfo_t info = {};
    while (waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT) == -1 && errno == EINTR)
    {
    }
    return ChildEnd::Of(info);
}

} // namespace

bool ChildKeeper::IsNeeded()
{
    struct sigaction action = {};
    return sigaction(SIGCHLD, nullptr, &action) == 0 &&
           (action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0);
}

// No signal but SIGKILL reaches the keeper, and so no handler of the host runs in it, nor one for forks: the
// keeper calls nothing but what a signal handler may.
pid_t ChildKeeper::Start(const ChildPlan& plan, ChildStarter::Trouble& trouble)
{
    Pipe report;
    Descriptor leash;
    m_leash = UnsharedDescriptor(
        [&leash]
        {
            Pipe ends;
            ends.Open();
            leash = std::move(ends.m_read);
            return std::move(ends.m_write);
        });
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    if (m_leash.IsOpen() && report.Open())
    {
        pthread_sigmask(SIG_SETMASK, &all, &before);
        m_keeper = _Fork();
        if (m_keeper == 0)
            Keep(plan, report.m_write.Get(), leash.Get());
        const int error = errno;
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        errno = error;
    }
    Started started = {-1, {errno, ChildStarter::Step::Start}};
    report.m_write.Close();
    m_report = std::move(report.m_read);
    if (m_keeper == -1 || ReadUpTo(m_report.Get(), &started, sizeof started) != sizeof started ||
        started.m_child == -1)
        Release();
    trouble = started.m_trouble;
    return started.m_child;
}

void ChildKeeper::Keep(const ChildPlan& plan, int report, int leash)
{
    std::signal(SIGCHLD, SIG_DFL);
    Started started = {-1, {0, ChildStarter::Step::Start}};
    started.m_child = ChildStarter::StartOrTell(plan, started.m_trouble);
    HoldNothingElse(report, leash);
    WriteAll(s_iReport, &started, sizeof started);
    if (started.m_child == -1)
        _exit(0);
    const ChildEnd end = AwaitEnd(started.m_child);
    WriteAll(s_iReport, &end, sizeof end);
    char none = 0;
    ReadUpTo(s_iLeash, &none, sizeof none);
    _exit(0);
}

ChildEnd ChildKeeper::TakeEnd()
{
    ChildEnd end;
    if (ReadUpTo(m_report.Get(), &end, sizeof end) != sizeof end)
        end = ChildEnd();
    Release();
    return end;
}

void ChildKeeper::Release()
{
    m_leash.Close();
    m_report.Close();
    while (m_keeper != -1 && waitpid(m_keeper, nullptr, 0) == -1 && errno == EINTR)
    {
    }
    m_keeper = -1;
}

} // namespace Toolkit
