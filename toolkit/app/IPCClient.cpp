// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCClient.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>

#include <poll.h>
#include <sys/socket.h>

#include "toolkit/app/IPCServer.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCEndpoint.h"
#include "toolkit/internal/ipc/IPCMessage.h"
#include "toolkit/internal/ipc/IPCSocket.h"
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

namespace
{

const unsigned int s_uDefaultTimeout = 10000;
// Between two tries to connect to a server that takes no more for now.
const int s_iRetryPause = 2;
const int s_iLongestWait = 60000;

using Clock = std::chrono::steady_clock;

// A connection to a server, under one time limit for all that is done with it.
class Conversation
{
public:
    explicit Conversation(unsigned int timeoutMilliseconds)
        : m_bLimited(timeoutMilliseconds != Mutex::s_uInfinite),
          m_limit(Clock::now() + std::chrono::milliseconds(timeoutMilliseconds))
    {
    }

    bool Open(const IPCAddress& address)
    {
        if (address.IsLocal() && !IPCSocket::IsOwnFile(address.GetPath().c_str()))
            return false;
        m_socket = IPCSocket::Make(address);
        return m_socket.IsOpen() && ConnectTo(address) && IPCSocket::IsPeerTrusted(m_socket.Get());
    }

    bool Send(const TString<char>& bytes)
    {
        std::size_t sent = 0;
        while (sent < bytes.size())
        {
            const ssize_t count =
                send(m_socket.Get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count >= 0)
                sent += static_cast<std::size_t>(count);
            else if (errno != EINTR && !(errno == EAGAIN && WaitFor(POLLOUT)))
                return false;
        }
        return true;
    }

    // The next code that the server sends; nothing when it sends none.
    std::optional<unsigned char> Receive()
    {
        unsigned char code = 0;
        for (;;)
        {
            const ssize_t count = recv(m_socket.Get(), &code, sizeof code, MSG_DONTWAIT);
            if (count == 1)
                return code;
            if (count == 0 || (errno != EINTR && !(errno == EAGAIN && WaitFor(POLLIN))))
                return std::nullopt;
        }
    }

private:
    bool ConnectTo(const IPCAddress& address)
    {
        for (;;)
            switch (IPCSocket::Connect(m_socket.Get(), address))
            {
            case IPCSocket::Connected::Yes:
                return true;
            case IPCSocket::Connected::Soon:
                return WaitFor(POLLOUT) && HasNoError();
            case IPCSocket::Connected::Full:
                if (!IsTimeLeft())
                    return false;
                IPCEndpoint::WaitFor(-1, 0, s_iRetryPause);
                break;
            default:
                return false;
            }
    }

    bool HasNoError() const
    {
        int error = 0;
        socklen_t size = sizeof error;
        return getsockopt(m_socket.Get(), SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
    }

    // True once the socket is ready, false when the time is over.
    bool WaitFor(short events) const
    {
        while (IsTimeLeft())
            if (IPCEndpoint::WaitFor(m_socket.Get(), events, TimeLeft()))
                return true;
        return false;
    }

    bool IsTimeLeft() const { return TimeLeft() > 0; }

    int TimeLeft() const
    {
        if (!m_bLimited)
            return s_iLongestWait;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_limit - Clock::now()).count();
        return static_cast<int>(std::clamp<long long>(left, 0, s_iLongestWait));
    }

    const bool m_bLimited;
    const Clock::time_point m_limit;
    Descriptor m_socket;
};

} // namespace

bool IPCClient::Connect(const TString<wchar_t>& service, const TString<wchar_t>& topic)
{
    return Connect(service, topic, s_uDefaultTimeout);
}

bool IPCClient::Connect(const TString<wchar_t>& service, const TString<wchar_t>& topic,
                        unsigned int timeoutMilliseconds)
{
    const IPCAddress address(IPCServer::ServiceOrDefault(service));
    const TString<char> text = UTF8::ToUTF8(topic);
    const bool empty = topic.empty() || topic[0] == L'\0';
    if (!address.IsValid() || text.empty() != empty || text.size() >= IPCMessage::s_uLargestPart)
        return false;
    TString<char> request;
    IPCMessage::AppendConnect(request, text);
    TString<char> command;
    IPCMessage::AppendExecute(command, text);
    IPCMessage::AppendDisconnect(command);
    Conversation conversation(timeoutMilliseconds);
    return conversation.Open(address) && conversation.Send(request) &&
           conversation.Receive() == IPCMessage::Connect && conversation.Send(command);
}

} // namespace Toolkit
