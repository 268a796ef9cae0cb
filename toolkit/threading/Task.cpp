// SPDX-License-Identifier: MIT
#include "toolkit/threading/Task.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "toolkit/threading/Event.h"

namespace Toolkit
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds s_changeInterval{50};

} // namespace

struct TaskProgress::Content
{
    std::int64_t m_iDone = 0;
    std::int64_t m_iAll = 0;
    std::string m_strText;
    bool m_bFinished = false;
};

// What the task, its thread and the calls on their way to an executor share.
struct TaskBase::State : std::enable_shared_from_this<State>
{
    struct Listener
    {
        std::function<void(const TaskProgress&)> m_changed;
        Executor m_executor;
        // Set under m_calling: a call that an executor makes late may be the one that tells of the end.
        mutable bool m_bToldOfEnd = false;
    };

    bool IsCurrent() const { return m_threadId.load() == std::this_thread::get_id(); }

    void Work(std::function<void(TaskContext&)> work)
    {
        m_threadId = std::this_thread::get_id();
        TaskContext context(this);
        try
        {
            work(context);
        }
        catch (...)
        {
            m_pException = std::current_exception();
        }
        work = nullptr;
        Finish();
    }

    void Finish()
    {
        std::shared_ptr<const Listener> listener;
        {
            const std::lock_guard<std::mutex> lock(m_guard);
            m_bEnded = true;
            listener = m_pListener;
        }
        if (listener)
            Tell(listener);
        m_finished.Set();
    }

    // The end of the wait until the next call is due; none without a call that waits.
    std::optional<Clock::time_point> NextCall()
    {
        const std::lock_guard<std::mutex> lock(m_guard);
        if (!m_bChanged || !m_pListener || !MayTell(*m_pListener))
            return std::nullopt;
        return m_nextCall;
    }

    // Tells of the last report, where it is time for it.
    void TellIfDue()
    {
        std::shared_ptr<const Listener> listener;
        {
            const std::lock_guard<std::mutex> lock(m_guard);
            const Clock::time_point now = Clock::now();
            if (!m_bChanged || m_bEnded || !m_pListener || !MayTell(*m_pListener) || now < m_nextCall)
                return;
            m_bChanged = false;
            m_nextCall = now + s_changeInterval;
            listener = m_pListener;
        }
        Tell(listener);
    }

    bool MayTell(const Listener& listener) const { return listener.m_executor || IsCurrent(); }

    void Tell(const std::shared_ptr<const Listener>& listener)
    {
        const auto call = [state = shared_from_this(), listener] { state->Call(*listener); };
        try
        {
            if (listener->m_executor)
                listener->m_executor(call);
            else
                call();
        }
        catch (...)
        {
            // The work is not ended by those who look on.
        }
    }

    void Call(const Listener& listener)
    {
        const std::lock_guard<std::recursive_mutex> lock(m_calling);
        if (m_bClosed || listener.m_bToldOfEnd || !IsInstalled(listener))
            return;
        const TaskProgress progress = Progress();
        listener.m_bToldOfEnd = progress.IsFinished();
        listener.m_changed(progress);
    }

    bool IsInstalled(const Listener& listener)
    {
        const std::lock_guard<std::mutex> lock(m_guard);
        return m_pListener.get() == &listener;
    }

    TaskProgress Progress()
    {
        const std::lock_guard<std::mutex> lock(m_guard);
        if (!m_bEnded || (m_progress.m_pContent && m_progress.m_pContent->m_bFinished))
            return m_progress;
        auto content = m_progress.m_pContent ? std::make_shared<TaskProgress::Content>(*m_progress.m_pContent)
                                             : std::make_shared<TaskProgress::Content>();
        content->m_bFinished = true;
        m_progress.m_pContent = std::move(content);
        return m_progress;
    }

    void SetProgress(std::shared_ptr<const TaskProgress::Content> content)
    {
        {
            const std::lock_guard<std::mutex> lock(m_guard);
            if (m_bEnded)
                return;
            m_progress.m_pContent.swap(content);
            m_bChanged = true;
        }
        TellIfDue();
    }

    std::thread m_thread;
    std::atomic<std::thread::id> m_threadId{std::thread::id()};
    Event m_cancelled;
    Event m_finished;

    // What the work leaves, and whether it was taken.
    std::shared_ptr<void> m_pValue;
    std::exception_ptr m_pException;
    std::atomic<bool> m_bTaken{false};

    // Guards what follows it.
    std::mutex m_guard;
    TaskProgress m_progress;
    std::shared_ptr<const Listener> m_pListener;
    bool m_bChanged = false;
    bool m_bEnded = false;
    Clock::time_point m_nextCall;

    // Held during a call; recursive, as the call may destroy the task or report.
    std::recursive_mutex m_calling;
    bool m_bClosed = false;
};

TaskProgress::TaskProgress() noexcept = default;
TaskProgress::~TaskProgress() = default;
TaskProgress::TaskProgress(const TaskProgress& other) noexcept = default;
TaskProgress& TaskProgress::operator=(const TaskProgress& other) noexcept = default;

