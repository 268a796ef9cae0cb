// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_IPCSERVER_H
#define TOOLKIT_APP_IPCSERVER_H

#include <memory>

#include "toolkit/app/IPCConnectionEvent.h"
#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/threading/EventNotifier.h"

namespace Toolkit
{

class IPCInternalServer;

/// Listens on a local channel and announces each command that a client (`IPCClient`) sends to its listeners.
/// It belongs to wxWidgets' main thread, whose event loop (or an `EventPump`) delivers the commands
/// there, and keeps wxWidgets running while it listens. A client that is silent, slow or talks nonsense
/// holds up no other, and stays until it leaves; only when descriptors or memory run out, those are dropped
/// that were silent for longest. A forked copy of the process takes no part in it, and keeps no socket of it.
/// On a port any user of this machine may send commands: prefer a local socket, which only this user reaches.
/// Failures are answered by `Run`; nothing is logged but a listener's exception.
class TOOLKIT_API IPCServer : public EventNotifier<IPCConnectionEvent>
{
public:
    /// Does not listen yet. A service of digits is a TCP port, on which this machine alone is listened to;
    /// any other is the path of a local socket file, for this user alone. Quirk: so is "http". An empty one
    /// is the default channel: the file in "/tmp" that is named after the path manager's unique instance
    /// name.
    explicit IPCServer(const TString<wchar_t>& service);
    /// Ends all connections and removes the socket file. Never from within a listener.
    ~IPCServer() override;

    IPCServer(const IPCServer&) = delete;
    IPCServer& operator=(const IPCServer&) = delete;

    /// True when the server listens. Quirk: calling it again then changes nothing, unless the socket file is
    /// gone. False when the service is not to be had, and the server may try again later: a living server has
    /// it (a dead one's socket is taken over), anything else lies at the path, the text can be no service,
    /// the caller is not on the main thread, or wxWidgets is not started. Waits at most two seconds for other
    /// servers that start at the same path.
    bool Run();

    /// Calls every listener in their order, with the listeners' mutex held. An exception of a listener passes
    /// with the mutex unlocked. Quirk: where a client's command is delivered it ends there, is logged as an
    /// error, and the next command is delivered.
    void SendExecuteEvent(const TString<wchar_t>& command);

    /// The service itself; for an empty one the default channel, or an empty text while there is no path
    /// manager.
    static TString<wchar_t> ServiceOrDefault(const TString<wchar_t>& service);

private:
    std::unique_ptr<IPCInternalServer> m_pServer;
    TString<wchar_t> m_strService;
};

} // namespace Toolkit

#endif
