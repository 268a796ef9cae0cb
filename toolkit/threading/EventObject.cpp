// SPDX-License-Identifier: MIT
#include "toolkit/threading/EventObject.h"

#include <algorithm>

#include "toolkit/threading/MutexLock.h"
#include "toolkit/threading/Thread.h"

namespace Toolkit
{

const unsigned int EventObject::s_uMinSlice;

EventObject::EventObject(bool autoReset, bool signalled) : m_bSignalled(signalled), m_bAutoReset(autoReset) {}

bool EventObject::Wait(unsigned int timeout)
{
    unsigned int remaining = timeout;
    while (!TakeSignal())
    {
        if (remaining == 0)
            return false;
        const unsigned int slice = std::min(remaining, s_uMinSlice);
        if (timeout != Mutex::s_uInfinite)
            remaining -= slice;
        Thread::Sleep(slice);
    }
    return true;
}

void EventObject::Signal()
{
    const MutexLock lock(m_mutex);
    m_bSignalled = true;
}

void EventObject::Reset()
{
    const MutexLock lock(m_mutex);
    m_bSignalled = false;
}

bool EventObject::TakeSignal()
{
    const MutexLock lock(m_mutex);
    const bool signalled = m_bSignalled;
    if (signalled && m_bAutoReset)
        m_bSignalled = false;
    return signalled;
}

} // namespace Toolkit
