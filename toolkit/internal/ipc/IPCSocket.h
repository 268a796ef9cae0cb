// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCSOCKET_H
#define TOOLKIT_INTERNAL_IPC_IPCSOCKET_H

#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{
class IPCAddress;
}

// The system's stream sockets as server and client of a service need them: closed in child programs, never
// blocking, and local ones for this user alone.
namespace Toolkit::IPCSocket
{

Descriptor Make(const IPCAddress& address);

// True for a socket file, no link, of this user.
bool IsOwnFile(const char* path);

// True when the other end of a local connection belongs to a process of this user, and for every
// connection that is not local.
bool IsPeerTrusted(int socket);

enum class Connected
{
    Yes,
    // The connection is under way: it is made, or has failed, when the socket can be written to.
    Soon,
    // So many wait already that the server takes no more for now.
    Full,
    // Nobody listens there.
    Nobody,
    No
};
Connected Connect(int socket, const IPCAddress& address);

} // namespace Toolkit::IPCSocket

#endif
