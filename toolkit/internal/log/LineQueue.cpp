// SPDX-License-Identifier: MIT
#include "toolkit/internal/log/LineQueue.h"

#include <utility>

#include <unistd.h>

#include "toolkit/internal/system/SignalMask.h"

namespace Toolkit
{

namespace
{

const std::chrono::milliseconds s_rest(1);

} // namespace

// Before the static object that the end of the process destroys, and so beyond it.
std::mutex LineQueue::s_listMutex;
LineQueue* LineQueue::s_pFirst = nullptr;

// An exit of the process destroys no queue that something else still holds.
struct LineQueue::AtEnd
{
    ~AtEnd()
    {
        const std::lock_guard<std::mutex> lock(s_listMutex);
        for (LineQueue* queue = s_pFirst; queue != nullptr; queue = queue->m_pNext)
            if (!queue->IsOfAnotherProcess())
                queue->Flush(std::chrono::steady_clock::time_point::max());
    }
};

const LineQueue::AtEnd LineQueue::s_atEnd;

LineQueue::LineQueue(std::size_t capacity, Drain drain)
    : m_uCapacity(capacity), m_drain(std::move(drain)), m_iProcess(getpid())
{
    const SignalMask none;
    m_thread = std::thread([this] { Run(); });
    const std::lock_guard<std::mutex> lock(s_listMutex);
    m_pNext = std::exchange(s_pFirst, this);
}

LineQueue::~LineQueue()
{
    {
        const std::lock_guard<std::mutex> lock(s_listMutex);
        LineQueue** place = &s_pFirst;
        while (*place != this)
            place = &(*place)->m_pNext;
        *place = m_pNext;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bStops = true;
    }
    m_work.notify_one();
    m_thread.join();
}

bool LineQueue::IsOfAnotherProcess() const
{
    return getpid() != m_iProcess;
}

bool LineQueue::Flush(std::chrono::steady_clock::time_point deadline)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::uint64_t pushed = m_uPushed;
    const auto isDone = [this, pushed] { return m_uDrained >= pushed; };
    if (isDone())
        return true;
    ++m_uFlushes;
    m_work.notify_one();
    bool done = true;
    if (deadline == std::chrono::steady_clock::time_point::max())
        m_done.wait(lock, isDone);
    else
        done = m_done.wait_until(lock, deadline, isDone);
    --m_uFlushes;
    return done;
}

void LineQueue::Run()
{
    while (HasMoreToDo())
    {
        Handover::Drain<Guard>(m_mutex, m_pending, m_taken, [this](const Pending& taken) { Write(taken); });
        Rest();
    }
}

void LineQueue::Rest()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_uWakeSize = m_uCapacity / 2;
    m_work.wait_for(lock, s_rest,
                    [this]
                    { return m_bStops || m_uFlushes != 0 || m_pending.lines.size() > m_uCapacity / 2; });
    m_uWakeSize = s_uNever;
}

bool LineQueue::HasMoreToDo()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_uWakeSize = 0;
    m_work.wait(lock, [this] { return !m_pending.empty() || m_bStops; });
    m_uWakeSize = s_uNever;
    return !m_pending.empty();
}

void LineQueue::Write(const Pending& taken)
{
    m_drain(taken.lines, taken.dropped);
    const Guard lock(m_mutex);
    m_uDrained += taken.count;
    m_done.notify_all();
}

} // namespace Toolkit
