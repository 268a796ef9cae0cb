// SPDX-License-Identifier: MIT
#include "toolkit/internal/process/QuietPipes.h"

#include <cerrno>
#include <ctime>

#include <pthread.h>

namespace Toolkit
{

namespace
{

sigset_t TheSignal()
{
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    return pipe;
}

bool IsPending()
{
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

} // namespace

QuietPipes::QuietPipes()
{
    const sigset_t pipe = TheSignal();
    pthread_sigmask(SIG_BLOCK, &pipe, &m_before);
    m_bWasPending = IsPending();
}

// What came since is taken away before the mask is as it was.
QuietPipes::~QuietPipes()
{
    const int error = errno;
    const sigset_t pipe = TheSignal();
    const timespec atOnce = {0, 0};
    while (!m_bWasPending && IsPending() && sigtimedwait(&pipe, nullptr, &atOnce) == -1 && errno == EINTR)
    {
    }
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    errno = error;
}

} // namespace Toolkit
