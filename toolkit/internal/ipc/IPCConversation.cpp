// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCConversation.h"

#include <algorithm>
#include <cerrno>

#include <poll.h>
#include <sys/socket.h>

#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCMessage.h"
#include "toolkit/internal/ipc/IPCSocket.h"

namespace Toolkit
{

namespace
{

// Between two tries to connect to a server that takes no more for now.
const int s_iRetryPause = 2;
const int s_iLongestWait = 60000;

} // namespace

IPCConversation::Opened IPCConversation::Open(const IPCAddress& address)
{
    if (address.IsLocal() && !IPCSocket::IsOwnFile(address.GetPath().c_str()))
        return Opened::Nobody;
    m_socket = IPCSocket::Make(address);
    const Opened opened = m_socket.IsOpen() ? ConnectTo(address) : Opened::No;
    return opened == Opened::Yes && !IPCSocket::IsPeerTrusted(m_socket.Get()) ? Opened::Stranger : opened;
}

bool IPCConversation::Send(std::string_view bytes)
{
    while (!bytes.empty() && IsTimeLeft())
    {
        const ssize_t count = send(m_socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR && !(errno == EAGAIN && WaitFor(POLLOUT)))
            return false;
    }
    return bytes.empty();
}

std::size_t IPCConversation::Receive(char* buffer, std::size_t size)
{
    // Also a server that never stops gets no more time.
    while (IsTimeLeft())
    {
        const ssize_t count = recv(m_socket.Get(), buffer, size, MSG_DONTWAIT);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EINTR && !(errno == EAGAIN && WaitFor(POLLIN)))
            return 0;
    }
    return 0;
}

std::optional<unsigned char> IPCConversation::ReceiveByte()
{
    char byte = 0;
    return Receive(&byte, 1) == 1 ? std::optional<unsigned char>(static_cast<unsigned char>(byte))
                                  : std::nullopt;
}

bool IPCConversation::SendCommand(const TString<char>& text)
{
    TString<char> request;
    IPCMessage::AppendConnect(request, text);
    TString<char> command;
    IPCMessage::AppendExecute(command, text);
    IPCMessage::AppendDisconnect(command);
    return Send(request) && ReceiveByte() == IPCMessage::Connect && Send(command);
}

void IPCConversation::Pause(int milliseconds) const
{
    m_wait(-1, 0, std::min(milliseconds, TimeLeft()));
}

IPCConversation::Opened IPCConversation::ConnectTo(const IPCAddress& address)
{
    for (;;)
        switch (IPCSocket::Connect(m_socket.Get(), address))
        {
        case IPCSocket::Connected::Yes:
            return Opened::Yes;
        case IPCSocket::Connected::Soon:
            return WaitFor(POLLOUT) && HasNoError() ? Opened::Yes : Opened::No;
        case IPCSocket::Connected::Full:
            if (!IsTimeLeft())
                return Opened::Busy;
            Pause(s_iRetryPause);
            break;
        case IPCSocket::Connected::Nobody:
            return Opened::Nobody;
        default:
            return Opened::No;
        }
}

bool IPCConversation::HasNoError() const
{
    int error = 0;
    socklen_t size = sizeof error;
    return getsockopt(m_socket.Get(), SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

// True once the socket is ready, false when the time is over.
bool IPCConversation::WaitFor(short events) const
{
    while (IsTimeLeft())
        if (m_wait(m_socket.Get(), events, TimeLeft()))
            return true;
    return false;
}

int IPCConversation::TimeLeft() const
{
    if (!m_end)
        return s_iLongestWait;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*m_end - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, s_iLongestWait));
}

} // namespace Toolkit
