// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_NOCANCELLATION_H
#define TOOLKIT_INTERNAL_SYSTEM_NOCANCELLATION_H

#include <pthread.h>

namespace Toolkit
{

// Keeps the calling thread from being cancelled for a scope: one that is cancelled in a destructor, or where
// every exception is caught, ends the whole process.
class NoCancellation
{
public:
    NoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_iBefore); }
    ~NoCancellation() { pthread_setcancelstate(m_iBefore, nullptr); }
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int m_iBefore = PTHREAD_CANCEL_ENABLE;
};

} // namespace Toolkit

#endif
