// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_THREAD_H
#define TOOLKIT_THREADING_THREAD_H

#include "toolkit/core/NeedsWx.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

#include <wx/thread.h>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// Keeps wxWidgets running for as long as a thread object exists; destroyed after everything that needs
/// it.
class TOOLKIT_API ThreadBaseLibraryHold
{
protected:
    ThreadBaseLibraryHold();
    ~ThreadBaseLibraryHold();

    ThreadBaseLibraryHold(const ThreadBaseLibraryHold&) = delete;
    ThreadBaseLibraryHold& operator=(const ThreadBaseLibraryHold&) = delete;

    /// Called while the thread object is destroyed: starts wxWidgets once more if it was stopped too early.
    void HoldForDestruction();

private:
    bool m_bHeld;
};

/// A joinable worker thread; a subclass puts its work into DoWork. Its owner constructs it, runs it and
/// destroys it, and calls every operation but DoWork; the thread itself never does. The destructor asks the
/// thread to stop (TestDestroy returns true from then on) and waits for its end, so DoWork must return by
/// itself or watch TestDestroy; a thread that was run does its work even then. Each leaf class calls
/// StopAndWait in its own destructor, while its DoWork and members still exist. A host that has a wxWidgets
/// application object of its own destroys its threads, or lets them finish, before it ends that object.
/// Failures are returned, not logged.
///
/// @code
/// struct Worker : Toolkit::Thread
/// {
///     ~Worker() override { StopAndWait(); }
///     ExitCode DoWork() override { while (!TestDestroy()) LookForWork(); return nullptr; }
/// };
/// @endcode
class TOOLKIT_API Thread : private ThreadBaseLibraryHold, public wxThread
{
public:
    /// The identifier that stands for no thread.
    static const unsigned long UndefinedThread = 4294967295UL;

    /// Creates the operating system's thread, which does nothing until Run.
    Thread();
    ~Thread() override;

    /// True when the thread was started; a thread is started once.
    bool Run();
    /// True when a running thread was asked to pause. Quirk: it pauses only in its next call of TestDestroy.
    bool Pause();
    /// True when a paused thread goes on.
    bool Resume();
    /// Ends the thread at its next cancellation point, without running the rest of DoWork, or as Delete does;
    /// blocks until the thread has entered. Work that is killed may leave a lock taken, and may leak what it
    /// owns. Killed within a destructor, a `noexcept` function or a handler for every exception, it ends the
    /// process.
    wxThreadError Kill();
    /// Asks a started thread to stop and blocks until it has ended; wxTHREAD_NOT_RUNNING when it was never
    /// started, and wxTHREAD_MISC_ERROR on the thread itself.
    wxThreadError Delete(ExitCode* code = nullptr, wxThreadWait mode = wxTHREAD_WAIT_DEFAULT);
    /// Sets the priority, from 0 to 100. Any other number, and a thread that has ended, changes nothing.
    void SetPriority(unsigned int priority);

    /// Blocks until a started thread has ended and returns its exit code; null for a thread that was never
    /// started and on the thread itself.
    ExitCode Wait();

    /// True when the thread was started and has not finished yet, paused or not.
    bool IsRunning() const;
    /// True while the thread is asked to pause, or pauses.
    bool IsPaused() const;

    /// For DoWork: blocks while the thread is paused; true once the thread is to stop. Elsewhere it only
    /// tells whether the thread was asked to stop.
    bool TestDestroy() override;

    /// The identifier of the thread; UndefinedThread when the operating system's thread could not be created.
    unsigned long GetId() const;
    /// The identifier of the calling thread.
    static unsigned long GetCurrentId();
    /// True on the process's first thread, whether or not wxWidgets runs.
    static bool IsMainThread();

    /// Suspends the calling thread for at least that long; a signal does not cut it short.
    static void Sleep(unsigned int milliseconds);

protected:
    /// Asks the thread to stop and blocks until it has ended, whatever its state; afterwards it cannot be
    /// started.
    void StopAndWait();

    /// Calls DoWork. An override must call it in turn.
    ExitCode Entry() override;
    /// Called on the thread that deletes or stops, whichever Delete was asked, before it waits. An override
    /// must call it in turn.
    void OnDelete() override;
    /// Called on the thread that kills, whichever Kill was asked.
    void OnKill() override;

    /// The work of the thread, called once on it; the result becomes the exit code. Quirk: an exception that
    /// leaves it ends the thread without an exit code, and wxWidgets tells of it on the standard error
    /// output.
    virtual ExitCode DoWork() = 0;

private:
    // It is created here, once.
    using wxThread::Create;

    bool IsStarted() const;
    bool IsCurrent() const;
    ExitCode StopAndJoin();

    bool m_bCreated;
    bool m_bStarted = false;
    bool m_bKilled = false;
    std::atomic<bool> m_bAbandoned{false};
    std::atomic<bool> m_bEntered{false};

    // Guards how the thread enters, pauses, goes on and is asked to stop.
    std::mutex m_stateGuard;
    std::condition_variable m_stateChange;
    std::atomic<bool> m_bStopping{false};
    // Asked to stop by the base class, which waits for it to go on first.
    std::atomic<bool> m_bDeleted{false};
};

} // namespace Toolkit

#endif
