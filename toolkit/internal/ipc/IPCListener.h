// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCLISTENER_H
#define TOOLKIT_INTERNAL_IPC_IPCLISTENER_H

#include <sys/types.h>

#include "toolkit/core/TString.h"
#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

class IPCAddress;

// A socket that listens at a service's address. A local one is a file that only its user may connect to: a
// socket file of this user to which nobody listens any more is taken over; a living one, and whatever else
// lies at the path, stays and fails the opening. The file goes with the listener, unless another lies there
// by then or the listener is a copy in a forked process, which does not have the socket. It never waits, but
// for servers that start on the same path.
class IPCListener
{
public:
    IPCListener() = default;
    ~IPCListener();

    IPCListener(const IPCListener&) = delete;
    IPCListener& operator=(const IPCListener&) = delete;

    // False when it cannot listen there. On a closed listener only.
    bool Open(const IPCAddress& address);
    void Close();
    // True while clients find this listener at that address.
    bool IsInPlace(const IPCAddress& address) const;

    int Get() const { return m_socket.Get(); }

    enum class Accepted
    {
        Client,
        // A client that was not let in.
        Refused,
        // There are no descriptors left; the client waits on.
        Exhausted,
        // The system lacks the memory for now; the client waits on.
        Failed,
        Nobody
    };
    // Takes the next client that waits. Its socket never blocks.
    Accepted Accept(Descriptor& client);
    // After `Exhausted`: refuses the next client, if there is a descriptor for that. True when there is one
    // for the client after it; when there is not, the listener had better not be asked for a while.
    bool RefuseOne();

private:
    bool ListenAtPath(const IPCAddress& address);
    bool IsOwnFile() const;

    UnsharedDescriptor m_socket;
    // Given up for a moment when there are no descriptors left, so that a client can be refused.
    Descriptor m_spare;
    // The file of a local socket, by its absolute path, and the process that made it.
    TString<char> m_strFile;
    dev_t m_device = 0;
    ino_t m_inode = 0;
    pid_t m_process = 0;
};

} // namespace Toolkit

#endif
