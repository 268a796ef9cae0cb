// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_IPCSERVER_H
#define TOOLKIT_APP_IPCSERVER_H

#include <cstddef>
#include <memory>

#include "toolkit/app/IPCConnectionEvent.h"
#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/threading/EventNotifier.h"

class wxServerBase;
class wxString;

namespace Toolkit
{

/// Listens on a local channel and announces each command that a client (`IPCClient`) sends to its listeners.
/// It belongs to wxWidgets' main thread, whose event loop (or an `EventPump`) delivers the commands
/// there, and keeps wxWidgets running while it listens. A client that is silent, slow or talks nonsense
/// holds up no other, and stays until it leaves; only when descriptors or memory run out, those are dropped
/// that were silent for longest. A forked copy of the process takes no part in it, and keeps no socket of it.
/// On a port any user of this machine may send commands: prefer a local socket, which only this user reaches.
/// `Run` returns whether it failed; nothing is logged but a listener's exception, and an installation of this
/// library that is not whole.
///
/// @code
/// Toolkit::IPCServer server(L"/tmp/desk.socket");
/// server.AddListener(Toolkit::smart_ptr<Toolkit::IPCConnectionEvent>(new Commands));
/// if (!server.Run())
///     return Fail("another server listens");
/// @endcode
class TOOLKIT_API IPCServer : public EventNotifier<IPCConnectionEvent>
{
public:
    /// Does not listen yet. A service of digits is a TCP port, on which this machine alone is listened to;
    /// any other is the path of a local socket file, for this user alone. An empty one is the default
    /// channel: the file in "/tmp" that is named after the path manager's unique instance name. Quirk: a name
    /// such as "http" is a relative path, and no port.
    explicit IPCServer(const TString<wchar_t>& service);
    /// Ends all connections and removes the socket file. Never from within a listener.
    ~IPCServer() override;

    IPCServer(const IPCServer&) = delete;
    IPCServer& operator=(const IPCServer&) = delete;

    /// Listens; true when it does. False when the service cannot be had: a living server has it (the socket
    /// of a dead one is taken over), anything else lies at the path, the text is no possible service, the
    /// caller is not on the main thread, or wxWidgets is not started. The server may try again later. It
    /// waits at most two seconds for other servers that start at the same path. Quirk: on a server that
    /// listens it changes nothing and returns true, unless the socket file is gone.
    bool Run();

    /// Calls every listener in their order, with the listeners' mutex held; an exception ends that.
    /// Quirk: an exception of a listener passes to the caller here, but where a client's command is delivered
    /// it is only logged as an error, and the next command is delivered.
    void SendExecuteEvent(const TString<wchar_t>& command);

    /// The service itself; for an empty one the default channel, or an empty text while there is no path
    /// manager.
    static TString<wchar_t> ServiceOrDefault(const TString<wchar_t>& service);

private:
    friend class IPCConnectionEventHelper;
    friend class IPCInternalServer;

    // The listening of an internal server.
    struct Listening
    {
        virtual ~Listening() = default;
        virtual bool Open(const wxString& service) = 0;
    };

    // What the friends call. It is virtual, so that they need not be linked with this library: a part of it
    // has them that stands alone.
    virtual std::unique_ptr<Listening> Listen(wxServerBase& server);
    virtual void Execute(const void* data, std::size_t size, int format);

    // An `IPCInternalServer`; null while the part cannot be loaded that makes it.
    std::unique_ptr<wxServerBase> m_pServer;
    TString<wchar_t> m_strService;
};

} // namespace Toolkit

#endif
