// SPDX-License-Identifier: MIT
#include "toolkit/threading/MutexInternal.h"

#include <cerrno>

#include "toolkit/threading/Thread.h"

namespace Toolkit
{

namespace
{
const unsigned int s_uTryInterval = 10;
}

const unsigned int MutexInternal::s_uInfinite;

MutexInternal::MutexInternal(bool lockNow) : m_mutex(PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP)
{
    if (lockNow)
        Lock(s_uInfinite);
}

MutexInternal::~MutexInternal()
{
    pthread_mutex_destroy(&m_mutex);
}

bool MutexInternal::Lock(unsigned int timeout)
{
    return timeout == s_uInfinite ? pthread_mutex_lock(&m_mutex) == 0 : LockWithin(timeout);
}

bool MutexInternal::Unlock()
{
    return pthread_mutex_unlock(&m_mutex) == 0;
}

bool MutexInternal::TryLock()
{
    return pthread_mutex_trylock(&m_mutex) == 0;
}

bool MutexInternal::LockWithin(unsigned int timeout)
{
    int answer = EBUSY;
    for (unsigned int tries = timeout / s_uTryInterval + 1; tries > 0 && answer == EBUSY; --tries)
    {
        answer = pthread_mutex_trylock(&m_mutex);
        if (answer == EBUSY)
            Thread::Sleep(s_uTryInterval);
    }
    return answer == 0;
}

} // namespace Toolkit
