// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/NativePath.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/PathNames.h"

namespace Toolkit
{

namespace
{

bool IsForWriting(int flags)
{
    return (flags & O_ACCMODE) == O_WRONLY;
}

// The end of a pseudo-terminal that has no user at its other end.
bool IsNewTerminal(int descriptor)
{
    unsigned int number = 0;
    return ioctl(descriptor, TIOCGPTN, &number) == 0;
}

// 0, or the error that opening such a thing fails with.
int Refusal(int descriptor, const struct stat& status, int flags)
{
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    const bool refused = (S_ISFIFO(status.st_mode) && !IsForWriting(flags)) ||
                         (S_ISCHR(status.st_mode) && IsNewTerminal(descriptor));
    return refused ? ENXIO : 0;
}

// Only who writes, and who reads what a user types, waits as everyone does. Nothing that is read tells
// beforehand whether it would be for ever: the kernel's messages lie in what looks like a file.
bool MakeBlocking(int descriptor, const struct stat& status, int flags)
{
    if (!IsForWriting(flags) && !(S_ISCHR(status.st_mode) && isatty(descriptor) == 1))
        return true;
    const int before = fcntl(descriptor, F_GETFL);
    return before != -1 && fcntl(descriptor, F_SETFL, before & ~O_NONBLOCK) == 0;
}

} // namespace

NativePath::NativePath(const TString<wchar_t>& path) : m_strBytes(PathNames::ToNative(path)) {}

NativePath NativePath::OfBytes(std::string_view path)
{
    NativePath result;
    if (path.find('\0') == path.npos)
        result.m_strBytes.assign(path);
    return result;
}

mode_t NativePath::GetKind() const
{
    struct stat status = {};
    return IsValid() && stat(c_str(), &status) == 0 ? status.st_mode & S_IFMT : 0;
}

bool NativePath::IsFile() const
{
    return GetKind() == S_IFREG;
}

bool NativePath::IsFolder() const
{
    return GetKind() == S_IFDIR;
}

Descriptor NativePath::Open(int flags, mode_t mode) const
{
    struct stat status = {};
    return Open(flags, status, mode);
}

Descriptor NativePath::Open(int flags, struct stat& status, mode_t mode) const
{
    return OpenName(c_str(), flags, status, mode);
}

// The name of an invalid path is empty, which the system refuses (ENOENT).
Descriptor NativePath::OpenName(const char* name, int flags, struct stat& status, mode_t mode)
{
    int opened = -1;
    do
        opened = open(name, flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, mode);
    while (opened == -1 && errno == EINTR);
    Descriptor descriptor(opened);
    if (!descriptor.IsOpen() || fstat(descriptor.Get(), &status) != 0)
        return Descriptor();
    const int refusal = Refusal(descriptor.Get(), status, flags);
    if (refusal == 0 && MakeBlocking(descriptor.Get(), status, flags))
        return descriptor;
    const int error = refusal != 0 ? refusal : errno;
    descriptor.Close();
    errno = error;
    return descriptor;
}

} // namespace Toolkit
