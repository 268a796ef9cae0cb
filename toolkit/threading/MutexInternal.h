// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_MUTEXINTERNAL_H
#define TOOLKIT_THREADING_MUTEXINTERNAL_H

#include <pthread.h>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// A recursive mutex: the thread that holds it may lock it again and unlocks as often as it locked.
/// Any thread may use it; a time-out is kept by polling. Failures are returned, never thrown, and a caller
/// that got false goes on without the lock and does not unlock (see MutexLock).
///
/// @code
/// static Toolkit::MutexInternal mutex;
/// if (mutex.Lock(1000))
/// {
///     LookForWork();
///     mutex.Unlock();
/// }
/// @endcode
class TOOLKIT_API MutexInternal
{
public:
    /// The time-out that waits without limit, in every operation of the library that takes one.
    static const unsigned int s_uInfinite = 4294967295U;

    /// With `lockNow` the constructing thread holds the mutex at once.
    explicit MutexInternal(bool lockNow = false);
    /// Does not unlock first; destroying a mutex that somebody holds is the caller's error and is survived.
    virtual ~MutexInternal();

    MutexInternal(const MutexInternal&) = delete;
    MutexInternal& operator=(const MutexInternal&) = delete;

    /// True when the caller holds the mutex now. `timeout` is in milliseconds; 4294967295 waits without
    /// limit. Any other value is timeout / 10 + 1 tries with a pause of 10 ms after each that found the mutex
    /// busy.
    /// Quirk: a busy mutex takes about 10 ms with a time-out of 0, and 30 ms with 25.
    bool Lock(unsigned int timeout);

    /// True when the caller held the mutex.
    bool Unlock();

protected:
    /// One try that never waits.
    bool TryLock();

private:
    bool LockWithin(unsigned int timeout);

    // The system's own recursive mutex, in place: wxWidgets' would cost two pieces of memory more,
    // and half as much again for each lock.
    pthread_mutex_t m_mutex;
};

} // namespace Toolkit

#endif
