// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_IPCSUPPORT_H
#define TOOLKIT_TESTS_SUPPORT_IPCSUPPORT_H

#include <functional>
#include <string>
#include <vector>

#include "toolkit/app/IPCConnectionEvent.h"
#include "toolkit/app/IPCServer.h"
#include "toolkit/core/smart_ptr.h"

namespace ToolkitTest
{

using Commands = std::vector<std::wstring>;

// A listener that keeps the commands, in `commands`, which outlives it.
class CommandRecorder : public Toolkit::IPCConnectionEvent
{
public:
    explicit CommandRecorder(Commands& commands) : m_commands(commands) {}

    void OnExecuteEvent(const Toolkit::TString<wchar_t>& command) override { m_commands.push_back(command); }

private:
    Commands& m_commands;
};

// A listener that calls a function.
class CommandCall : public Toolkit::IPCConnectionEvent
{
public:
    using Call = std::function<void(const Toolkit::TString<wchar_t>&)>;
    explicit CommandCall(Call call) : m_call(std::move(call)) {}

    void OnExecuteEvent(const Toolkit::TString<wchar_t>& command) override { m_call(command); }

private:
    const Call m_call;
};

// A server with a listener that keeps the commands.
class RecordingServer : public Toolkit::IPCServer
{
public:
    explicit RecordingServer(const Toolkit::TString<wchar_t>& service) : IPCServer(service)
    {
        AddListener(Toolkit::smart_ptr<Toolkit::IPCConnectionEvent>(new CommandRecorder(m_commands)));
    }

    const Commands& Received() const { return m_commands; }

private:
    Commands m_commands;
};

// True once `condition` holds; wxWidgets' events are delivered meanwhile, for at most a minute.
bool PumpUntil(const std::function<bool()>& condition);

// Sends the command from another thread while this one delivers events; the answer of the client.
bool SendTo(const std::wstring& service, const std::wstring& command);

// A TCP port of this machine that nobody listens on, as digits.
std::wstring FreePort();

// Leaves a stream socket at the path, to which nobody listens.
void LeaveStaleSocket(const std::string& path);

// A client that sends what it likes.
class RawClient
{
public:
    // Connects to a socket file, or to a port of this machine.
    explicit RawClient(const std::string& path);
    explicit RawClient(unsigned short port);
    RawClient(RawClient&& other) noexcept;
    RawClient& operator=(RawClient&& other) noexcept;
    ~RawClient();

    bool IsConnected() const { return m_iSocket != -1; }
    // False when the server is gone; sends as much as it takes at once.
    bool Send(const std::string& bytes);
    // Sends all of it, as the server takes it; false when the server is gone.
    bool SendAll(const std::string& bytes);
    // Ends a `SendAll` on another thread.
    void Shut();
    // What has arrived so far.
    std::string Receive();
    // True once the server has closed the connection.
    bool IsClosed();

private:
    int m_iSocket;
};

// The bytes of the protocol.
std::string Sized(const std::string& text);
std::string ConnectBytes(const std::string& topic);
std::string ExecuteBytes(int format, const std::string& data);

} // namespace ToolkitTest

#endif
