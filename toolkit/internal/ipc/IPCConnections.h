// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCCONNECTIONS_H
#define TOOLKIT_INTERNAL_IPC_IPCCONNECTIONS_H

#include <chrono>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "toolkit/internal/ipc/IPCListener.h"
#include "toolkit/internal/ipc/IPCMessage.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

class IPCAddress;

// The clients of a service: takes them, reads from all of them without ever waiting for one, and hands each
// message over. To whoever drives it, a loop of wxWidgets or a thread, it is one descriptor that becomes
// readable when there is something to serve. A client stays until it leaves, whatever it does not say; only
// when descriptors or memory really run out, those are dropped that were silent for longest, unless the owner
// keeps them, and what they have sent whole is handed over all the same. Where none may be dropped, new ones
// wait until a descriptor is free. One thread at a time uses it.
class IPCConnections
{
public:
    using Id = std::uint64_t;

    // Who is told of the messages. It may send meanwhile, and drops that client by its answer.
    class Owner
    {
    public:
        virtual ~Owner() = default;
        // False ends the connection. The message's texts are gone when this returns.
        virtual bool OnMessage(Id client, const IPCMessage& message) = 0;
        // After its last message, when the client has left or was dropped; not after `Close`.
        virtual void OnGone(Id client) = 0;
        // False for one that stays even when descriptors or memory run out.
        virtual bool MayDrop(Id) const { return true; }
    };

    explicit IPCConnections(Owner& owner) : m_owner(owner), m_listener() {}

    IPCConnections(const IPCConnections&) = delete;
    IPCConnections& operator=(const IPCConnections&) = delete;

    // False when it cannot listen there. On closed ones only.
    bool Open(const IPCAddress& address);
    void Close();
    // Ends all connections without telling the owner, whatever state an exception left them in.
    void DropAll();
    bool IsInPlace(const IPCAddress& address) const { return m_listener.IsInPlace(address); }

    // Readable when there is something to serve; -1 while closed.
    int Get() const { return m_poll.Get(); }
    // Serves what is there, without waiting.
    void Serve();

    // Sends the bytes as the client takes them; true when it has taken all that it was sent. One that is gone
    // needs none, and what it sent before counts.
    bool Send(Id client, std::string_view bytes);
    // The same for a message that is one code.
    bool SendCode(Id client, unsigned char code);
    // True while something that was sent is not on its way yet.
    bool HasUnsent() const { return m_uUnsent > 0; }
    bool HasUnsent(Id client) const;
    // Has the owner told of it.
    void Drop(Id client);

    // Counts memory that the owner keeps for a client: so much more, or less again.
    void Count(Id client, std::ptrdiff_t bytes);

private:
    struct Connection
    {
        Id m_uId = 0;
        UnsharedDescriptor m_socket;
        IPCMessageReader m_reader;
        std::chrono::steady_clock::time_point m_lastHeard;
        // In bytes: what it holds, as far as that is counted, and what of it the owner has counted.
        std::size_t m_uHeld = 0;
        std::size_t m_uOwners = 0;
        std::string m_strUnsent;
        std::size_t m_uSent = 0;
        // The events that it is watched for.
        std::uint32_t m_uWatched = 0;
        bool m_bEnding = false;
    };
    // The one that was silent for longest comes first.
    using Places = std::list<Connection>;

    bool Watch(int operation, int descriptor, Id id, std::uint32_t events);
    void ServeOne(Id id, std::uint32_t events);
    void AcceptClients();
    bool MakeRoom();
    void PauseListening();
    void ListenOn();
    void Add(UnsharedDescriptor client);
    void ReadFrom(Connection& connection);
    bool TakeMessages(Connection& connection);
    bool SendUnsent(Connection& connection);
    void WatchFor(Connection& connection);
    void Recount(Connection& connection);
    void MoveToEnd(Connection& connection);
    void KeepWithinMemory();
    void DropIdlest();
    void DropWhole(Connection& connection);
    void Remove(Connection& connection);
    Connection* Find(Id id);
    bool MayDrop(const Connection& connection) const { return m_owner.MayDrop(connection.m_uId); }

    Owner& m_owner;
    IPCListener m_listener;
    UnsharedDescriptor m_poll;
    // Ends a pause of the listening.
    UnsharedDescriptor m_timer;
    Places m_connections;
    std::unordered_map<Id, Places::iterator> m_places;
    Id m_uLastId = 0;
    std::size_t m_uHeld = 0;
    std::size_t m_uUnsent = 0;
    std::vector<char> m_buffer;
};

} // namespace Toolkit

#endif
