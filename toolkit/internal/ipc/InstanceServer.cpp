// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/InstanceServer.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <new>
#include <set>
#include <utility>

#include <poll.h>

#include "toolkit/internal/ipc/IPCPayload.h"
#include "toolkit/internal/system/SignalMask.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/text/Utf8Codec.h"

namespace Toolkit
{

namespace
{

// How long an answer that is ready may take to be read when the server ends.
const std::chrono::seconds s_lastAnswers(2);
const int s_iLastTurn = 20;

} // namespace

struct InstanceServer::Client
{
    std::string m_strCommand;
    // It knows that it is connected.
    bool m_bAccepted = false;
    // Its command waits or is executed.
    bool m_bAsked = false;
};

InstanceServer::InstanceServer() : m_connections(*this), m_pCommands(std::make_shared<InstanceCommands>()) {}

InstanceServer::~InstanceServer()
{
    m_pCommands->Stop();
    if (m_loop.joinable())
        m_loop.join();
    for (std::thread& thread : m_threads)
        thread.join();
    m_connections.Close();
}

bool InstanceServer::Open(const IPCAddress& address)
{
    return m_pCommands->GetWake().IsOpen() && m_connections.Open(address);
}

bool InstanceServer::Serve(Handler handler, Executor executor, bool isParallel)
{
    const bool hasWorker = !executor && !isParallel;
    m_executor = std::move(executor);
    m_bParallel = isParallel;
    const SignalMask none;
    m_pCommands->SetHandler(std::move(handler), none.Before());
    try
    {
        if (hasWorker)
            StartWorker();
        m_loop = std::thread([this] { Loop(); });
        return true;
    }
    catch (const std::exception&)
    {
        m_connections.Close();
        return false;
    }
}

bool InstanceServer::OnMessage(IPCConnections::Id id, const IPCMessage& message)
{
    const auto client = m_clients.find(id);
    if (m_bRefuses)
        return false;
    if (client == m_clients.end())
    {
        if (message.m_uCode != IPCMessage::Connect)
            return false;
        m_clients[id];
        m_newClients.push_back(id);
        return true;
    }
    if (message.m_uCode == IPCMessage::Poke)
        return TakePiece(id, client->second, message);
    TString<wchar_t> text;
    if (message.m_uCode != IPCMessage::Execute)
        return false;
    if (IPCPayload::Decode(message.m_strData.data(), message.m_strData.size(), message.m_uFormat, text))
    {
        std::string argument = Utf8Codec::Encode(text);
        const std::size_t memory = sizeof(Job) + argument.capacity();
        m_pCommands->Add({id, false, memory, {{std::move(argument)}, std::string()}, {}, {}});
        m_connections.Count(id, static_cast<std::ptrdiff_t>(memory));
    }
    return true;
}

// One command at a time from each client. It is counted for its client until it is done.
bool InstanceServer::TakePiece(IPCConnections::Id id, Client& client, const IPCMessage& message)
{
    if (client.m_bAsked)
        return false;
    const std::size_t before = client.m_strCommand.capacity();
    client.m_strCommand += message.m_strData;
    m_connections.Count(id, static_cast<std::ptrdiff_t>(client.m_strCommand.capacity() - before));
    if (message.m_uFormat != InstanceWire::s_uLast)
        return true;
    // The empty text takes no memory of its own.
    const std::size_t memory = client.m_strCommand.capacity() - std::string().capacity();
    Job job = {id, true, memory, {}, {}, {}};
    if (!InstanceWire::Decode(client.m_strCommand, job.m_command))
        return false;
    client.m_bAsked = true;
    client.m_strCommand = std::string();
    m_pCommands->Add(std::move(job));
    return true;
}

// Nobody waits for the answer any more; a command that wants none is executed all the same.
void InstanceServer::OnGone(IPCConnections::Id id)
{
    m_clients.erase(id);
    m_pCommands->RemoveWaitingOf(id);
}

// One that waits for its answer is silent because it waits.
bool InstanceServer::MayDrop(IPCConnections::Id id) const
{
    const auto client = m_clients.find(id);
    return client == m_clients.end() || !(client->second.m_bAsked || m_connections.HasUnsent(id));
}

void InstanceServer::Loop()
{
    for (;;)
        try
        {
            while (ServeOnce())
                continue;
            return;
        }
        catch (const std::bad_alloc&)
        {
            DropEveryone();
        }
}

// For want of memory. Those who ask are told so by the end of their connections; those who come later may
// have more luck.
void InstanceServer::DropEveryone()
{
    m_connections.DropAll();
    m_clients.clear();
    m_newClients.clear();
    m_pCommands->RemoveAsked();
    poll(nullptr, 0, s_iLastTurn);
}

// False when the server has stopped and all is said.
bool InstanceServer::ServeOnce()
{
    WaitForEvents();
    m_connections.Serve();
    AcceptClients();
    SendAnswers();
    const InstanceCommands::State state = m_pCommands->GetState();
    if (!state.m_bStopping)
    {
        StartWaiting();
        return true;
    }
    if (state.m_bBusy || !m_bEnds)
        m_end = std::chrono::steady_clock::now() + s_lastAnswers;
    if (!std::exchange(m_bEnds, true))
        FailTheRest();
    return state.m_bBusy || (m_connections.HasUnsent() && std::chrono::steady_clock::now() < m_end);
}

void InstanceServer::WaitForEvents() const
{
    pollfd waited[] = {{m_connections.Get(), POLLIN, 0}, {m_pCommands->GetWake().Get(), POLLIN, 0}};
    poll(waited, 2, m_bEnds ? s_iLastTurn : -1);
    std::uint64_t count = 0;
    ReadUpTo(m_pCommands->GetWake().Get(), &count, sizeof count);
}

// One that has asked at once hears that it is connected with its answer, so that it wakes but once.
void InstanceServer::AcceptClients()
{
    for (const IPCConnections::Id id : m_newClients)
        if (const auto client = m_clients.find(id); client != m_clients.end() && !client->second.m_bAsked)
        {
            client->second.m_bAccepted = true;
            m_connections.SendCode(id, IPCMessage::Connect);
        }
    m_newClients.clear();
}

void InstanceServer::SendAnswers()
{
    for (Jobs done; m_pCommands->TakeDone(done); done.clear())
    {
        JoinThread(done.front());
        SendAnswer(done.front());
    }
}

void InstanceServer::SendAnswer(const Job& job)
{
    const auto client = m_clients.find(job.m_uClient);
    if (client == m_clients.end())
        return;
    m_connections.Count(job.m_uClient, -static_cast<std::ptrdiff_t>(job.m_uMemory));
    if (!job.m_bWantsAnswer)
        return;
    client->second.m_bAsked = false;
    const bool isAccepted = std::exchange(client->second.m_bAccepted, true);
    if (job.m_answer)
        m_connections.Send(job.m_uClient, InstanceWire::Encode(*job.m_answer, isAccepted));
    else
        Refuse(job.m_uClient);
}

// The thread of one command ends with it. The worker ends only if a handler ends it; then there is another.
void InstanceServer::JoinThread(const Job& job)
{
    const auto thread = std::find_if(m_threads.begin(), m_threads.end(),
                                     [&job](const std::thread& one) { return one.get_id() == job.m_thread; });
    if (thread == m_threads.end() || (!m_bParallel && job.m_answer))
        return;
    thread->join();
    m_threads.erase(thread);
    if (m_bParallel)
        return;
    try
    {
        StartWorker();
    }
    catch (const std::exception&)
    {
        FailTheRest();
    }
}

void InstanceServer::StartWorker()
{
    m_threads.emplace_back([commands = m_pCommands] { commands->RunAll(); });
}

void InstanceServer::StartWaiting()
{
    if (m_bParallel)
        StartThreads();
    else if (m_executor)
        Post();
    else
        m_pCommands->NotifyWorker();
}

// When there are no threads to be had, this one executes the command, and serves nobody meanwhile.
void InstanceServer::StartThreads()
{
    for (Jobs::iterator job; m_pCommands->TakeNext(job);)
    {
        try
        {
            m_threads.emplace_back([commands = m_pCommands, job] { commands->RunAtOnce(job); });
        }
        catch (const std::exception&)
        {
            m_pCommands->RunAtOnce(job);
        }
    }
}

// One call at a time.
void InstanceServer::Post()
{
    if (!m_pCommands->BeginCall())
        return;
    try
    {
        const SignalMask hosts(m_pCommands->GetSignals());
        m_executor([commands = m_pCommands] { commands->RunNext(); });
    }
    catch (...)
    {
        // An executor that takes no call any more: nobody will execute what waits.
        FailTheRest();
    }
}

// Those whose commands are not being executed, and from now on everyone who asks.
void InstanceServer::FailTheRest()
{
    m_bRefuses = true;
    std::set<IPCConnections::Id> rest;
    for (const auto& client : m_clients)
        rest.insert(client.first);
    m_pCommands->RemoveWaiting(rest);
    for (const IPCConnections::Id client : rest)
        Refuse(client);
}

void InstanceServer::Refuse(IPCConnections::Id id)
{
    if (m_connections.SendCode(id, IPCMessage::Fail))
        m_connections.Drop(id);
}

} // namespace Toolkit
