// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCEndpoint.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

#include <poll.h>
#include <unistd.h>
#include <wx/app.h>
#include <wx/ipcbase.h>
#include <wx/thread.h>

#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/system/LeakOnPurpose.h"
#include "toolkit/internal/text/Utf8Codec.h"
#include "toolkit/internal/wx/LoopDescriptors.h"
#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/internal/wx/WxText.h"

namespace Toolkit
{

namespace
{

// Commands that wait to be handed over, in bytes; beyond it no client is served from within `WaitFor`.
const std::size_t s_uMostWaiting = 128 * 1024 * 1024;
// A longer topic is shown to the server that accepts it, in bytes of UTF-8, but is not kept for the commands.
const std::size_t s_uLongestTopic = 16 * 1024;

// Those that listen; for the main thread of wxWidgets alone.
std::vector<IPCEndpoint*> s_endpoints;

bool IsMainThread()
{
    return WxLibrary::IsStarted() && wxThread::IsMain();
}

// A number that wxWidgets has no format for must not become one.
wxIPCFormat FormatOf(const IPCMessage& message)
{
    return message.m_uFormat <= wxIPC_PRIVATE ? static_cast<wxIPCFormat>(message.m_uFormat) : wxIPC_INVALID;
}

} // namespace

struct IPCEndpoint::Client
{
    wxString m_topic;
    // It deletes itself when it is told of the disconnection. Null when the server had none to give.
    wxConnectionBase* m_pObject = nullptr;

    void DeleteObject()
    {
        delete m_pObject;
        m_pObject = nullptr;
    }
};

// An execute request, or the disconnection that follows the last one.
struct IPCEndpoint::Command
{
    std::shared_ptr<Client> m_pClient;
    bool m_bDisconnect;
    wxIPCFormat m_format;
    std::string m_strData;

    std::size_t GetMemory() const { return sizeof *this + m_strData.capacity(); }

    void Run()
    {
        wxConnectionBase* const object = m_pClient->m_pObject;
        if (object == nullptr)
            return;
        if (m_bDisconnect)
        {
            m_pClient->m_pObject = nullptr;
            object->OnDisconnect();
        }
        else
            object->OnExecute(m_pClient->m_topic, m_strData.data(), m_strData.size(), m_format);
    }
};

IPCEndpoint::IPCEndpoint(wxServerBase& server, Report report)
    : m_server(server), m_report(report), m_connections(*this)
{
}

IPCEndpoint::~IPCEndpoint()
{
    Close();
}

bool IPCEndpoint::Open(const IPCAddress& address)
{
    if (!IsMainThread() || !address.IsValid())
        return false;
    if (m_pSource != nullptr && m_application != nullptr && IsOurs() && m_connections.IsInPlace(address))
        return true;
    Close();
    m_bHolds = WxLibrary::Hold();
    try
    {
        if (m_connections.Open(address) && Watch())
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
    m_connections.Close();
    for (const auto& client : m_clients)
        client.second->DeleteObject();
    for (const Command& command : m_commands)
        command.m_pClient->DeleteObject();
    m_clients.clear();
    m_commands.clear();
    m_uWaiting = 0;
    m_pEvents.reset();
    if (m_bHolds)
        WxLibrary::Stop();
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
                waited.push_back({endpoint->m_connections.Get(), POLLIN, 0});
                endpoints.push_back(endpoint);
            }
    if (poll(waited.data(), waited.size(), milliseconds) <= 0)
        return false;
    for (std::size_t i = 1; i < waited.size(); ++i)
        if (waited[i].revents != 0)
            endpoints[i]->Serve();
    return waited[0].revents != 0;
}

bool IPCEndpoint::Watch()
{
    m_pEvents = std::make_unique<wxEvtHandler>();
    m_application = wxAppConsole::GetInstance();
    m_process = getpid();
    const WxLibrary::Silence silence;
    m_pSource.reset(wxEventLoopBase::AddSourceForFD(m_connections.Get(), this, wxEVENT_SOURCE_INPUT));
    if (m_pSource == nullptr)
        return false;
    LoopDescriptors(m_connections.Get()).KeepPollFromPrograms();
    s_endpoints.push_back(this);
    return true;
}

// What wxWidgets keeps of a source is gone when it was stopped meanwhile, and belongs to another
// process in a forked one: the source is abandoned then.
void IPCEndpoint::Forget()
{
    // Never opened, or closed since: then it may go on any thread.
    if (m_pSource == nullptr)
        return;
    s_endpoints.erase(std::remove(s_endpoints.begin(), s_endpoints.end(), this), s_endpoints.end());
    if (m_application == nullptr || !IsOurs())
        LeakOnPurpose(m_pSource.release());
    const WxLibrary::Silence silence;
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
    m_connections.Serve();
    if (!m_commands.empty())
        HandOverSoon();
}

bool IPCEndpoint::OnMessage(IPCConnections::Id id, const IPCMessage& message)
{
    const auto client = m_clients.find(id);
    if (client == m_clients.end())
        return Begin(id, message) || (m_connections.SendCode(id, IPCMessage::Fail), false);
    switch (message.m_uCode)
    {
    case IPCMessage::Execute:
        Enqueue({client->second, false, FormatOf(message), std::string(message.m_strData)});
        return true;
    case IPCMessage::Request:
    case IPCMessage::AdviseStart:
    case IPCMessage::AdviseStop:
        // One that takes no answers has to leave.
        return m_connections.SendCode(id, IPCMessage::Fail);
    case IPCMessage::Poke:
    case IPCMessage::Advise:
        return true;
    default:
        return false;
    }
}

bool IPCEndpoint::Begin(IPCConnections::Id id, const IPCMessage& message)
{
    if (message.m_uCode != IPCMessage::Connect)
        return false;
    const wxString topic = ToWx(Utf8Codec::Decode(TString<char>(std::string(message.m_strText))));
    const bool isKept = message.m_strText.size() <= s_uLongestTopic;
    const auto client = std::make_shared<Client>();
    client->m_topic = isKept ? topic : wxString();
    m_clients[id] = client;
    client->m_pObject = m_server.OnAcceptConnection(topic);
    if (client->m_pObject == nullptr)
        return false;
    if (isKept)
        m_connections.Count(id, static_cast<std::ptrdiff_t>(topic.length() * sizeof(wchar_t)));
    return m_connections.SendCode(id, IPCMessage::Connect);
}

// The object hears of it after the last command of its client.
void IPCEndpoint::OnGone(IPCConnections::Id id)
{
    const auto client = m_clients.find(id);
    if (client == m_clients.end())
        return;
    Enqueue({client->second, true, wxIPC_INVALID, std::string()});
    m_clients.erase(client);
}

void IPCEndpoint::Enqueue(Command command)
{
    m_uWaiting += command.GetMemory();
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
        m_uWaiting -= command.GetMemory();
        try
        {
            command.Run();
        }
        catch (const std::exception& failure)
        {
            m_report(Utf8Codec::Decode(TString<char>(failure.what())));
        }
        catch (...)
        {
            m_report(L"unknown exception");
        }
    }
}

} // namespace Toolkit
