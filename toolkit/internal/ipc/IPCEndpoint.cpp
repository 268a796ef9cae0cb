// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCEndpoint.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <exception>
#include <utility>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/ipcbase.h>
#include <wx/thread.h>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/system/LeakOnPurpose.h"
#include "toolkit/internal/wx/BaseLibrary.h"
#include "toolkit/internal/wx/NewDescriptors.h"
#include "toolkit/internal/wx/WxText.h"
#include "toolkit/log/LogLine.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uMostConnections = 256;
const std::size_t s_uMostBuffered = 128 * 1024 * 1024;
// Commands that wait to be handed over, in bytes; beyond it no client is served from within `WaitFor`.
const std::size_t s_uMostWaiting = 128 * 1024 * 1024;
const std::size_t s_uReadAtOnce = 16 * 1024;
const int s_iAcceptsInTurn = 64;
const int s_iEventsInTurn = 64;
// One that was heard of since then is not dropped for want of descriptors.
const std::chrono::milliseconds s_quiet(200);
// The numbers of what is watched beside the clients, which have those from 1 on.
const std::uint64_t s_uListener = 0;
const std::uint64_t s_uTimer = ~std::uint64_t(0);
// How long the listening socket is left alone when nothing can be done for those who wait there: 100 ms.
const itimerspec s_pause = {{0, 0}, {0, 100 * 1000 * 1000}};

// Those that listen; for the base library's main thread alone.
std::vector<IPCEndpoint*> s_endpoints;

bool IsMainThread()
{
    return BaseLibrary::IsStarted() && wxThread::IsMain();
}

// False when the client takes no answers. One that is gone needs none, and what it sent before counts.
bool SendCode(int socket, IPCMessage::Code code)
{
    ssize_t sent = 0;
    do
        sent = send(socket, &code, sizeof code, MSG_NOSIGNAL | MSG_DONTWAIT);
    while (sent == -1 && errno == EINTR);
    return sent == sizeof code || errno == EPIPE || errno == ECONNRESET;
}

// A number that the base library has no format for must not become one.
wxIPCFormat FormatOf(const IPCMessage& message)
{
    return message.m_uFormat <= wxIPC_PRIVATE ? static_cast<wxIPCFormat>(message.m_uFormat) : wxIPC_INVALID;
}

// What has arrived on the socket and was not read yet, in bytes.
std::size_t WaitingOn(int socket)
{
    int waiting = 0;
    return ioctl(socket, FIONREAD, &waiting) == 0 && waiting > 0 ? static_cast<std::size_t>(waiting) : 0;
}

void LogFailure(const TString<wchar_t>& what)
{
    try
    {
        LogLine::Stream(LogSeverity::Error, __LINE__, "IPCEndpoint::HandOver", L"a listener failed: " + what);
    }
    catch (...)
    {
        // A sink that fails as well is no reason to end the host's loop.
    }
}

} // namespace

struct IPCEndpoint::Connection
{
    const std::uint64_t m_uId;
    Descriptor m_socket;
    IPCMessageReader m_reader;
    std::chrono::steady_clock::time_point m_lastHeard;
    // What the reader holds, as far as the endpoint has counted it.
    std::size_t m_uBuffered = 0;
    wxString m_topic;
    // Null until the client said what it wants; it deletes itself when it is told of the disconnection.
    wxConnectionBase* m_pObject = nullptr;

    Connection(std::uint64_t id, Descriptor socket) : m_uId(id), m_socket(std::move(socket)) {}

    void DeleteObject()
    {
        delete m_pObject;
        m_pObject = nullptr;
    }
};

// An execute request, or the disconnection that follows the last one.
struct IPCEndpoint::Command
{
    std::shared_ptr<Connection> m_pConnection;
    bool m_bDisconnect;
    wxIPCFormat m_format;
    std::string m_strData;

    void Run()
    {
        wxConnectionBase* const object = m_pConnection->m_pObject;
        if (m_bDisconnect)
        {
            m_pConnection->m_pObject = nullptr;
            object->OnDisconnect();
        }
        else
            object->OnExecute(m_pConnection->m_topic, m_strData.data(), m_strData.size(), m_format);
    }
};

IPCEndpoint::IPCEndpoint(wxServerBase& server) : m_server(server) {}

