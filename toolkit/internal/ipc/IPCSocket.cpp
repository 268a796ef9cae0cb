// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCSocket.h"

#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/ipc/IPCAddress.h"

namespace Toolkit
{

namespace
{

// A port that nobody listens to may become the client's own, which is then connected to itself.
bool IsItsOwnPeer(int socket)
{
    sockaddr_storage own = {};
    sockaddr_storage peer = {};
    socklen_t ownSize = sizeof own;
    socklen_t peerSize = sizeof peer;
    return getsockname(socket, reinterpret_cast<sockaddr*>(&own), &ownSize) == 0 &&
           getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &peerSize) == 0 && ownSize == peerSize &&
           std::memcmp(&own, &peer, ownSize) == 0;
}

} // namespace

Descriptor IPCSocket::Make(const IPCAddress& address)
{
    return Descriptor(socket(address.GetFamily(), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

bool IPCSocket::IsOwnFile(const char* path)
{
    struct stat status = {};
    return lstat(path, &status) == 0 && S_ISSOCK(status.st_mode) && status.st_uid == geteuid();
}

bool IPCSocket::IsPeerTrusted(int socket)
{
    int family = 0;
    socklen_t size = sizeof family;
    if (getsockopt(socket, SOL_SOCKET, SO_DOMAIN, &family, &size) != 0)
        return false;
    if (family != AF_UNIX)
        return !IsItsOwnPeer(socket);
    ucred peer = {};
    size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

IPCSocket::Connected IPCSocket::Connect(int socket, const IPCAddress& address)
{
    int answer = 0;
    do
        answer = connect(socket, address.Get(), address.GetSize());
    while (answer != 0 && errno == EINTR);
    if (answer == 0 || errno == EISCONN)
        return Connected::Yes;
    switch (errno)
    {
    case EINPROGRESS:
    case EALREADY:
        return Connected::Soon;
    case EAGAIN:
        return Connected::Full;
    case ECONNREFUSED:
        return Connected::Nobody;
    default:
        return Connected::No;
    }
}

} // namespace Toolkit
