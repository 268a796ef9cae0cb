// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/GuardedFile.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/NativePath.h"

namespace Toolkit
{

namespace
{

bool IsOurs(const struct stat& status)
{
    return S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

// Only then does writing change no file of another name.
bool IsOursAlone(const struct stat& status)
{
    return IsOurs(status) && status.st_nlink == 1;
}

} // namespace

bool GuardedFile::IsAt(const NativePath& path)
{
    struct stat status = {};
    return path.IsValid() && lstat(path.c_str(), &status) == 0 && IsOurs(status);
}

bool GuardedFile::Is(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && IsOursAlone(status);
}

Descriptor GuardedFile::Open(const NativePath& path)
{
    // Looked at before, so that a FIFO's reader learns nothing, and again afterwards, as it may have changed.
    struct stat status = {};
    if (!path.IsValid() || (lstat(path.c_str(), &status) == 0 && !IsOursAlone(status)))
        return Descriptor();
    Descriptor descriptor = path.Open(O_WRONLY | O_CREAT | O_NOFOLLOW);
    return Is(descriptor.Get()) ? std::move(descriptor) : Descriptor();
}

bool GuardedFile::Empty(int descriptor)
{
    int answer = 0;
    do
        answer = ftruncate(descriptor, 0);
    while (answer != 0 && errno == EINTR);
    return answer == 0;
}

} // namespace Toolkit
