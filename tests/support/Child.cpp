#include "tests/support/Child.h"

#include <cstdio>
#include <string>

#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace ToolkitTest
{

namespace
{

const unsigned int s_uNobody = 65534;

bool InChild(const std::function<bool()>& work)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
        _exit(work() ? 0 : 1);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// A user other than root may mount only as the root of a user namespace of its own.
bool SeparateMounts()
{
    if (geteuid() == 0)
        return unshare(CLONE_NEWNS) == 0;
    const std::string user = "0 " + std::to_string(geteuid()) + " 1";
    const std::string group = "0 " + std::to_string(getegid()) + " 1";
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    WriteBytes("/proc/self/uid_map", user);
    WriteBytes("/proc/self/setgroups", "deny");
    WriteBytes("/proc/self/gid_map", group);
    return true;
}

} // namespace

bool AsNobody(const std::function<bool()>& work)
{
    return InChild(
        [&]
        {
            if (geteuid() == 0 &&
                (setgroups(0, nullptr) != 0 || setgid(s_uNobody) != 0 || setuid(s_uNobody) != 0))
                return false;
            return work();
        });
}

bool OnSmallDisk(const std::string& folder, unsigned int kibibytes, const std::function<bool()>& work)
{
    return InChild(
        [&]
        {
            const std::string size = "size=" + std::to_string(kibibytes) + "k";
            return SeparateMounts() && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                   mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) == 0 && work();
        });
}

} // namespace ToolkitTest
