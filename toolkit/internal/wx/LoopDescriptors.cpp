// SPDX-License-Identifier: MIT
#include "toolkit/internal/wx/LoopDescriptors.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <fstream>
#include <locale>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "toolkit/internal/system/FolderStream.h"

namespace Toolkit
{

namespace
{

// What the last object found; it is looked at again each time.
int s_iLastPoll = -1;

// The kind of a descriptor and the number of what it stands for; empty when there is none.
std::string TargetOf(int descriptor)
{
    char bytes[64];
    const ssize_t count =
        readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), bytes, sizeof bytes);
    return count > 0 ? std::string(bytes, static_cast<std::size_t>(count)) : std::string();
}

// What a polling descriptor watches; empty for any other.
std::vector<int> WatchedBy(int poll)
{
    std::vector<int> watched;
    if (poll == -1 || TargetOf(poll) != "anon_inode:[eventpoll]")
        return watched;
    std::ifstream file("/proc/self/fdinfo/" + std::to_string(poll));
    file.imbue(std::locale::classic());
    for (std::string word; file >> word;)
        if (int descriptor = -1; word == "tfd:" && file >> descriptor)
            watched.push_back(descriptor);
    return watched;
}

bool Has(const std::vector<int>& descriptors, int descriptor)
{
    return std::find(descriptors.begin(), descriptors.end(), descriptor) != descriptors.end();
}

std::vector<int> OpenDescriptors()
{
    std::vector<int> descriptors;
    // The standard library's iterator ends the process when it finds no memory for a name.
    const FolderStream folder = OpenFolder(AT_FDCWD, "/proc/self/fd");
    while (const dirent* const entry = folder != nullptr ? readdir(folder.get()) : nullptr)
    {
        const char* const end = entry->d_name + std::strlen(entry->d_name);
        int descriptor = -1;
        if (std::from_chars(entry->d_name, end, descriptor).ec == std::errc())
            descriptors.push_back(descriptor);
    }
    return descriptors;
}

// The last result as a rule.
int PollThatWatches(int watched)
{
    if (Has(WatchedBy(s_iLastPoll), watched))
        return s_iLastPoll;
    for (const int descriptor : OpenDescriptors())
        if (Has(WatchedBy(descriptor), watched))
            return s_iLastPoll = descriptor;
    return -1;
}

void KeepFromPrograms(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFD);
    if (flags != -1 && (flags & FD_CLOEXEC) == 0)
        fcntl(descriptor, F_SETFD, flags | FD_CLOEXEC);
}

// Both ends: the other one stands for the same pipe, and was opened right after it as a rule.
void KeepPipeFromPrograms(int end)
{
    const std::string pipe = TargetOf(end);
    if (pipe.compare(0, 6, "pipe:[") != 0)
        return;
    KeepFromPrograms(end);
    if (TargetOf(end + 1) == pipe)
        return KeepFromPrograms(end + 1);
    for (const int descriptor : OpenDescriptors())
        if (TargetOf(descriptor) == pipe)
            KeepFromPrograms(descriptor);
}

} // namespace

LoopDescriptors::LoopDescriptors(int watched)
    : m_iPoll(PollThatWatches(watched)), m_before(WatchedBy(m_iPoll))
{
}

void LoopDescriptors::KeepPollFromPrograms() const
{
    if (m_iPoll != -1)
        KeepFromPrograms(m_iPoll);
}

void LoopDescriptors::KeepNewLoopFromPrograms() const
{
    for (const int descriptor : WatchedBy(m_iPoll))
        if (!Has(m_before, descriptor))
            KeepPipeFromPrograms(descriptor);
}

} // namespace Toolkit
