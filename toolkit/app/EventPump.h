// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_EVENTPUMP_H
#define TOOLKIT_APP_EVENTPUMP_H

#include <atomic>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// Delivers wxWidgets' events, and with them the commands of an `IPCServer`, in a host that has no
/// event loop of its own. The host's main thread runs it; any thread may stop it. A host that runs wxWidgets'
/// loop needs none; within that loop, or within another pump, it delivers what that would deliver.
/// It keeps nothing of wxWidgets between two runs.
///
/// @code
/// Toolkit::IPCServer server(L"/tmp/desk.socket");
/// Toolkit::EventPump pump;
/// if (server.Run())
///     pump.Run(4294967295);
/// @endcode
class TOOLKIT_API EventPump
{
public:
    EventPump();
    ~EventPump();

    EventPump(const EventPump&) = delete;
    EventPump& operator=(const EventPump&) = delete;

    /// Delivers events for that many milliseconds or until it is stopped; 0 delivers what is there and
    /// returns, 4294967295 runs until it is stopped. It sleeps while there is nothing to deliver. True when
    /// it ran, to its end or to a stop; false, at once, when wxWidgets is not started or the caller is not on
    /// its main thread. An exception of an event's handler passes; those of IPC listeners do not come here.
    bool Run(unsigned int milliseconds);

    /// Ends the run, with this pump's runs within it, as soon as the event that is being delivered is done.
    /// Never waits. From any thread, and from a handler of a signal. Quirk: without a run it ends the next
    /// one, which still delivers what is there.
    void Stop();

private:
    void Deliver(unsigned int milliseconds);

    int m_iWakeUp;
    std::atomic<bool> m_bStopped{false};
    unsigned int m_uRuns = 0;
};

} // namespace Toolkit

#endif