std::int64_t TaskProgress::Done() const noexcept
{
    return m_pContent ? m_pContent->m_iDone : 0;
}

std::int64_t TaskProgress::All() const noexcept
{
    return m_pContent ? m_pContent->m_iAll : 0;
}

const std::string& TaskProgress::Text() const noexcept
{
    static const std::string s_strNone;
    return m_pContent ? m_pContent->m_strText : s_strNone;
}

bool TaskProgress::IsFinished() const noexcept
{
    return m_pContent && m_pContent->m_bFinished;
}

bool TaskContext::IsCancelled() const noexcept
{
    return static_cast<const TaskBase::State*>(m_pState)->m_cancelled.IsSet();
}

bool TaskContext::SleepFor(std::chrono::nanoseconds time)
{
    auto& state = *static_cast<TaskBase::State*>(m_pState);
    const Clock::time_point now = Clock::now();
    const Clock::time_point end =
        time < Clock::time_point::max() - now ? now + time : Clock::time_point::max();
    while (!state.m_cancelled.IsSet())
    {
        const std::optional<Clock::time_point> call = state.NextCall();
        const Clock::time_point next = call ? std::min(*call, end) : end;
        if (state.m_cancelled.WaitFor(next - Clock::now()))
            break;
        state.TellIfDue();
        if (Clock::now() >= end)
            return true;
    }
    return false;
}

void TaskContext::Report(std::int64_t done, std::int64_t all, std::string_view text)
{
    auto content = std::make_shared<TaskProgress::Content>();
    content->m_iDone = done;
    content->m_iAll = all;
    content->m_strText = text;
    static_cast<TaskBase::State*>(m_pState)->SetProgress(std::move(content));
}

TaskBase::TaskBase() noexcept = default;

TaskBase::TaskBase(std::function<void(TaskContext&)> work, std::shared_ptr<void> value)
    : m_pState(std::make_shared<State>())
{
    m_pState->m_pValue = std::move(value);
    try
    {
        m_pState->m_thread = std::thread([state = m_pState, work = std::move(work)]() mutable
                                         { state->Work(std::move(work)); });
    }
    catch (const std::system_error&)
    {
        m_pState->m_pException = std::current_exception();
        m_pState->Finish();
    }
}

TaskBase::TaskBase(TaskBase&& other) noexcept = default;

TaskBase& TaskBase::operator=(TaskBase&& other) noexcept
{
    if (this != &other)
    {
        const std::shared_ptr<State> next = std::move(other.m_pState);
        End();
        m_pState = next;
    }
    return *this;
}

TaskBase::~TaskBase()
{
    End();
}

void TaskBase::Cancel() noexcept
{
    if (m_pState)
        m_pState->m_cancelled.Set();
}

bool TaskBase::IsCancelled() const noexcept
{
    return m_pState && m_pState->m_cancelled.IsSet();
}

bool TaskBase::IsRunning() const noexcept
{
    return m_pState && !m_pState->m_finished.IsSet();
}

void TaskBase::Wait() const noexcept
{
    if (m_pState && !m_pState->IsCurrent())
        m_pState->m_finished.Wait();
}

bool TaskBase::WaitFor(std::chrono::nanoseconds time) const noexcept
{
    return !m_pState || m_pState->m_finished.WaitFor(time);
}

TaskProgress TaskBase::Progress() const
{
    return m_pState ? m_pState->Progress() : TaskProgress();
}

void TaskBase::OnChange(std::function<void(const TaskProgress&)> changed, Executor executor)
{
    if (!m_pState)
        return;
    std::shared_ptr<const State::Listener> listener;
    if (changed)
        listener = std::make_shared<State::Listener>(
            State::Listener{std::move(changed), std::move(executor), false});
    bool ended = false;
    {
        const std::lock_guard<std::mutex> lock(m_pState->m_guard);
        m_pState->m_pListener.swap(listener);
        ended = m_pState->m_bEnded;
        if (ended)
            listener = m_pState->m_pListener;
    }
    if (ended && listener)
        m_pState->Tell(listener);
}

std::shared_ptr<void> TaskBase::Take()
{
    if (!m_pState)
        throw std::logic_error("the task has no work");
    if (m_pState->IsCurrent())
        throw std::logic_error("the task asks for its own value");
    m_pState->m_finished.Wait();
    if (m_pState->m_bTaken.exchange(true))
        throw std::logic_error("the value of the task was taken before");
    if (m_pState->m_pException)
        std::rethrow_exception(std::exchange(m_pState->m_pException, nullptr));
    return m_pState->m_pValue;
}

void TaskBase::End() noexcept
{
    // Kept here: a call that is made meanwhile may look at this object.
    const std::shared_ptr<State> state = m_pState;
    if (!state)
        return;
    state->m_cancelled.Set();
    if (state->m_thread.joinable())
    {
        if (state->IsCurrent())
            state->m_thread.detach();
        else
            state->m_thread.join();
    }
    {
        const std::lock_guard<std::recursive_mutex> lock(state->m_calling);
        state->m_bClosed = true;
    }
    m_pState.reset();
}

} // namespace Toolkit
