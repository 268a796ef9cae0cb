// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/InstanceCommands.h"

#include <cstdint>
#include <iterator>
#include <utility>

#include <sys/eventfd.h>

#include "toolkit/internal/system/SignalMask.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

// Of one command: its end is told however the handler ends, be it with its thread.
class InstanceCommands::Execution
{
public:
    Execution(InstanceCommands& commands, Jobs::iterator job) : m_commands(commands), m_job(job) {}
    ~Execution()
    {
        {
            const std::lock_guard<std::mutex> lock(m_commands.m_mutex);
            m_job->m_thread = std::this_thread::get_id();
            m_commands.m_done.splice(m_commands.m_done.end(), m_commands.m_running, m_job);
        }
        m_commands.Wake();
    }
    Execution(const Execution&) = delete;
    Execution& operator=(const Execution&) = delete;

    void Run() { m_job->m_answer = m_commands.m_handler(std::move(m_job->m_command)); }

private:
    InstanceCommands& m_commands;
    const Jobs::iterator m_job;
};

InstanceCommands::InstanceCommands()
    : m_wake([] { return Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)); })
{
}

void InstanceCommands::SetHandler(Handler handler, const sigset_t& signals)
{
    m_handler = std::move(handler);
    m_signals = signals;
}

void InstanceCommands::Add(Job job)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.push_back(std::move(job));
}

bool InstanceCommands::TakeDone(Jobs& done)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_done.empty())
        return false;
    done.splice(done.end(), m_done, m_done.begin());
    return true;
}

InstanceCommands::State InstanceCommands::GetState()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return {m_bStopping, !m_running.empty() || !m_done.empty()};
}

void InstanceCommands::RemoveWaitingOf(IPCConnections::Id client)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.remove_if([client](const Job& job) { return job.m_uClient == client && job.m_bWantsAnswer; });
}

void InstanceCommands::RemoveAsked()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.remove_if([](const Job& job) { return job.m_bWantsAnswer; });
}

void InstanceCommands::RemoveWaiting(std::set<IPCConnections::Id>& clients)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.clear();
    for (const Jobs* const answered : {&m_running, &m_done})
        for (const Job& job : *answered)
            clients.erase(job.m_uClient);
}

void InstanceCommands::Stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bStopping = true;
    }
    m_changed.notify_all();
    Wake();
}

void InstanceCommands::RunAll()
{
    for (;;)
    {
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_changed.wait(lock, [this] { return m_bStopping || !m_waiting.empty(); });
            if (m_bStopping)
                return;
        }
        const SignalMask hosts(m_signals);
        RunNext();
    }
}

void InstanceCommands::NotifyWorker()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_waiting.empty())
        m_changed.notify_all();
}

bool InstanceCommands::BeginCall()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_waiting.empty() || m_bCalled || !m_running.empty())
        return false;
    m_bCalled = true;
    return true;
}

void InstanceCommands::RunNext()
{
    Jobs::iterator job;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bCalled = false;
        if (m_bStopping || m_waiting.empty())
            return;
        job = StartFirst();
    }
    Execution(*this, job).Run();
}

bool InstanceCommands::TakeNext(Jobs::iterator& job)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_waiting.empty())
        return false;
    job = StartFirst();
    return true;
}

void InstanceCommands::RunAtOnce(Jobs::iterator job)
{
    const SignalMask hosts(m_signals);
    Execution(*this, job).Run();
}

void InstanceCommands::Wake() const
{
    const std::uint64_t one = 1;
    WriteAll(m_wake.Get(), &one, sizeof one);
}

// Under the lock, when there is one that waits.
InstanceCommands::Jobs::iterator InstanceCommands::StartFirst()
{
    m_running.splice(m_running.end(), m_waiting, m_waiting.begin());
    return std::prev(m_running.end());
}

} // namespace Toolkit
