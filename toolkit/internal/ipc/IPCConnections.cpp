// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCConnections.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/timerfd.h>

#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{

namespace
{

// What all clients may hold, in bytes: room for three of the largest messages.
const std::size_t s_uMostHeld = 256 * 1024 * 1024;
// What a client costs that has said nothing yet.
const std::size_t s_uConnectionCost = 1024;
const std::size_t s_uReadAtOnce = 16 * 1024;
const int s_iAcceptsInTurn = 64;
const int s_iEventsInTurn = 64;
// One that was heard of since then is not dropped for want of descriptors.
const std::chrono::milliseconds s_quiet(200);
// The numbers of what is watched beside the clients, which have those from 1 on.
const IPCConnections::Id s_uListener = 0;
const IPCConnections::Id s_uTimer = ~IPCConnections::Id(0);
// How long the listening socket is left alone when nothing can be done for those who wait there: 100 ms.
const itimerspec s_pause = {{0, 0}, {0, 100 * 1000 * 1000}};

// What has arrived on the socket and was not read yet, in bytes.
std::size_t WaitingOn(int socket)
{
    int waiting = 0;
    return ioctl(socket, FIONREAD, &waiting) == 0 && waiting > 0 ? static_cast<std::size_t>(waiting) : 0;
}

} // namespace

bool IPCConnections::Open(const IPCAddress& address)
{
    if (!m_listener.Open(address))
        return false;
    m_poll = UnsharedDescriptor([] { return Descriptor(epoll_create1(EPOLL_CLOEXEC)); });
    m_timer = UnsharedDescriptor(
        [] { return Descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)); });
    if (Watch(EPOLL_CTL_ADD, m_listener.Get(), s_uListener, EPOLLIN) &&
        Watch(EPOLL_CTL_ADD, m_timer.Get(), s_uTimer, EPOLLIN))
        return true;
    Close();
    return false;
}

void IPCConnections::Close()
{
    m_listener.Close();
    DropAll();
    m_poll.Close();
    m_timer.Close();
}

void IPCConnections::DropAll()
{
    m_connections.clear();
    m_places.clear();
    m_uHeld = 0;
    m_uUnsent = 0;
}

void IPCConnections::Serve()
{
    epoll_event events[s_iEventsInTurn];
    const int count = epoll_wait(m_poll.Get(), events, s_iEventsInTurn, 0);
    bool haveNew = false;
    for (int i = 0; i < count; ++i)
    {
        // The system's structure is packed.
        const Id id = events[i].data.u64;
        if (id == s_uListener)
            haveNew = true;
        else if (id == s_uTimer)
            ListenOn();
        else
            ServeOne(id, events[i].events);
    }
    // After those who are here already, some of whom may have left.
    if (haveNew)
        AcceptClients();
}

bool IPCConnections::Send(Id client, std::string_view bytes)
{
    Connection* const connection = Find(client);
    if (connection == nullptr)
        return true;
    m_uUnsent += bytes.size();
    connection->m_strUnsent += bytes;
    if (!SendUnsent(*connection))
        connection->m_bEnding = true;
    Recount(*connection);
    WatchFor(*connection);
    return connection->m_strUnsent.empty();
}

bool IPCConnections::SendCode(Id client, unsigned char code)
{
    const char byte = static_cast<char>(code);
    return Send(client, std::string_view(&byte, 1));
}

bool IPCConnections::HasUnsent(Id client) const
{
    const auto place = m_places.find(client);
    return place != m_places.end() && !place->second->m_strUnsent.empty();
}

void IPCConnections::Drop(Id client)
{
    if (Connection* const connection = Find(client))
        Remove(*connection);
}

void IPCConnections::Count(Id client, std::ptrdiff_t bytes)
{
    Connection* const connection = Find(client);
    if (connection == nullptr)
        return;
    connection->m_uOwners += static_cast<std::size_t>(bytes);
    Recount(*connection);
}

bool IPCConnections::Watch(int operation, int descriptor, Id id, std::uint32_t events)
{
    epoll_event event = {};
    event.events = events;
    event.data.u64 = id;
    return epoll_ctl(m_poll.Get(), operation, descriptor, &event) == 0;
}

