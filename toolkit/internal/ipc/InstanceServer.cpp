// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/InstanceServer.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <iterator>
#include <mutex>
#include <new>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>

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
    // Its command waits or is executed.
    bool m_bAsked = false;
};

// It goes from those that wait to those that run to those that are done, and is never copied.
struct InstanceServer::Job
{
    IPCConnections::Id m_uClient;
    bool m_bWantsAnswer;
    // What is counted for it, in bytes.
    std::size_t m_uMemory;
    InstanceWire::Command m_command;
    // None when the handler ended its thread.
    std::optional<InstanceWire::Answer> m_answer;
    std::thread::id m_thread;
};

// What the loop and those who execute commands share. It outlives the server where an executor still holds a
// call, which then does nothing.
struct InstanceServer::Work
{
    void Wake() const
    {
        const std::uint64_t one = 1;
        WriteAll(m_wake.Get(), &one, sizeof one);
    }

    // Under the lock, when there is one that waits.
    Jobs::iterator TakeNext()
    {
        m_running.splice(m_running.end(), m_waiting, m_waiting.begin());
        return std::prev(m_running.end());
    }

    bool TakeDone(Jobs& done)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_done.empty())
            return false;
        done.splice(done.end(), m_done, m_done.begin());
        return true;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Jobs m_waiting;
    Jobs m_running;
    Jobs m_done;
    // The executor has a call that has not begun.
    bool m_bPosted = false;
    bool m_bStopping = false;
    std::chrono::steady_clock::time_point m_end;
    Handler m_handler;
    Executor m_executor;
    bool m_bParallel = false;
    // What the one who had it serve blocked.
    sigset_t m_signals = {};
    UnsharedDescriptor m_wake;
};

// Of one command: its end is told however the handler ends, be it with its thread.
class InstanceServer::Execution
{
public:
    Execution(Work& work, Jobs::iterator job) : m_work(work), m_job(job) {}
    ~Execution()
    {
        {
            const std::lock_guard<std::mutex> lock(m_work.m_mutex);
            m_job->m_thread = std::this_thread::get_id();
            m_work.m_done.splice(m_work.m_done.end(), m_work.m_running, m_job);
        }
        m_work.m_changed.notify_all();
        m_work.Wake();
    }
    Execution(const Execution&) = delete;
    Execution& operator=(const Execution&) = delete;

    void Run() { m_job->m_answer = m_work.m_handler(std::move(m_job->m_command)); }

private:
    Work& m_work;
    const Jobs::iterator m_job;
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
    const SignalMask none;
    m_pWork->m_signals = none.Before();
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
        std::string argument = Utf8Codec::Encode(text);
        const std::size_t memory = sizeof(Job) + argument.capacity();
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        m_pWork->m_waiting.push_back({id, false, memory, {{std::move(argument)}, std::string()}, {}, {}});
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
    const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
    m_pWork->m_waiting.push_back(std::move(job));
    return true;
}

// Nobody waits for the answer any more; a command that wants none is executed all the same.
void InstanceServer::OnGone(IPCConnections::Id id)
{
    m_clients.erase(id);
    const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
    m_pWork->m_waiting.remove_if([id](const Job& job) { return job.m_uClient == id && job.m_bWantsAnswer; });
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
    {
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        m_pWork->m_waiting.remove_if([](const Job& job) { return job.m_bWantsAnswer; });
    }
    poll(nullptr, 0, s_iLastTurn);
}

// False when the server has stopped and all is said.
bool InstanceServer::ServeOnce()
{
    WaitForEvents();
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
    if (isRunning || !m_bEnds)
        m_pWork->m_end = std::chrono::steady_clock::now() + s_lastAnswers;
    if (!std::exchange(m_bEnds, true))
        FailTheRest();
    return isRunning || (m_connections.HasUnsent() && std::chrono::steady_clock::now() < m_pWork->m_end);
}

void InstanceServer::WaitForEvents() const
{
    pollfd waited[] = {{m_connections.Get(), POLLIN, 0}, {m_pWork->m_wake.Get(), POLLIN, 0}};
    poll(waited, 2, m_bEnds ? s_iLastTurn : -1);
    std::uint64_t count = 0;
    ReadUpTo(m_pWork->m_wake.Get(), &count, sizeof count);
}

void InstanceServer::SendAnswers()
{
    for (Jobs done; m_pWork->TakeDone(done); done.clear())
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
    if (job.m_answer)
        m_connections.Send(job.m_uClient, InstanceWire::Encode(*job.m_answer));
    else
        Refuse(job.m_uClient);
}

// The thread of one command ends with it. The worker ends only if a handler ends it; then there is another.
void InstanceServer::JoinThread(const Job& job)
{
    const auto thread = std::find_if(m_threads.begin(), m_threads.end(),
                                     [&job](const std::thread& one) { return one.get_id() == job.m_thread; });
    if (thread == m_threads.end() || (!m_pWork->m_bParallel && job.m_answer))
        return;
    thread->join();
    m_threads.erase(thread);
    if (m_pWork->m_bParallel)
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
    m_threads.emplace_back([work = m_pWork] { RunAll(work); });
}

void InstanceServer::StartWaiting()
{
    if (m_pWork->m_bParallel)
        StartThreads();
    else if (m_pWork->m_executor)
        Post();
    else
        m_pWork->m_changed.notify_all();
}

// When there are no threads to be had, this one executes the command, and serves nobody meanwhile.
void InstanceServer::StartThreads()
{
    for (;;)
    {
        Jobs::iterator job;
        {
            const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
            if (m_pWork->m_waiting.empty())
                return;
            job = m_pWork->TakeNext();
        }
        try
        {
            m_threads.emplace_back([work = m_pWork, job] { RunAtOnce(*work, job); });
        }
        catch (const std::exception&)
        {
            RunAtOnce(*m_pWork, job);
        }
    }
}

// One call at a time.
void InstanceServer::Post()
{
    {
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        if (m_pWork->m_waiting.empty() || m_pWork->m_bPosted || !m_pWork->m_running.empty())
            return;
        m_pWork->m_bPosted = true;
    }
    try
    {
        const SignalMask hosts(m_pWork->m_signals);
        m_pWork->m_executor([work = m_pWork] { RunNext(work); });
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
    {
        const std::lock_guard<std::mutex> lock(m_pWork->m_mutex);
        m_pWork->m_waiting.clear();
        for (const Jobs* const answered : {&m_pWork->m_running, &m_pWork->m_done})
            for (const Job& job : *answered)
                rest.erase(job.m_uClient);
    }
    for (const IPCConnections::Id client : rest)
        Refuse(client);
}

void InstanceServer::Refuse(IPCConnections::Id id)
{
    if (m_connections.SendCode(id, IPCMessage::Fail))
        m_connections.Drop(id);
}

// On a thread of the server's.
void InstanceServer::RunAtOnce(Work& work, Jobs::iterator job)
{
    const SignalMask hosts(work.m_signals);
    Execution(work, job).Run();
}

// Executes the command that waited for longest, if there is one and the server goes on.
void InstanceServer::RunNext(const std::shared_ptr<Work>& work)
{
    Jobs::iterator job;
    {
        const std::lock_guard<std::mutex> lock(work->m_mutex);
        work->m_bPosted = false;
        if (work->m_bStopping || work->m_waiting.empty())
            return;
        job = work->TakeNext();
    }
    Execution(*work, job).Run();
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
        const SignalMask hosts(work->m_signals);
        RunNext(work);
    }
}

} // namespace Toolkit
