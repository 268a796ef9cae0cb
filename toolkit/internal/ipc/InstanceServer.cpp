// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/InstanceServer.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <new>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/eventfd.h>

#include "toolkit/internal/ipc/IPCPayload.h"
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
    // Its command waits or is executed.
    bool m_bAsked = false;
};

// What the loop and those who execute commands share. It outlives the server where an executor still holds a
// call, which then does nothing.
struct InstanceServer::Work
{
    struct Job
    {
        IPCConnections::Id m_uClient;
        bool m_bWantsAnswer;
        InstanceWire::Command m_command;
    };
    struct Done
    {
        IPCConnections::Id m_uClient;
        InstanceWire::Answer m_answer;
        std::thread::id m_thread;
    };

    void Wake() const
    {
        const std::uint64_t one = 1;
        WriteAll(m_wake.Get(), &one, sizeof one);
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_waiting;
    std::vector<Done> m_done;
    std::multiset<IPCConnections::Id> m_running;
    // The executor has a call that has not begun.
    bool m_bPosted = false;
    bool m_bStopping = false;
    std::chrono::steady_clock::time_point m_end;
    Handler m_handler;
    Executor m_executor;
    bool m_bParallel = false;
    UnsharedDescriptor m_wake;
};

InstanceServer::InstanceServer() : m_connections(*this), m_pWork(std::make_shared<Work>())
{
    m_pWork->m_wake = UnsharedDescriptor([] { return Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)); });
}

InstanceServer::~InstanceServer()
{
    {
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        m_pWork->m_bStopping = true;
    }
    m_pWork->m_changed.notify_all();
    m_pWork->Wake();
    if (m_loop.joinable())
        m_loop.join();
    for (std::thread& thread : m_threads)
        thread.join();
    m_connections.Close();
}

bool InstanceServer::Open(const IPCAddress& address)
{
    return m_pWork->m_wake.IsOpen() && m_connections.Open(address);
}

bool InstanceServer::Serve(Handler handler, Executor executor, bool isParallel)
{
    const bool hasWorker = !executor && !isParallel;
    m_pWork->m_handler = std::move(handler);
    m_pWork->m_executor = std::move(executor);
    m_pWork->m_bParallel = isParallel;
    try
    {
        if (hasWorker)
            m_threads.emplace_back([work = m_pWork] { RunAll(work); });
        m_loop = std::thread([this] { Loop(); });
        return true;
    }
    catch (const std::system_error&)
    {
        m_connections.Close();
        return false;
    }
}

bool InstanceServer::OnMessage(IPCConnections::Id id, const IPCMessage& message)
{
    const auto client = m_clients.find(id);
    if (m_bFailedTheRest)
        return false;
    if (client == m_clients.end())
    {
        if (message.m_uCode != IPCMessage::Connect)
            return false;
        m_clients[id];
        m_connections.SendCode(id, IPCMessage::Connect);
        return true;
    }
    if (message.m_uCode == IPCMessage::Poke)
        return TakePiece(id, client->second, message);
    TString<wchar_t> text;
    if (message.m_uCode != IPCMessage::Execute)
        return false;
    if (IPCPayload::Decode(message.m_strData.data(), message.m_strData.size(), message.m_uFormat, text))
    {
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        m_pWork->m_waiting.push_back({id, false, {{Utf8Codec::Encode(text)}, std::string()}});
    }
    return true;
}

// One command at a time from each client.
bool InstanceServer::TakePiece(IPCConnections::Id id, Client& client, const IPCMessage& message)
{
    if (client.m_bAsked)
        return false;
    const std::size_t before = client.m_strCommand.capacity();
    client.m_strCommand += message.m_strData;
    m_connections.Count(id, static_cast<std::ptrdiff_t>(client.m_strCommand.capacity() - before));
    if (message.m_uFormat != InstanceWire::s_uLast)
        return true;
    Work::Job job = {id, true, {}};
    if (!InstanceWire::Decode(client.m_strCommand, job.m_command))
        return false;
    client.m_bAsked = true;
    client.m_strCommand = std::string();
    const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
    m_pWork->m_waiting.push_back(std::move(job));
    return true;
}

// Nobody waits for the answer any more; a command that wants none is executed all the same.
void InstanceServer::OnGone(IPCConnections::Id id)
{
    m_clients.erase(id);
    const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
    std::deque<Work::Job>& waiting = m_pWork->m_waiting;
    waiting.erase(std::remove_if(waiting.begin(), waiting.end(),
                                 [id](const Work::Job& job)
                                 { return job.m_uClient == id && job.m_bWantsAnswer; }),
                  waiting.end());
}

void InstanceServer::Loop()
{
    try
    {
        while (ServeOnce())
            continue;
    }
    catch (const std::bad_alloc&)
    {
        // Those who ask are told so by the end of their connections.
        m_connections.Close();
    }
    std::unique_lock<std::mutex> lock(m_pWork->m_mutex);
    m_pWork->m_changed.wait(lock, [this] { return m_pWork->m_bStopping && m_pWork->m_running.empty(); });
}