void IPCConnections::ServeOne(Id id, std::uint32_t events)
{
    Connection* const connection = Find(id);
    if (connection == nullptr)
        return;
    if ((events & EPOLLOUT) != 0)
    {
        const bool sent = SendUnsent(*connection);
        Recount(*connection);
        if (!sent)
            return Remove(*connection);
        WatchFor(*connection);
    }
    if ((events & ~static_cast<std::uint32_t>(EPOLLOUT)) != 0)
        ReadFrom(*connection);
}

void IPCConnections::AcceptClients()
{
    bool added = false;
    for (int i = 0; i < s_iAcceptsInTurn; ++i)
    {
        IPCListener::Accepted accepted = IPCListener::Accepted::Nobody;
        UnsharedDescriptor client(
            [this, &accepted]
            {
                Descriptor taken;
                accepted = m_listener.Accept(taken);
                return taken;
            });
        switch (accepted)
        {
        case IPCListener::Accepted::Client:
            Add(std::move(client));
            added = true;
            break;
        case IPCListener::Accepted::Exhausted:
            // Those who were let in just now may soon be served and gone.
            if (added)
                return;
            if (!MakeRoom())
                return PauseListening();
            break;
        case IPCListener::Accepted::Failed:
            return PauseListening();
        case IPCListener::Accepted::Refused:
            break;
        case IPCListener::Accepted::Nobody:
            return;
        }
    }
}

// For one more client when there are no descriptors left, if only to refuse it; false when it has to wait.
bool IPCConnections::MakeRoom()
{
    if (m_connections.empty())
        return m_listener.RefuseOne();
    const auto quietest = std::find_if(m_connections.begin(), m_connections.end(),
                                       [this](const Connection& connection) { return MayDrop(connection); });
    if (quietest == m_connections.end() || std::chrono::steady_clock::now() - quietest->m_lastHeard < s_quiet)
        return false;
    DropIdlest();
    return true;
}

// A client that cannot even be refused must not keep the loop awake; the timer ends the pause.
void IPCConnections::PauseListening()
{
    if (timerfd_settime(m_timer.Get(), 0, &s_pause, nullptr) == 0)
        Watch(EPOLL_CTL_MOD, m_listener.Get(), s_uListener, 0);
}

void IPCConnections::ListenOn()
{
    const itimerspec never = {};
    timerfd_settime(m_timer.Get(), 0, &never, nullptr);
    if (m_listener.Get() != -1)
        Watch(EPOLL_CTL_MOD, m_listener.Get(), s_uListener, EPOLLIN);
}

void IPCConnections::Add(UnsharedDescriptor client)
{
    Connection& connection = m_connections.emplace_back();
    connection.m_uId = ++m_uLastId;
    connection.m_socket = std::move(client);
    connection.m_lastHeard = std::chrono::steady_clock::now();
    try
    {
        m_places[connection.m_uId] = std::prev(m_connections.end());
    }
    catch (...)
    {
        m_connections.pop_back();
        throw;
    }
    connection.m_uWatched = EPOLLIN;
    if (!Watch(EPOLL_CTL_ADD, connection.m_socket.Get(), connection.m_uId, connection.m_uWatched))
        return Remove(connection);
    Recount(connection);
    ReadFrom(connection);
}

// Once in a turn, so that a client that sends much does not hold up those that send little.
void IPCConnections::ReadFrom(Connection& connection)
{
    m_buffer.resize(s_uReadAtOnce);
    const ssize_t count = recv(connection.m_socket.Get(), m_buffer.data(), m_buffer.size(), MSG_DONTWAIT);
    if (count == -1 && (errno == EINTR || errno == EAGAIN))
        return;
    MoveToEnd(connection);
    if (count > 0)
        connection.m_reader.Append(m_buffer.data(), static_cast<std::size_t>(count));
    if (count <= 0 || !TakeMessages(connection))
        return Remove(connection);
    Recount(connection);
    KeepWithinMemory();
}

// False when the connection has come to its end.
bool IPCConnections::TakeMessages(Connection& connection)
{
    IPCMessage message;
    for (;;)
        switch (connection.m_reader.Next(message))
        {
        case IPCMessageReader::Result::Complete:
            if (!m_owner.OnMessage(connection.m_uId, message) || connection.m_bEnding)
                return false;
            break;
        case IPCMessageReader::Result::Incomplete:
            return true;
        case IPCMessageReader::Result::Broken:
            SendCode(connection.m_uId, IPCMessage::Fail);
            return false;
        }
}

