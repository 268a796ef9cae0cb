// SPDX-License-Identifier: MIT
#include "toolkit/internal/process/ImageReplacement.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include "toolkit/internal/system/FolderStream.h"

namespace Toolkit
{

namespace
{

bool IsInherited(int number)
{
    const int flags = number > STDERR_FILENO ? fcntl(number, F_GETFD) : -1;
    return flags != -1 && (flags & FD_CLOEXEC) == 0;
}

// Those that a new image would get, but for the standard streams.
std::vector<int> InheritedDescriptors()
{
    std::vector<int> inherited;
    const FolderStream folder = OpenFolder(AT_FDCWD, "/proc/self/fd");
    for (const dirent* entry = nullptr; folder != nullptr && (entry = readdir(folder.get())) != nullptr;)
    {
        int number = -1;
        std::from_chars(entry->d_name, entry->d_name + std::strlen(entry->d_name), number);
        if (IsInherited(number))
            inherited.push_back(number);
    }
    // Without a descriptor for the folder each number is tried.
    const int most = folder == nullptr ? getdtablesize() : 0;
    for (int number = 0; number < most; ++number)
        if (IsInherited(number))
            inherited.push_back(number);
    return inherited;
}

} // namespace

int ImageReplacement::Become(const char* const* files, char* const* arguments)
{
    const std::vector<int> inherited = InheritedDescriptors();
    for (const int number : inherited)
        fcntl(number, F_SETFD, FD_CLOEXEC);
    sigset_t none;
    sigset_t before;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, &before);
    errno = ENOENT;
    for (; *files != nullptr && errno == ENOENT; ++files)
        execve(*files, arguments, environ);
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    for (const int number : inherited)
        fcntl(number, F_SETFD, 0);
    return error;
}

} // namespace Toolkit
