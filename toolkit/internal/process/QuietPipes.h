// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_QUIETPIPES_H
#define TOOLKIT_INTERNAL_PROCESS_QUIETPIPES_H

#include <csignal>

namespace Toolkit
{

// Keeps a write to a pipe that nobody reads any more from sending SIGPIPE to the host, for a scope and the
// calling thread. What the host does with the signal elsewhere is left alone.
class QuietPipes
{
public:
    QuietPipes();
    ~QuietPipes();
    QuietPipes(const QuietPipes&) = delete;
    QuietPipes& operator=(const QuietPipes&) = delete;

private:
    sigset_t m_before;
    // The signal was there before, and is the host's.
    bool m_bWasPending;
};

} // namespace Toolkit

#endif
