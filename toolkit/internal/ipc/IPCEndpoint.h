// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCENDPOINT_H
#define TOOLKIT_INTERNAL_IPC_IPCENDPOINT_H

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>

#include <sys/types.h>
#include <wx/event.h>
#include <wx/evtloopsrc.h>
#include <wx/weakref.h>

#include "toolkit/core/TString.h"
#include "toolkit/internal/ipc/IPCConnections.h"

class wxServerBase;

namespace Toolkit
{

class IPCAddress;

// What listens for a server of wxWidgets: has the event loop serve the clients, and hands each command over
// as an event. It belongs to the main thread of wxWidgets and keeps wxWidgets running while it listens.
class IPCEndpoint : private wxEventLoopSourceHandler, private IPCConnections::Owner
{
public:
    // Told what a listener has thrown.
    using Report = void (*)(const TString<wchar_t>& failure);

    // `server` makes the object of each connection; it is not owned.
    IPCEndpoint(wxServerBase& server, Report report);
    ~IPCEndpoint() override;

    IPCEndpoint(const IPCEndpoint&) = delete;
    IPCEndpoint& operator=(const IPCEndpoint&) = delete;

    // True when it listens there, newly or still. False on another thread, or while wxWidgets is not started,
    // and when the address is not to be had.
    bool Open(const IPCAddress& address);
    // Ends all connections; commands that were not handed over yet are lost.
    void Close();

    // Waits for `events` of `poll` on a descriptor, for at most so many milliseconds (-1: without a limit).
    // On the main thread all endpoints of the process serve their clients meanwhile, so that two programs may
    // connect to each other at the same time; the commands are handed over later.
    static bool WaitFor(int descriptor, short events, int milliseconds);

private:
    struct Client;
    struct Command;

    void OnReadWaiting() override;
    void OnWriteWaiting() override {}
    void OnExceptionWaiting() override {}
    bool OnMessage(IPCConnections::Id client, const IPCMessage& message) override;
    void OnGone(IPCConnections::Id client) override;

    bool Watch();
    void Forget();
    bool IsOurs() const;
    void Serve();
    bool Begin(IPCConnections::Id id, const IPCMessage& message);
    void Enqueue(Command command);
    void HandOverSoon();
    void HandOver();

    wxServerBase& m_server;
    const Report m_report;
    IPCConnections m_connections;
    std::unique_ptr<wxEventLoopSource> m_pSource;
    // Null once the wxWidgets that the source belongs to has ended.
    wxWeakRef<wxEvtHandler> m_application;
    bool m_bHolds = false;
    pid_t m_process = 0;

    // Those whose topic was accepted.
    std::unordered_map<IPCConnections::Id, std::shared_ptr<Client>> m_clients;
    std::deque<Command> m_commands;
    std::size_t m_uWaiting = 0;
    std::unique_ptr<wxEvtHandler> m_pEvents;
};

} // namespace Toolkit

#endif
