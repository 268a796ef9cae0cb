// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCENDPOINT_H
#define TOOLKIT_INTERNAL_IPC_IPCENDPOINT_H

#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

#include <sys/types.h>
#include <wx/event.h>
#include <wx/evtloopsrc.h>
#include <wx/weakref.h>

#include "toolkit/internal/ipc/IPCListener.h"
#include "toolkit/internal/ipc/IPCMessage.h"
#include "toolkit/internal/system/Descriptor.h"

class wxServerBase;

namespace Toolkit
{

class IPCAddress;

// What listens for a server: takes its clients, reads from all of them without ever waiting for one, and
// hands each command over as an event of the base library. To the base library's loop it is one descriptor
// that becomes readable. It belongs to the base library's main thread and keeps the base library running
// while it listens. No client holds up another: of too many, or of too much that is not yet a command, those
// are dropped that were silent for longest; what they have sent whole is handed over all the same.
class IPCEndpoint : private wxEventLoopSourceHandler
{
public:
    // `server` makes the object of each connection; it is not owned.
    explicit IPCEndpoint(wxServerBase& server);
    ~IPCEndpoint() override;

    IPCEndpoint(const IPCEndpoint&) = delete;
    IPCEndpoint& operator=(const IPCEndpoint&) = delete;

    // True when it listens there, newly or still. False on another thread, or while the base library is not
    // started, and when the address is not to be had.
    bool Open(const IPCAddress& address);
    // Ends all connections; commands that were not handed over yet are lost.
    void Close();

    // Waits for `events` of `poll` on a descriptor, for at most so many milliseconds (-1: without a limit).
    // On the main thread all endpoints of the process serve their clients meanwhile, so that two programs may
    // connect to each other at the same time; the commands are handed over later.
    static bool WaitFor(int descriptor, short events, int milliseconds);

private:
    struct Connection;
    struct Command;
    using Connections = std::list<std::shared_ptr<Connection>>;

    void OnReadWaiting() override;
    void OnWriteWaiting() override {}
    void OnExceptionWaiting() override {}

    bool Watch();
    bool Watch(int operation, int descriptor, std::uint64_t id, std::uint32_t events);
    void Forget();
    bool IsOurs() const;
    void Serve();

    void AcceptClients();
    bool MakeRoom();
    void PauseListening();
    void ListenOn();
    void Add(Descriptor client);
    void ReadFrom(const std::shared_ptr<Connection>& connection);
    ssize_t Receive(Connection& connection);
    bool TakeMessages(const std::shared_ptr<Connection>& connection);
    bool Handle(const std::shared_ptr<Connection>& connection, const IPCMessage& message);
    bool Begin(Connection& connection, const IPCMessage& message);
    void MoveToEnd(const Connection& connection);
    void DropIdlest();
    void DropOldestUnfinished();
    void DropWhole(const std::shared_ptr<Connection>& connection);
    void Drop(const std::shared_ptr<Connection>& connection);

    void Enqueue(Command command);
    void HandOverSoon();
    void HandOver();

    wxServerBase& m_server;
    IPCListener m_listener;
    Descriptor m_poll;
    // Ends a pause of the listening.
    Descriptor m_timer;
    std::unique_ptr<wxEventLoopSource> m_pSource;
    // Null once the base library that the source belongs to has ended.
    wxWeakRef<wxEvtHandler> m_application;
    bool m_bHolds = false;
    pid_t m_process = 0;

    // The one that was silent for longest comes first.
    Connections m_connections;
    std::unordered_map<std::uint64_t, Connections::iterator> m_places;
    std::uint64_t m_uLastId = 0;
    std::size_t m_uBuffered = 0;
    std::vector<char> m_buffer;

    std::deque<Command> m_commands;
    std::size_t m_uWaiting = 0;
    std::unique_ptr<wxEvtHandler> m_pEvents;
};

} // namespace Toolkit

#endif
