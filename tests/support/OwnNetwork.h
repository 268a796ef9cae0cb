// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_OWNNETWORK_H
#define TOOLKIT_TESTS_SUPPORT_OWNNETWORK_H

#include <fstream>
#include <string>

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
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

// The same, and names of hosts are those in `hosts` alone; the folder is for files of this function.
inline bool EnterOwnNetwork(const std::string& folder, const std::string& hosts)
{
    const auto cover = [&folder](const char* name, const std::string& content)
    {
        const std::string file = folder + "/" + name;
        const std::string target = std::string("/etc/") + name;
        std::ofstream(file) << content;
        return access(target.c_str(), F_OK) != 0 ||
               mount(file.c_str(), target.c_str(), "none", MS_BIND, nullptr) == 0;
    };
    return EnterOwnNetwork() && mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0 &&
           cover("hosts", hosts) && cover("nsswitch.conf", "hosts: files\n");
}

} // namespace ToolkitTest

#endif
