// SPDX-License-Identifier: MIT
#include "tests/support/IPCSupport.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <future>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "toolkit/app/EventPump.h"
#include "toolkit/app/IPCClient.h"

namespace ToolkitTest
{

namespace
{

sockaddr_un LocalAddress(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

sockaddr_in PortAddress(unsigned short port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

template <class Address>
int ConnectTo(int family, const Address& address)
{
    const int socket = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return socket;
    close(socket);
    return -1;
}

} // namespace

bool PumpUntil(const std::function<bool()>& condition)
{
    Toolkit::EventPump pump;
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition())
        if (std::chrono::steady_clock::now() > end || !pump.Run(2))
            return false;
    return true;
}

bool SendTo(const std::wstring& service, const std::wstring& command)
{
    std::future<bool> sent =
        std::async(std::launch::async, [&] { return Toolkit::IPCClient::Connect(service, command, 60000); });
    return PumpUntil([&sent]
                     { return sent.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }) &&
           sent.get();
}

std::wstring FreePort()
{
    sockaddr_in address = PortAddress(0);
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    socklen_t size = sizeof address;
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), size) != 0)
        return std::wstring();
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    close(socket);
    return std::to_wstring(ntohs(address.sin_port));
}

void LeaveStaleSocket(const std::string& path)
{
    const sockaddr_un address = LocalAddress(path);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    static_cast<void>(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    close(socket);
}

RawClient::RawClient(const std::string& path) : m_iSocket(ConnectTo(AF_UNIX, LocalAddress(path))) {}

RawClient::RawClient(unsigned short port) : m_iSocket(ConnectTo(AF_INET, PortAddress(port))) {}

RawClient::RawClient(RawClient&& other) noexcept : m_iSocket(std::exchange(other.m_iSocket, -1)) {}

RawClient& RawClient::operator=(RawClient&& other) noexcept
{
    std::swap(m_iSocket, other.m_iSocket);
    return *this;
}

RawClient::~RawClient()
{
    if (IsConnected())
        close(m_iSocket);
}

bool RawClient::Send(const std::string& bytes)
{
    return send(m_iSocket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
}

bool RawClient::SendAll(const std::string& bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();)
    {
        const ssize_t count = send(m_iSocket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0)
            return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

void RawClient::Shut()
{
    shutdown(m_iSocket, SHUT_RDWR);
}

std::string RawClient::Receive()
{
    char buffer[256];
    const ssize_t count = recv(m_iSocket, buffer, sizeof buffer, MSG_DONTWAIT);
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
}

bool RawClient::IsClosed()
{
    char byte = 0;
    const ssize_t count = recv(m_iSocket, &byte, 1, MSG_DONTWAIT | MSG_PEEK);
    return count == 0 || (count == -1 && errno != EAGAIN);
}

std::string Sized(const std::string& text)
{
    std::string bytes;
    for (unsigned int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(text.size() >> shift & 0xff);
    return bytes + text;
}

std::string ConnectBytes(const std::string& topic)
{
    return "\x0a" + Sized(topic);
}

std::string ExecuteBytes(int format, const std::string& data)
{
    return std::string("\x01") + static_cast<char>(format) + Sized(data);
}

} // namespace ToolkitTest
