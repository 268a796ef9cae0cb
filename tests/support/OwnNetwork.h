#ifndef TOOLKIT_TESTS_SUPPORT_OWNNETWORK_H
#define TOOLKIT_TESTS_SUPPORT_OWNNETWORK_H

#include <string>

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace ToolkitTest
{

// Moves the calling process, which must have one thread only, into a network in which nothing but it exists,
// with a loopback, and into mounts of its own. False where that is not allowed.
inline bool EnterOwnNetwork()
{
    const int spaces = CLONE_NEWNET | CLONE_NEWNS;
    if (unshare(spaces) != 0 && unshare(spaces | CLONE_NEWUSER) != 0)
        return false;
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request = {};
    std::string("lo").copy(request.ifr_name, sizeof request.ifr_name - 1);
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    const bool up = ioctl(descriptor, SIOCSIFFLAGS, &request) == 0;
    close(descriptor);
    return up;
}

} // namespace ToolkitTest

#endif
