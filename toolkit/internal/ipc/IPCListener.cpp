// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCListener.h"

#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCSocket.h"
#include "toolkit/internal/system/PathLock.h"

namespace Toolkit
{

namespace
{

const mode_t s_uOwnerOnly = 0600;
const char* const c_strLockExtension = ".ipc-lock";
const std::chrono::seconds s_lockLimit(2);

// True for a socket of this user to which nobody listens any more.
bool IsStale(const IPCAddress& address)
{
    if (!IPCSocket::IsOwnFile(address.GetPath().c_str()))
        return false;
    const Descriptor probe = IPCSocket::Make(address);
    return probe.IsOpen() && IPCSocket::Connect(probe.Get(), address) == IPCSocket::Connected::Nobody;
}

bool Bind(int socket, const IPCAddress& address)
{
    return bind(socket, address.Get(), address.GetSize()) == 0;
}

Descriptor MakeSpare()
{
    return Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

} // namespace

IPCListener::~IPCListener()
{
    Close();
}

bool IPCListener::Open(const IPCAddress& address)
{
    m_socket = UnsharedDescriptor([&address] { return IPCSocket::Make(address); });
    m_spare = MakeSpare();
    const int reuse = 1;
    const bool listening =
        m_socket.IsOpen() &&
        (address.IsLocal() ? ListenAtPath(address)
                           : setsockopt(Get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) == 0 &&
                                 Bind(Get(), address) && listen(Get(), SOMAXCONN) == 0);
    if (!listening)
        Close();
    return listening;
}

// The lock is held while a server looks at a path and takes it, so that of two that start at once neither
// takes the other's socket for a stale one. The mode of a socket before it is bound is the one that its file
// gets.
bool IPCListener::ListenAtPath(const IPCAddress& address)
{
    const TString<char>& path = address.GetPath();
    const PathLock lock(path + c_strLockExtension, s_lockLimit);
    if (!lock.IsLocked() || fchmod(Get(), s_uOwnerOnly) != 0)
        return false;
    if (!Bind(Get(), address) &&
        (errno != EADDRINUSE || !IsStale(address) || unlink(path.c_str()) != 0 || !Bind(Get(), address)))
        return false;
    struct stat file = {};
    if (lstat(path.c_str(), &file) != 0)
    {
        unlink(path.c_str());
        return false;
    }
    m_strFile = address.GetAbsolutePath();
    m_device = file.st_dev;
    m_inode = file.st_ino;
    m_process = getpid();
    return listen(Get(), SOMAXCONN) == 0;
}

// The file goes first: as long as somebody listens to it, no other server takes it over.
void IPCListener::Close()
{
    if (m_process == getpid() && IsOwnFile())
        unlink(m_strFile.c_str());
    m_strFile.clear();
    m_process = 0;
    m_socket.Close();
    m_spare = Descriptor();
}

bool IPCListener::IsInPlace(const IPCAddress& address) const
{
    return m_socket.IsOpen() && address.IsOf(Get()) && (!address.IsLocal() || IsOwnFile());
}

bool IPCListener::IsOwnFile() const
{
    struct stat file = {};
    return lstat(m_strFile.c_str(), &file) == 0 && file.st_dev == m_device && file.st_ino == m_inode;
}

IPCListener::Accepted IPCListener::Accept(Descriptor& client)
{
    client = Descriptor(accept4(Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (client.IsOpen())
        return IPCSocket::IsPeerTrusted(client.Get()) ? Accepted::Client : Accepted::Refused;
    switch (errno)
    {
    case EMFILE:
    case ENFILE:
        return Accepted::Exhausted;
    case ENOBUFS:
    case ENOMEM:
        return Accepted::Failed;
    case ECONNABORTED:
    case EINTR:
        return Accepted::Refused;
    default:
        return Accepted::Nobody;
    }
}

bool IPCListener::RefuseOne()
{
    if (m_spare.IsOpen())
    {
        m_spare = Descriptor();
        Descriptor(accept4(Get(), nullptr, nullptr, SOCK_CLOEXEC));
    }
    m_spare = MakeSpare();
    return m_spare.IsOpen();
}

} // namespace Toolkit
