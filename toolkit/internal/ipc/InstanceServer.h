// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_INSTANCESERVER_H
#define TOOLKIT_INTERNAL_IPC_INSTANCESERVER_H

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <unordered_map>

#include "toolkit/internal/ipc/IPCConnections.h"
#include "toolkit/internal/ipc/InstanceWire.h"

namespace Toolkit
{

// Listens for the first instance of an application: takes commands on a thread of its own, has a handler
// execute them, and sends the answers. Those who connect before `Serve` wait. It takes the commands of an
// `IPCClient` as well, which waits for no answer. Nothing it does throws but for want of memory.
class InstanceServer : private IPCConnections::Owner
{
public:
    // Never throws.
    using Handler = std::function<InstanceWire::Answer(InstanceWire::Command)>;
    using Executor = std::function<void(std::function<void()>)>;

    InstanceServer();
    // Waits for the handlers that run; all others who ask are told at once that there is no answer. Never on
    // a thread on which a handler runs.
    ~InstanceServer() override;

    InstanceServer(const InstanceServer&) = delete;
    InstanceServer& operator=(const InstanceServer&) = delete;

    bool Open(const IPCAddress& address);

    // Once. Commands are executed one at a time, on a thread of the server's own or by the executor, or each
    // on a thread of its own at once; handlers and the executor are called with the signal mask of the
    // caller. False when there are no threads to be had; nobody listens then.
    bool Serve(Handler handler, Executor executor, bool isParallel);

private:
    struct Client;
    struct Job;
    using Jobs = std::list<Job>;
    struct Work;
    class Execution;

    bool OnMessage(IPCConnections::Id id, const IPCMessage& message) override;
    void OnGone(IPCConnections::Id id) override;
    bool MayDrop(IPCConnections::Id id) const override;
    bool TakePiece(IPCConnections::Id id, Client& client, const IPCMessage& message);

    void Loop();
    bool ServeOnce();
    void DropEveryone();
    void WaitForEvents() const;
    void SendAnswers();
    void SendAnswer(const Job& job);
    void JoinThread(const Job& job);
    void StartWorker();
    void StartWaiting();
    void StartThreads();
    void Post();
    void FailTheRest();
    void Refuse(IPCConnections::Id id);
    static void RunAtOnce(Work& work, Jobs::iterator job);
    static void RunNext(const std::shared_ptr<Work>& work);
    static void RunAll(const std::shared_ptr<Work>& work);

    IPCConnections m_connections;
    std::unordered_map<IPCConnections::Id, Client> m_clients;
    const std::shared_ptr<Work> m_pWork;
    std::thread m_loop;
    std::list<std::thread> m_threads;
    // No command is taken any more.
    bool m_bRefuses = false;
    bool m_bEnds = false;
};

} // namespace Toolkit

#endif