IPCEndpoint::~IPCEndpoint()
{
    Close();
}

bool IPCEndpoint::Open(const IPCAddress& address)
{
    if (!IsMainThread() || !address.IsValid())
        return false;
    if (m_pSource != nullptr && m_application != nullptr && IsOurs() && m_listener.IsInPlace(address))
        return true;
    Close();
    m_bHolds = BaseLibrary::Hold();
    try
    {
        if (m_listener.Open(address) && Watch())
            return true;
    }
    catch (...)
    {
        Close();
        throw;
    }
    Close();
    return false;
}

void IPCEndpoint::Close()
{
    Forget();
    m_listener.Close();
    for (const std::shared_ptr<Connection>& connection : m_connections)
        connection->DeleteObject();
    for (const Command& command : m_commands)
        command.m_pConnection->DeleteObject();
    m_connections.clear();
    m_places.clear();
    m_commands.clear();
    m_uBuffered = 0;
    m_uWaiting = 0;
    m_pEvents.reset();
    m_poll = Descriptor();
    m_timer = Descriptor();
    if (m_bHolds)
        BaseLibrary::Stop();
    m_bHolds = false;
}

bool IPCEndpoint::WaitFor(int descriptor, short events, int milliseconds)
{
    std::vector<pollfd> waited = {{descriptor, events, 0}};
    std::vector<IPCEndpoint*> endpoints = {nullptr};
    if (IsMainThread())
        for (IPCEndpoint* const endpoint : s_endpoints)
            if (endpoint->IsOurs() && endpoint->m_uWaiting <= s_uMostWaiting)
            {
                waited.push_back({endpoint->m_poll.Get(), POLLIN, 0});
                endpoints.push_back(endpoint);
            }
    if (poll(waited.data(), waited.size(), milliseconds) <= 0)
        return false;
    for (std::size_t i = 1; i < waited.size(); ++i)
        if (waited[i].revents != 0)
            endpoints[i]->Serve();
    return waited[0].revents != 0;
}

bool IPCEndpoint::Watch(int operation, int descriptor, std::uint64_t id, std::uint32_t events)
{
    epoll_event event = {};
    event.events = events;
    event.data.u64 = id;
    return epoll_ctl(m_poll.Get(), operation, descriptor, &event) == 0;
}

bool IPCEndpoint::Watch()
{
    m_poll = Descriptor(epoll_create1(EPOLL_CLOEXEC));
    m_timer = Descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!Watch(EPOLL_CTL_ADD, m_listener.Get(), s_uListener, EPOLLIN) ||
        !Watch(EPOLL_CTL_ADD, m_timer.Get(), s_uTimer, EPOLLIN))
        return false;
    m_pEvents = std::make_unique<wxEvtHandler>();
    m_application = wxAppConsole::GetInstance();
    m_process = getpid();
    const BaseLibrary::Silence silence;
    const NewDescriptors descriptors;
    m_pSource.reset(wxEventLoopBase::AddSourceForFD(m_poll.Get(), this, wxEVENT_SOURCE_INPUT));
    descriptors.KeepLoopFromPrograms();
    if (m_pSource == nullptr)
        return false;
    s_endpoints.push_back(this);
    return true;
}

// What the base library keeps of a source is gone when it was stopped meanwhile, and belongs to another
// process in a forked one: the source is abandoned then.
void IPCEndpoint::Forget()
{
    // Never opened, or closed since: then it may go on any thread.
    if (m_pSource == nullptr)
        return;
    s_endpoints.erase(std::remove(s_endpoints.begin(), s_endpoints.end(), this), s_endpoints.end());
    if (m_application == nullptr || !IsOurs())
        LeakOnPurpose(m_pSource.release());
    const BaseLibrary::Silence silence;
    m_pSource.reset();
}

// A forked process shares the sockets with the one that listens, and must take nothing from it.
bool IPCEndpoint::IsOurs() const
{
    return m_process == getpid();
}

void IPCEndpoint::OnReadWaiting()
{
    Serve();
}

