// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_INSTANCESERVER_H
#define TOOLKIT_INTERNAL_IPC_INSTANCESERVER_H

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "toolkit/internal/ipc/IPCConnections.h"
#include "toolkit/internal/ipc/InstanceCommands.h"

namespace Toolkit
{

// Listens for the first instance of an application: takes commands on a thread of its own, has a handler
// execute them, and sends the answers. Those who connect before `Serve` wait. It takes the commands of an
// `IPCClient` as well, which waits for no answer. Nothing it does throws but for want of memory.
class InstanceServer : private IPCConnections::Owner
{
public:
    using Handler = InstanceCommands::Handler;
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
    using Job = InstanceCommands::Job;
    using Jobs = InstanceCommands::Jobs;

    bool OnMessage(IPCConnections::Id id, const IPCMessage& message) override;
    void OnGone(IPCConnections::Id id) override;
    bool MayDrop(IPCConnections::Id id) const override;
    bool TakePiece(IPCConnections::Id id, Client& client, const IPCMessage& message);

    void Loop();
    bool ServeOnce();
    void DropEveryone();
    void WaitForEvents() const;
    void AcceptClients();
    void SendAnswers();
    void SendAnswer(const Job& job);
    void JoinThread(const Job& job);
    void StartWorker();
    void StartWaiting();
    void StartThreads();
    void Post();
    void FailTheRest();
    void Refuse(IPCConnections::Id id);

    IPCConnections m_connections;
    std::unordered_map<IPCConnections::Id, Client> m_clients;
    std::vector<IPCConnections::Id> m_newClients;
    const std::shared_ptr<InstanceCommands> m_pCommands;
    Executor m_executor;
    bool m_bParallel = false;
    std::thread m_loop;
    std::list<std::thread> m_threads;
    // No command is taken any more.
    bool m_bRefuses = false;
    bool m_bEnds = false;
    // When the last answers must have been read.
    std::chrono::steady_clock::time_point m_end;
};

} // namespace Toolkit

#endif
