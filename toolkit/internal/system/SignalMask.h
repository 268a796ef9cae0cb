// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_SIGNALMASK_H
#define TOOLKIT_INTERNAL_SYSTEM_SIGNALMASK_H

#include <cerrno>

#include <pthread.h>
#include <signal.h>

namespace Toolkit
{

// Blocks signals in the calling thread, and in the threads that it starts meanwhile, for a scope. It leaves
// `errno` alone.
class SignalMask
{
public:
    // Blocks all: they are the host's.
    SignalMask()
    {
        sigset_t all;
        sigfillset(&all);
        Set(all);
    }
    // Blocks these and no others.
    explicit SignalMask(const sigset_t& blocked) { Set(blocked); }
    ~SignalMask()
    {
        const int error = errno;
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
        errno = error;
    }
    SignalMask(const SignalMask&) = delete;
    SignalMask& operator=(const SignalMask&) = delete;

    // What was blocked before.
    const sigset_t& Before() const { return m_before; }

private:
    void Set(const sigset_t& blocked) { pthread_sigmask(SIG_SETMASK, &blocked, &m_before); }

    sigset_t m_before;
};

} // namespace Toolkit

#endif
