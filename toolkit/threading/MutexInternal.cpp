#include "toolkit/threading/MutexInternal.h"

#include <atomic>

#include <wx/thread.h>

#include "toolkit/core/BaseLibrary.h"
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

    bool IsHeld() const { return m_pHolder.load(std::memory_order_relaxed) != nullptr; }
    bool IsHeldByCaller() const { return m_pHolder.load(std::memory_order_relaxed) == Caller(); }

    // Kept out of line, for the sake of the lock without a limit.
    [[gnu::noinline]] wxMutexError LockWithin(unsigned int timeout);

    void CountLock()
    {
        if (IsHeldByCaller())
            ++m_uNested;
        else
            m_pHolder.store(Caller(), std::memory_order_relaxed);
    }
    void CountUnlock()
    {
        if (m_uNested != 0)
            --m_uNested;
        else
            m_pHolder.store(nullptr, std::memory_order_relaxed);
    }

private:
    // What identifies the calling thread at the lowest price.
    static const void* Caller() { return __builtin_thread_pointer(); }

    std::atomic<const void*> m_pHolder{nullptr};
    unsigned int m_uNested = 0;
};

wxMutexError MutexInternal::BaseMutex::LockWithin(unsigned int timeout)
{
    wxMutexError answer = wxMUTEX_BUSY;
    for (unsigned int tries = timeout / s_uTryInterval + 1; tries > 0 && answer == wxMUTEX_BUSY; --tries)
    {
        answer = TryLock();
        if (answer == wxMUTEX_BUSY)
            Thread::Sleep(s_uTryInterval);
    }
    return answer;
}

const unsigned int MutexInternal::s_uInfinite;

MutexInternal::MutexInternal(bool lockNow) : m_pMutex(new BaseMutex)
{
    if (lockNow)
        Lock(s_uInfinite);
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
    BaseMutex& mutex = *m_pMutex;
    const wxMutexError answer = timeout == s_uInfinite ? mutex.Lock() : mutex.LockWithin(timeout);
    if (answer != wxMUTEX_NO_ERROR)
        return false;
    mutex.CountLock();
    return true;
}

bool MutexInternal::Unlock()
{
    BaseMutex& mutex = *m_pMutex;
    if (!mutex.IsHeldByCaller())
        return false;
    mutex.CountUnlock();
    return mutex.Unlock() == wxMUTEX_NO_ERROR;
}

} // namespace Toolkit
