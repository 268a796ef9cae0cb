// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_MUTEX_H
#define TOOLKIT_THREADING_MUTEX_H

#include "toolkit/threading/MutexInternal.h"

namespace Toolkit
{

/// The public name of the recursive mutex; see MutexInternal. With the standard's names for its operations it
/// works with std::lock_guard, std::unique_lock, std::scoped_lock and std::lock.
///
/// @code
/// static Toolkit::Mutex mutex;
/// const std::lock_guard<Toolkit::Mutex> guard(mutex);
/// LookForWork();
/// @endcode
class TOOLKIT_API Mutex : public MutexInternal
{
public:
    /// With `lockNow` the constructing thread holds the mutex at once.
    explicit Mutex(bool lockNow = false);
    ~Mutex() override;

    /// Waits without limit. Throws std::system_error when the system refuses the lock, as it does when one
    /// thread has locked the mutex more often than can be counted.
    void lock();
    /// One try, which never waits; true when the caller holds the mutex now.
    bool try_lock() { return TryLock(); }
    /// Gives the mutex up once.
    void unlock() { Unlock(); }
};

} // namespace Toolkit

#endif
