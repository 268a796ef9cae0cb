// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_EVENTOBJECT_H
#define TOOLKIT_THREADING_EVENTOBJECT_H

#include "toolkit/core/Export.h"
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

/// A flag that one thread sets and others wait for, with manual or automatic reset. With automatic reset one
/// waiter consumes each signal; a signal that nobody waits for stays set. Any thread may call anything.
/// Quirk: waiting polls in slices of `s_uMinSlice`, so a waiter sees a signal up to 200 ms late.
///
/// @code
/// Toolkit::EventObject done(false, false);
/// done.Signal();
/// if (done.Wait(1000))
///     Show("done");
/// @endcode
class TOOLKIT_API EventObject
{
public:
    /// The polling slice of `Wait`, in milliseconds.
    static const unsigned int s_uMinSlice = 200;

    /// With `autoReset` a wait that sees the signal clears it; `signalled` is the state at first.
    EventObject(bool autoReset, bool signalled);

    EventObject(const EventObject&) = delete;
    EventObject& operator=(const EventObject&) = delete;

    /// True when the event was seen signalled, which automatic reset then clears; false on time-out.
    /// `timeout` is in milliseconds; 4294967295 waits without limit.
    bool Wait(unsigned int timeout);

    /// Sets the event.
    void Signal();
    /// Clears the event.
    void Reset();

private:
    bool TakeSignal();

    bool m_bSignalled;
    const bool m_bAutoReset;
    Mutex m_mutex;
};

} // namespace Toolkit

#endif
