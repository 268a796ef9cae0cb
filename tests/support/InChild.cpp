// SPDX-License-Identifier: MIT
#include "tests/support/InChild.h"

#include <cerrno>
#include <cstring>

#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace ToolkitTest
{

namespace
{

const unsigned int s_uNobody = 65534;
const char c_strNotAllowed[] = "not allowed: ";

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

bool MountSmallDisk(const std::string& folder, unsigned int kibibytes)
{
    const std::string options = "mode=1777,size=" + std::to_string(kibibytes) + "k";
    return SeparateMounts() && mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
}

testing::AssertionResult ResultOf(const std::string& wrong)
{
    if (wrong.rfind(c_strNotAllowed, 0) == 0)
    {
        [&wrong] { GTEST_SKIP() << wrong; }();
        return testing::AssertionSuccess();
    }
    return wrong.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << wrong;
}

} // namespace

ChildAnswer NotAllowed(const std::string& what)
{
    return c_strNotAllowed + what;
}

testing::AssertionResult InChild(const ChildWork& work)
{
    return ResultOf(ForkedCopy(work).Wait());
}

testing::AssertionResult AsNobody(const ChildWork& work)
{
    return InChild(
        [&]() -> ChildAnswer
        {
            if (geteuid() == 0 &&
                (setgroups(0, nullptr) != 0 || setgid(s_uNobody) != 0 || setuid(s_uNobody) != 0))
                return "the user cannot be changed";
            return work();
        });
}

testing::AssertionResult OnSmallDisk(const std::string& folder, unsigned int kibibytes, const ChildWork& work)
{
    return InChild(
        [&]() -> ChildAnswer
        {
            if (!MountSmallDisk(folder, kibibytes))
                return NotAllowed(std::string("a small disk: ") + std::strerror(errno));
            return work();
        });
}

bool RemountSmallDisk(const std::string& folder, bool readOnly)
{
    const unsigned long flags = readOnly ? MS_REMOUNT | MS_RDONLY : MS_REMOUNT;
    return mount("tmpfs", folder.c_str(), "tmpfs", flags, nullptr) == 0;
}

} // namespace ToolkitTest
