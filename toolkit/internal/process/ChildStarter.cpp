// SPDX-License-Identifier: MIT
#include "toolkit/internal/process/ChildStarter.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include "toolkit/internal/process/Pipe.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/SignalMask.h"

namespace Toolkit
{

namespace
{

using Step = ChildStarter::Step;
using Trouble = ChildStarter::Trouble;

// Where a fresh child tells of its trouble, which closes when its image is replaced.
const int s_iReport = 3;
const int s_iNone = -1;

// What follows runs in the child, which may call nothing but what a signal handler may.

// What replacing the image does to handlers anyway; in a fresh child no signal is ignored, either.
void DropSignalHandlers(bool fresh)
{
    for (int number = 1; number < NSIG; ++number)
    {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_DFL &&
            (fresh || action.sa_handler != SIG_IGN))
            std::signal(number, SIG_DFL);
    }
}

// True when the descriptors are those of the plan, and the report stands at its place.
bool PlaceDescriptors(const ChildPlan& plan, int report)
{
    for (int number = 0; number <= STDERR_FILENO; ++number)
        if (dup2(plan.m_standard[number], number) == -1)
            return false;
    if (report != s_iReport && dup3(report, s_iReport, O_CLOEXEC) == -1)
        return false;
    closefrom(s_iReport + 1);
    return true;
}

// True when the file is merely not there, and the next one may be.
bool IsMissing(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ENODEV || error == ESTALE || error == ETIMEDOUT;
}

// Becomes the first of the files that can be run; otherwise why not. A file that may not be run is passed
// over as one that is not there, but is the reason in the end.
Trouble RunFile(const ChildPlan& plan)
{
    Trouble trouble = {ENOENT, Step::File};
    for (const char* const* file = plan.m_pFiles; *file != nullptr; ++file)
    {
        execve(*file, plan.m_pArguments, plan.m_pEnvironment);
        if (errno == ENOENT && faccessat(AT_FDCWD, *file, F_OK, 0) == 0)
            return {ENOENT, Step::Interpreter};
        if (errno == EACCES)
            trouble.m_iError = EACCES;
        else if (!IsMissing(errno))
            return {errno, Step::File};
    }
    return trouble;
}

Trouble BecomeFresh(const ChildPlan& plan, int report)
{
    setpgid(0, 0);
    if (!PlaceDescriptors(plan, report))
        return {errno, Step::Start};
    if (plan.m_pFolder != nullptr && chdir(plan.m_pFolder) != 0)
        return {errno, Step::Folder};
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    return RunFile(plan);
}

[[noreturn]] void Become(const ChildPlan& plan, const sigset_t& mask, int report)
{
    DropSignalHandlers(plan.m_bFresh);
    if (!plan.m_bFresh)
    {
        sigprocmask(SIG_SETMASK, &mask, nullptr);
        execve(plan.m_pFiles[0], plan.m_pArguments, plan.m_pEnvironment);
        _exit(errno);
    }
    const Trouble trouble = BecomeFresh(plan, report);
    const ssize_t ignored = write(s_iReport, &trouble, sizeof trouble);
    static_cast<void>(ignored);
    _exit(trouble.m_iError);
}

// Back in the host.

// -1 without a child. `waited` tells that this process was held until the child had replaced its image or
// ended: not so where tools for debugging make a copy of the memory instead of lending it.
[[gnu::noinline]] pid_t Lend(const ChildPlan& plan, const SignalMask& blocked, int report,
                             volatile bool& waited)
{
    const pid_t child = vfork();
    if (child == 0)
    {
        waited = true;
        Become(plan, blocked.Before(), report);
    }
    return child;
}

void Reap(pid_t child)
{
    while (waitpid(child, nullptr, 0) == -1 && errno == EINTR)
    {
    }
}

} // namespace

// All signals are blocked until the child has its own image, so that no handler of the host runs in it.
pid_t ChildStarter::Start(const ChildPlan& plan, int& error)
{
    const SignalMask blocked;
    volatile bool waited = false;
    const pid_t child = Lend(plan, blocked, s_iNone, waited);
    error = errno;
    return child;
}

// The report ends when the child has replaced its image. A copy of its end may live on in a process that
// another thread forked just then, so that the end is waited for only where it must be.
pid_t ChildStarter::StartOrTell(const ChildPlan& plan, Trouble& trouble)
{
    const NoCancellation whole;
    const SignalMask blocked;
    Pipe report;
    volatile bool waited = false;
    pid_t child = -1;
    if (report.Open(O_NONBLOCK))
        child = Lend(plan, blocked, report.m_write.Get(), waited);
    trouble = {errno, Step::Start};
    report.m_write.Close();
    if (child == -1)
        return child;
    pollfd end = {report.m_read.Get(), POLLIN, 0};
    while (!waited && poll(&end, 1, -1) == -1 && errno == EINTR)
    {
    }
    if (read(report.m_read.Get(), &trouble, sizeof trouble) != static_cast<ssize_t>(sizeof trouble))
        return child;
    Reap(child);
    return -1;
}

} // namespace Toolkit