// False when the server has stopped and all is said.
bool InstanceServer::ServeOnce()
{
    WaitForEvents(m_bFailedTheRest);
    m_connections.Serve();
    SendAnswers();
    bool isStopping = false;
    bool isRunning = false;
    {
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        isStopping = m_pWork->m_bStopping;
        isRunning = !m_pWork->m_running.empty() || !m_pWork->m_done.empty();
    }
    if (!isStopping)
    {
        StartWaiting();
        return true;
    }
    if (!m_bFailedTheRest)
        FailTheRest();
    if (isRunning)
        m_pWork->m_end = std::chrono::steady_clock::now() + s_lastAnswers;
    return isRunning || (m_connections.HasUnsent() && std::chrono::steady_clock::now() < m_pWork->m_end);
}

void InstanceServer::WaitForEvents(bool isStopping) const
{
    pollfd waited[] = {{m_connections.Get(), POLLIN, 0}, {m_pWork->m_wake.Get(), POLLIN, 0}};
    poll(waited, 2, isStopping ? s_iLastTurn : -1);
    std::uint64_t count = 0;
    ReadUpTo(m_pWork->m_wake.Get(), &count, sizeof count);
}

void InstanceServer::SendAnswers()
{
    std::vector<Work::Done> done;
    {
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        done.swap(m_pWork->m_done);
    }
    for (const Work::Done& each : done)
    {
        const auto client = m_clients.find(each.m_uClient);
        if (client != m_clients.end() && client->second.m_bAsked)
        {
            client->second.m_bAsked = false;
            m_connections.Send(each.m_uClient, InstanceWire::Encode(each.m_answer));
        }
        const auto thread =
            std::find_if(m_threads.begin(), m_threads.end(),
                         [&each](const std::thread& one) { return one.get_id() == each.m_thread; });
        if (!m_pWork->m_bParallel || thread == m_threads.end())
            continue;
        thread->join();
        m_threads.erase(thread);
    }
}

void InstanceServer::StartWaiting()
{
    std::unique_lock<std::mutex> lock(m_pWork->m_mutex);
    if (m_pWork->m_bParallel)
    {
        std::size_t count = m_pWork->m_waiting.size();
        lock.unlock();
        for (; count > 0; --count)
            StartThread();
        return;
    }
    const bool mayPost = m_pWork->m_executor && !m_pWork->m_bPosted && m_pWork->m_running.empty();
    if (m_pWork->m_waiting.empty() || (m_pWork->m_executor && !mayPost))
        return;
    m_pWork->m_bPosted = true;
    lock.unlock();
    m_pWork->m_changed.notify_all();
    if (!mayPost)
        return;
    try
    {
        m_pWork->m_executor([work = m_pWork] { RunNext(work); });
    }
    catch (...)
    {
        // An executor that takes no call any more: nobody will execute what waits.
        FailTheRest();
    }
}

void InstanceServer::StartThread()
{
    try
    {
        m_threads.emplace_back([work = m_pWork] { RunNext(work); });
    }
    catch (const std::system_error&)
    {
        // There are no threads to be had for now: this one executes it, and serves nobody meanwhile.
        RunNext(m_pWork);
    }
}

// Those whose commands are not being executed.
void InstanceServer::FailTheRest()
{
    m_bFailedTheRest = true;
    m_connections.StopListening();
    std::vector<IPCConnections::Id> rest;
    {
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        m_pWork->m_waiting.clear();
        for (const auto& client : m_clients)
            if (m_pWork->m_running.count(client.first) == 0)
                rest.push_back(client.first);
    }
    for (const IPCConnections::Id client : rest)
        if (m_connections.SendCode(client, IPCMessage::Fail))
            m_connections.Drop(client);
}

// Executes the command that waited for longest, if there is one and the server goes on.
void InstanceServer::RunNext(const std::shared_ptr<Work>& work)
{
    std::unique_lock<std::mutex> lock(work->m_mutex);
    work->m_bPosted = false;
    if (work->m_bStopping || work->m_waiting.empty())
        return;
    Work::Job job = std::move(work->m_waiting.front());
    work->m_waiting.pop_front();
    work->m_running.insert(job.m_uClient);
    lock.unlock();
    Work::Done done = {job.m_uClient, work->m_handler(std::move(job.m_command)), std::this_thread::get_id()};
    lock.lock();
    work->m_done.push_back(std::move(done));
    work->m_running.erase(work->m_running.find(job.m_uClient));
    lock.unlock();
    work->m_changed.notify_all();
    work->Wake();
}

void InstanceServer::RunAll(const std::shared_ptr<Work>& work)
{
    for (;;)
    {
        {
            std::unique_lock<std::mutex> lock(work->m_mutex);
            work->m_changed.wait(lock, [&work] { return work->m_bStopping || !work->m_waiting.empty(); });
            if (work->m_bStopping)
                return;
        }
        RunNext(work);
    }
}

} // namespace Toolkit
