// SPDX-License-Identifier: MIT
#include "toolkit/threading/Thread.h"

#include <chrono>
#include <thread>
#include <typeinfo>

#include <unistd.h>

#include "toolkit/internal/wx/WxLibrary.h"

namespace Toolkit
{

namespace
{

// A paused thread that is resumed or deleted through the base class is not told of it: it looks by itself.
constexpr std::chrono::milliseconds s_pauseLook{200};
// A thread that runs enters soon, unless a subclass keeps its Entry to itself.
constexpr std::chrono::seconds s_entryLimit{2};
const unsigned int s_uMostPriority = 100;

} // namespace

ThreadBaseLibraryHold::ThreadBaseLibraryHold() : m_bHeld(WxLibrary::Hold()) {}

ThreadBaseLibraryHold::~ThreadBaseLibraryHold()
{
    if (m_bHeld)
        WxLibrary::Stop();
}

void ThreadBaseLibraryHold::HoldForDestruction()
{
    if (!m_bHeld && !WxLibrary::IsStarted())
        m_bHeld = WxLibrary::Start();
}

const unsigned long Thread::UndefinedThread;

Thread::Thread() : wxThread(wxTHREAD_JOINABLE)
{
    const WxLibrary::Silence silence;
    m_bCreated = Create(0) == wxTHREAD_NO_ERROR;
}

Thread::~Thread()
{
    StopAndWait();
}

bool Thread::Run()
{
    if (IsCurrent() || !m_bCreated || IsStarted())
        return false;
    const WxLibrary::Silence silence;
    m_bStarted = wxThread::Run() == wxTHREAD_NO_ERROR;
    return m_bStarted;
}

bool Thread::Pause()
{
    const std::lock_guard<std::mutex> guard(m_stateGuard);
    if (IsCurrent() || m_bKilled || !wxThread::IsRunning())
        return false;
    const WxLibrary::Silence silence;
    return wxThread::Pause() == wxTHREAD_NO_ERROR;
}

bool Thread::Resume()
{
    const std::lock_guard<std::mutex> guard(m_stateGuard);
    if (IsCurrent() || !IsPaused())
        return false;
    const WxLibrary::Silence silence;
    if (wxThread::Resume() != wxTHREAD_NO_ERROR)
        return false;
    m_stateChange.notify_all();
    return true;
}

wxThreadError Thread::Kill()
{
    if (IsCurrent())
        return wxTHREAD_MISC_ERROR;
    if (!IsRunning())
        return wxTHREAD_NOT_RUNNING;
    const WxLibrary::Silence silence;
    const wxThreadError answer = wxThread::Kill();
    m_bKilled = answer == wxTHREAD_NO_ERROR;
    // For work that reaches no cancellation point.
    const std::lock_guard<std::mutex> guard(m_stateGuard);
    m_bStopping = m_bStopping || m_bKilled;
    m_stateChange.notify_all();
    return answer;
}

wxThreadError Thread::Delete(ExitCode* code, wxThreadWait /*mode*/)
{
    if (IsCurrent())
        return wxTHREAD_MISC_ERROR;
    if (!m_bCreated || !IsStarted())
        return wxTHREAD_NOT_RUNNING;
    const WxLibrary::Silence silence;
    const bool isAlive = IsAlive();
    const ExitCode result = StopAndJoin();
    if (isAlive && code != nullptr)
        *code = result;
    return wxTHREAD_NO_ERROR;
}

void Thread::SetPriority(unsigned int priority)
{
    const bool hasEnded = IsStarted() && !IsAlive();
    const WxLibrary::Silence silence;
    if (m_bCreated && !hasEnded && priority <= s_uMostPriority)
        wxThread::SetPriority(priority);
}

wxThread::ExitCode Thread::Wait()
{
    if (IsCurrent() || !IsStarted())
        return nullptr;
    return wxThread::Wait();
}

bool Thread::IsRunning() const
{
    return IsCurrent() || (!m_bKilled && IsAlive());
}

bool Thread::IsPaused() const
{
    return !m_bKilled && wxThread::IsPaused();
}

// Stays out of the base class's own wait for the end of a pause: a pause that the base class begins just when
// the thread is stopped would hold it there for ever. The guard is taken in a pause only: work that asks all
// the time would keep it from the owner.
bool Thread::TestDestroy()
{
    if (!IsCurrent())
        return m_bStopping;
    if (wxThread::IsPaused())
    {
        std::unique_lock<std::mutex> guard(m_stateGuard);
        while (!m_bStopping && wxThread::IsPaused())
            m_stateChange.wait_until(guard, std::chrono::system_clock::now() + s_pauseLook);
    }
    return m_bStopping || m_bDeleted;
}

unsigned long Thread::GetId() const
{
    return m_bCreated ? wxThread::GetId() : UndefinedThread;
}

unsigned long Thread::GetCurrentId()
{
    return wxThread::GetCurrentId();
}

bool Thread::IsMainThread()
{
    return getpid() == gettid();
}

void Thread::Sleep(unsigned int milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void Thread::StopAndWait()
{
    HoldForDestruction();
    if (!m_bCreated)
        return;
    // A thread that was never started can be ended only by starting it; Entry then returns at once.
    if (!IsStarted())
    {
        m_bAbandoned = true;
        m_bStarted = wxThread::Run() == wxTHREAD_NO_ERROR;
    }
    StopAndJoin();
}

wxThread::ExitCode Thread::Entry()
{
    {
        const std::lock_guard<std::mutex> guard(m_stateGuard);
        m_bEntered = true;
    }
    m_stateChange.notify_all();
    // A subclass that does not wait in its destructor may be gone before its thread gets here: there is no
    // DoWork left then. The identity is compared without a call, so that one look at the object decides both.
    if (m_bAbandoned || &typeid(*this) == &typeid(Thread))
        return nullptr;
    return DoWork();
}

// A thread that is cancelled on its way to its entry, in wxWidgets' code, ends the whole process.
void Thread::OnKill()
{
    const auto limit = std::chrono::system_clock::now() + s_entryLimit;
    std::unique_lock<std::mutex> guard(m_stateGuard);
    m_stateChange.wait_until(guard, limit, [this] { return m_bEntered || !IsAlive(); });
}

// A paused thread that the base class deletes is resumed by it after this, and must not end before.
void Thread::OnDelete()
{
    const std::lock_guard<std::mutex> guard(m_stateGuard);
    m_bDeleted = true;
    m_stateChange.notify_all();
}

// The base class may have started it behind this one's back. Whether it lives is asked first: a thread that
// no longer does has entered before.
bool Thread::IsStarted() const
{
    return m_bStarted || IsAlive() || m_bEntered;
}

// Does what the base class's Delete does, which complains when a thread is paused and ends just then.
wxThread::ExitCode Thread::StopAndJoin()
{
    {
        const WxLibrary::Silence silence;
        const std::lock_guard<std::mutex> guard(m_stateGuard);
        m_bStopping = true;
        if (IsPaused())
            wxThread::Resume();
        m_stateChange.notify_all();
    }
    OnDelete();
    return wxThread::Wait();
}

// Asked before anything that the owner writes.
bool Thread::IsCurrent() const
{
    return This() == this;
}

} // namespace Toolkit
