// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_MUTEXLOCK_H
#define TOOLKIT_THREADING_MUTEXLOCK_H

#include "toolkit/core/Export.h"
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

/// Holds a mutex for a scope: locks it without a limit, remembers the result and unlocks only if the lock was
/// taken, also when an exception passes.
///
/// @code
/// static Toolkit::Mutex mutex;
/// const Toolkit::MutexLock lock(mutex);
/// LookForWork();
/// @endcode
class TOOLKIT_API MutexLock
{
public:
    /// Locks the mutex, which must outlive this object.
    explicit MutexLock(MutexInternal& mutex) : m_mutex(mutex), m_bLocked(mutex.Lock(Mutex::s_uInfinite)) {}
    ~MutexLock()
    {
        if (m_bLocked)
            m_mutex.Unlock();
    }

    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    MutexInternal& m_mutex;
    const bool m_bLocked;
};

} // namespace Toolkit

#endif
