// SPDX-License-Identifier: MIT
#include "toolkit/internal/wx/NewDescriptors.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{

namespace
{

// The base library opens three for its first loop.
const std::size_t s_uMost = 4;

bool IsOfLoop(const char* link)
{
    char bytes[64];
    const ssize_t count = readlink(link, bytes, sizeof bytes);
    const std::string_view target(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return target.substr(0, 6) == "pipe:[" || target == "anon_inode:[eventpoll]";
}

} // namespace

NewDescriptors::NewDescriptors()
{
    // Nothing is allocated between a descriptor and its owner.
    std::vector<Descriptor> taken;
    taken.reserve(s_uMost);
    for (std::size_t i = 0; i < s_uMost; ++i)
    {
        taken.emplace_back(eventfd(0, EFD_CLOEXEC));
        if (taken.back().IsOpen())
            m_numbers.push_back(taken.back().Get());
    }
}

void NewDescriptors::KeepLoopFromPrograms() const
{
    for (const int number : m_numbers)
        if (IsOfLoop(("/proc/self/fd/" + std::to_string(number)).c_str()))
            fcntl(number, F_SETFD, FD_CLOEXEC);
}

} // namespace Toolkit
