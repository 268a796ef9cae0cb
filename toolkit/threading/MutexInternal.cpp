#include "toolkit/threading/MutexInternal.h"

#include <atomic>

#include <pthread.h>
#include <wx/thread.h>

#include "toolkit/core/BaseLibrary.h"
#include "toolkit/threading/Mutex.h"
#include "toolkit/threading/Thread.h"

namespace Toolkit
{

namespace
{
const unsigned int s_uTryInterval = 10;
}

// The base library's mutex, and who holds it how often; only the holder writes the two.
class MutexInternal::BaseMutex : public wxMutex
{
public:
    BaseMutex() : wxMutex(wxMUTEX_RECURSIVE) {}

    bool IsHeld() const { return m_holder.load(std::memory_order_relaxed) != 0; }
    bool IsHeldByCaller() const { return m_holder.load(std::memory_order_relaxed) == pthread_self(); }

    void CountLock()
    {
        m_holder.store(pthread_self(), std::memory_order_relaxed);
        ++m_uDepth;
    }
    void CountUnlock()
    {
        if (--m_uDepth == 0)
            m_holder.store(0, std::memory_order_relaxed);
    }

private:
    std::atomic<pthread_t> m_holder{0};
    unsigned int m_uDepth = 0;
};

MutexInternal::MutexInternal(bool lockNow) : m_pMutex(new BaseMutex)
{
    if (lockNow)
        Lock(Mutex::s_uInfinite);
}

MutexInternal::~MutexInternal()
{
    if (!m_pMutex->IsHeld())
    {
        delete m_pMutex;
        return;
    }
    // The base library would report the destruction of a held mutex.
    const BaseLibrary::Silence silence;
    delete m_pMutex;
}

bool MutexInternal::Lock(unsigned int timeout)
{
    wxMutexError answer = wxMUTEX_BUSY;
    if (timeout == Mutex::s_uInfinite)
        answer = m_pMutex->Lock();
    else
        for (unsigned int tries = timeout / s_uTryInterval + 1; tries > 0 && answer == wxMUTEX_BUSY; --tries)
        {
            answer = m_pMutex->TryLock();
            if (answer == wxMUTEX_BUSY)
                Thread::Sleep(s_uTryInterval);
        }
    if (answer != wxMUTEX_NO_ERROR)
        return false;
    m_pMutex->CountLock();
    return true;
}

bool MutexInternal::Unlock()
{
    if (!m_pMutex->IsHeldByCaller())
        return false;
    m_pMutex->CountUnlock();
    return m_pMutex->Unlock() == wxMUTEX_NO_ERROR;
}

} // namespace Toolkit