void IPCEndpoint::Serve()
{
    if (!IsOurs())
        return;
    epoll_event events[s_iEventsInTurn];
    const int count = epoll_wait(m_poll.Get(), events, s_iEventsInTurn, 0);
    bool haveNew = false;
    for (int i = 0; i < count; ++i)
    {
        // The system's structure is packed.
        const std::uint64_t id = events[i].data.u64;
        if (id == s_uListener)
            haveNew = true;
        else if (id == s_uTimer)
            ListenOn();
        else if (const auto place = m_places.find(id); place != m_places.end())
            ReadFrom(std::shared_ptr<Connection>(*place->second));
    }
    // After those who are here already, some of whom may have gone.
    if (haveNew)
        AcceptClients();
    if (!m_commands.empty())
        HandOverSoon();
}

void IPCEndpoint::AcceptClients()
{
    bool added = false;
    for (int i = 0; i < s_iAcceptsInTurn; ++i)
    {
        Descriptor client;
        switch (m_listener.Accept(client))
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
bool IPCEndpoint::MakeRoom()
{
    if (m_connections.empty())
        return m_listener.RefuseOne();
    if (std::chrono::steady_clock::now() - m_connections.front()->m_lastHeard < s_quiet)
        return false;
    DropIdlest();
    return true;
}

// A client that cannot even be refused must not keep the loop awake; the timer ends the pause.
void IPCEndpoint::PauseListening()
{
    if (timerfd_settime(m_timer.Get(), 0, &s_pause, nullptr) == 0)
        Watch(EPOLL_CTL_MOD, m_listener.Get(), s_uListener, 0);
}

void IPCEndpoint::ListenOn()
{
    const itimerspec never = {};
    timerfd_settime(m_timer.Get(), 0, &never, nullptr);
    Watch(EPOLL_CTL_MOD, m_listener.Get(), s_uListener, EPOLLIN);
}

void IPCEndpoint::Add(Descriptor client)
{
    if (m_connections.size() >= s_uMostConnections)
        DropIdlest();
    const auto connection = std::make_shared<Connection>(++m_uLastId, std::move(client));
    if (!Watch(EPOLL_CTL_ADD, connection->m_socket.Get(), connection->m_uId, EPOLLIN))
        return;
    m_places[connection->m_uId] = m_connections.insert(m_connections.end(), connection);
    ReadFrom(connection);
}

// Once in a turn, so that a client that sends much does not hold up those that send little.
void IPCEndpoint::ReadFrom(const std::shared_ptr<Connection>& connection)
{
    MoveToEnd(*connection);
    const ssize_t count = Receive(*connection);
    if (count == -1 && (errno == EINTR || errno == EAGAIN))
        return;
    if (count <= 0 || !TakeMessages(connection))
        return Drop(connection);
    m_uBuffered -= connection->m_uBuffered;
    connection->m_uBuffered = connection->m_reader.GetSize();
    m_uBuffered += connection->m_uBuffered;
    if (m_uBuffered > s_uMostBuffered)
        DropOldestUnfinished();
}

// As `recv` answers.
ssize_t IPCEndpoint::Receive(Connection& connection)
{
    m_buffer.resize(s_uReadAtOnce);
    const ssize_t count = recv(connection.m_socket.Get(), m_buffer.data(), m_buffer.size(), MSG_DONTWAIT);
    if (count > 0)
        connection.m_reader.Append(m_buffer.data(), static_cast<std::size_t>(count));
    return count;
}

// False when the connection has come to its end.
bool IPCEndpoint::TakeMessages(const std::shared_ptr<Connection>& connection)
{
    IPCMessage message;
    for (;;)
        switch (connection->m_reader.Next(message))
        {
        case IPCMessageReader::Result::Complete:
            if (!Handle(connection, message))
                return false;
            break;
        case IPCMessageReader::Result::Incomplete:
            return true;
        case IPCMessageReader::Result::Broken:
            SendCode(connection->m_socket.Get(), IPCMessage::Fail);
            return false;
        }
}

bool IPCEndpoint::Handle(const std::shared_ptr<Connection>& connection, const IPCMessage& message)
{
    const int socket = connection->m_socket.Get();
    if (connection->m_pObject == nullptr)
        return Begin(*connection, message) || (SendCode(socket, IPCMessage::Fail), false);
    switch (message.m_uCode)
    {
    case IPCMessage::Execute:
        Enqueue({connection, false, FormatOf(message), std::string(message.m_strData)});
        return true;
    case IPCMessage::Request:
    case IPCMessage::AdviseStart:
    case IPCMessage::AdviseStop:
        return SendCode(socket, IPCMessage::Fail);
    case IPCMessage::Poke:
    case IPCMessage::Advise:
        return true;
    default:
        return false;
    }
}

bool IPCEndpoint::Begin(Connection& connection, const IPCMessage& message)
{
    if (message.m_uCode != IPCMessage::Connect)
        return false;
    connection.m_topic = ToWx(UTF8::ToUNICODE(TString<char>(std::string(message.m_strText))));
    connection.m_pObject = m_server.OnAcceptConnection(connection.m_topic);
    return connection.m_pObject != nullptr && SendCode(connection.m_socket.Get(), IPCMessage::Connect);
}

void IPCEndpoint::MoveToEnd(const Connection& connection)
{
    const Connections::iterator place = m_places[connection.m_uId];
    (*place)->m_lastHeard = std::chrono::steady_clock::now();
    m_connections.splice(m_connections.end(), m_connections, place);
}

// Of at least one, rather one that has said nothing new than one that waits to be read.
void IPCEndpoint::DropIdlest()
{
    const auto idle = std::find_if(m_connections.begin(), m_connections.end(),
                                   [](const std::shared_ptr<Connection>& connection)
                                   { return WaitingOn(connection->m_socket.Get()) == 0; });
    DropWhole(std::shared_ptr<Connection>(idle != m_connections.end() ? *idle : m_connections.front()));
}

void IPCEndpoint::DropOldestUnfinished()
{
    const auto isOlder = [](const std::shared_ptr<Connection>& a, const std::shared_ptr<Connection>& b)
    { return a->m_uBuffered > 0 && (b->m_uBuffered == 0 || a->m_uId < b->m_uId); };
    DropWhole(
        std::shared_ptr<Connection>(*std::min_element(m_connections.begin(), m_connections.end(), isOlder)));
}

// A client whose topic was accepted may have been told already that its command was sent: what waits there is
// taken before. Once the socket is shut, no more can arrive on a local one; what arrives on a port meanwhile
// is not waited for.
void IPCEndpoint::DropWhole(const std::shared_ptr<Connection>& connection)
{
    const int socket = connection->m_socket.Get();
    shutdown(socket, SHUT_RD);
    for (std::size_t waiting = connection->m_pObject != nullptr ? WaitingOn(socket) : 0; waiting > 0;)
    {
        const ssize_t count = Receive(*connection);
        if (count == -1 && errno == EINTR)
            continue;
        if (count <= 0 || !TakeMessages(connection))
            break;
        waiting -= std::min(waiting, static_cast<std::size_t>(count));
    }
    Drop(connection);
}

// The object hears of it after the last command of its client.
void IPCEndpoint::Drop(const std::shared_ptr<Connection>& connection)
{
    epoll_ctl(m_poll.Get(), EPOLL_CTL_DEL, connection->m_socket.Get(), nullptr);
    connection->m_socket = Descriptor();
    m_uBuffered -= connection->m_uBuffered;
    if (connection->m_pObject != nullptr)
        Enqueue({connection, true, wxIPC_INVALID, std::string()});
    const auto place = m_places.find(connection->m_uId);
    m_connections.erase(place->second);
    m_places.erase(place);
}

void IPCEndpoint::Enqueue(Command command)
{
    m_uWaiting += command.m_strData.size();
    m_commands.push_back(std::move(command));
}

void IPCEndpoint::HandOverSoon()
{
    m_pEvents->CallAfter([this] { HandOver(); });
}

// A listener may run a loop of its own, which goes on with the next command. What it throws must not end the
// loop, which does not know of it.
void IPCEndpoint::HandOver()
{
    if (!IsOurs())
        return;
    if (m_commands.size() > 1)
        HandOverSoon();
    while (!m_commands.empty())
    {
        Command command = std::move(m_commands.front());
        m_commands.pop_front();
        m_uWaiting -= command.m_strData.size();
        try
        {
            command.Run();
        }
        catch (const std::exception& failure)
        {
            LogFailure(UTF8::ToUNICODE(TString<char>(failure.what())));
        }
        catch (...)
        {
            LogFailure(L"unknown exception");
        }
    }
}

} // namespace Toolkit
