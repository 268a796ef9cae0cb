// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_INSTANCECOMMANDS_H
#define TOOLKIT_INTERNAL_IPC_INSTANCECOMMANDS_H

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <set>
#include <thread>

#include <signal.h>

#include "toolkit/internal/ipc/IPCConnections.h"
#include "toolkit/internal/ipc/InstanceWire.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

// The commands that an `InstanceServer` has taken: they wait, run, and are done until the server sends their
// answers. The server's loop and the threads that execute commands share it. It outlives the server where an
// executor still holds a call, which then does nothing.
class InstanceCommands
{
public:
    // Never throws.
    using Handler = std::function<InstanceWire::Answer(InstanceWire::Command)>;

    // It goes from those that wait to those that run to those that are done, and is never copied.
    struct Job
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
    using Jobs = std::list<Job>;

    // What the loop needs to know at one moment.
    struct State
    {
        bool m_bStopping;
        // Something runs, or is done and not yet taken.
        bool m_bBusy;
    };

    InstanceCommands();

    // Readable when something is done or the server stops; closed when the system has no descriptor left.
    const UnsharedDescriptor& GetWake() const { return m_wake; }

    // Before anything is executed. `signals` is the signal mask with which handlers are called.
    void SetHandler(Handler handler, const sigset_t& signals);

    // What only the loop calls.
    void Add(Job job);
    bool TakeDone(Jobs& done);
    State GetState();
    // Commands that wait and that want an answer: those of one client, and all.
    void RemoveWaitingOf(IPCConnections::Id client);
    void RemoveAsked();
    // All that wait. Takes the clients whose commands run or are done out of `clients`.
    void RemoveWaiting(std::set<IPCConnections::Id>& clients);
    // Nothing more begins, but for what runs already.
    void Stop();

    // The three ways to execute: the worker executes one after the other until the server stops.
    void NotifyWorker();
    void RunAll();
    // An executor is given a call of `RunNext` when `BeginCall` is true, and one call at a time: it executes
    // the command that waited for longest, if there is one and the server goes on.
    bool BeginCall();
    void RunNext();
    // Each has a thread of its own, which is the server's. False when nothing waits.
    bool TakeNext(Jobs::iterator& job);
    void RunAtOnce(Jobs::iterator job);

    const sigset_t& GetSignals() const { return m_signals; }

private:
    class Execution;

    void Wake() const;
    Jobs::iterator StartFirst();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Jobs m_waiting;
    Jobs m_running;
    Jobs m_done;
    // The executor has a call that has not begun.
    bool m_bCalled = false;
    bool m_bStopping = false;
    Handler m_handler;
    sigset_t m_signals = {};
    UnsharedDescriptor m_wake;
};

} // namespace Toolkit

#endif