// False when the client takes no more, because it is gone.
bool IPCConnections::SendUnsent(Connection& connection)
{
    std::string& bytes = connection.m_strUnsent;
    while (connection.m_uSent < bytes.size())
    {
        const ssize_t count = send(connection.m_socket.Get(), bytes.data() + connection.m_uSent,
                                   bytes.size() - connection.m_uSent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return true;
        // What it sent before it left is still there to be read.
        const std::size_t done =
            count < 0 ? bytes.size() - connection.m_uSent : static_cast<std::size_t>(count);
        connection.m_uSent += done;
        m_uUnsent -= done;
        if (count < 0 && errno != EPIPE && errno != ECONNRESET)
            return false;
    }
    bytes = std::string();
    connection.m_uSent = 0;
    return true;
}

void IPCConnections::WatchFor(Connection& connection)
{
    const std::uint32_t events = connection.m_strUnsent.empty() ? EPOLLIN : EPOLLIN | EPOLLOUT;
    if (events != connection.m_uWatched &&
        Watch(EPOLL_CTL_MOD, connection.m_socket.Get(), connection.m_uId, events))
        connection.m_uWatched = events;
}

void IPCConnections::Recount(Connection& connection)
{
    m_uHeld -= connection.m_uHeld;
    connection.m_uHeld = s_uConnectionCost + connection.m_reader.GetMemory() +
                         connection.m_strUnsent.capacity() + connection.m_uOwners;
    m_uHeld += connection.m_uHeld;
}

void IPCConnections::MoveToEnd(Connection& connection)
{
    connection.m_lastHeard = std::chrono::steady_clock::now();
    m_connections.splice(m_connections.end(), m_connections, m_places[connection.m_uId]);
}

// Those that hold nothing are not worth dropping while there is one that does, be it one that has to stay.
void IPCConnections::KeepWithinMemory()
{
    const auto mayDrop = [this](const Connection& connection) { return MayDrop(connection); };
    while (m_uHeld > s_uMostHeld && !m_connections.empty())
    {
        const auto holder =
            std::find_if(m_connections.begin(), m_connections.end(),
                         [&mayDrop](const Connection& connection)
                         { return connection.m_uHeld > 2 * s_uReadAtOnce && mayDrop(connection); });
        if (holder == m_connections.end() &&
            !std::all_of(m_connections.begin(), m_connections.end(), mayDrop))
            return;
        DropWhole(holder != m_connections.end() ? *holder : m_connections.front());
    }
}

// Of at least one that may be dropped, rather one that has said nothing new than one that waits to be read.
void IPCConnections::DropIdlest()
{
    const auto idle =
        std::find_if(m_connections.begin(), m_connections.end(),
                     [this](const Connection& connection)
                     { return MayDrop(connection) && WaitingOn(connection.m_socket.Get()) == 0; });
    DropWhole(idle != m_connections.end()
                  ? *idle
                  : *std::find_if(m_connections.begin(), m_connections.end(),
                                  [this](const Connection& connection) { return MayDrop(connection); }));
}

// A client may have been told already that its command was sent: what waits there is taken before. Once the
// socket is shut, no more can arrive on a local one; what arrives on a port meanwhile is not waited for.
void IPCConnections::DropWhole(Connection& connection)
{
    const int socket = connection.m_socket.Get();
    shutdown(socket, SHUT_RD);
    m_buffer.resize(s_uReadAtOnce);
    for (std::size_t waiting = WaitingOn(socket); waiting > 0;)
    {
        const ssize_t count = recv(socket, m_buffer.data(), m_buffer.size(), MSG_DONTWAIT);
        if (count == -1 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        connection.m_reader.Append(m_buffer.data(), static_cast<std::size_t>(count));
        if (!TakeMessages(connection))
            break;
        waiting -= std::min(waiting, static_cast<std::size_t>(count));
    }
    Remove(connection);
}

void IPCConnections::Remove(Connection& connection)
{
    const Id id = connection.m_uId;
    m_uHeld -= connection.m_uHeld;
    m_uUnsent -= connection.m_strUnsent.size() - connection.m_uSent;
    const auto place = m_places.find(id);
    m_connections.erase(place->second);
    m_places.erase(place);
    m_owner.OnGone(id);
}

IPCConnections::Connection* IPCConnections::Find(Id id)
{
    const auto place = m_places.find(id);
    return place == m_places.end() ? nullptr : &*place->second;
}

} // namespace Toolkit
