// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/NativePath.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/PathNames.h"

namespace Toolkit
{

namespace
{

const mode_t s_uNewFileMode = 0666;

bool MayBeUsed(int descriptor, int flags)
{
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode))
        return false;
    return !S_ISFIFO(status.st_mode) || (flags & O_ACCMODE) == O_WRONLY;
}

bool MakeBlocking(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFL);
    return flags != -1 && fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

} // namespace

NativePath::NativePath(const TString<wchar_t>& path) : m_strBytes(PathNames::ToNative(path)) {}

bool NativePath::IsFile() const
{
    struct stat status = {};
    return IsValid() && stat(c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool NativePath::IsFolder() const
{
    struct stat status = {};
    return IsValid() && stat(c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

int NativePath::Open(int flags) const
{
    if (!IsValid())
        return -1;
    int descriptor = -1;
    do
        descriptor = open(c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, s_uNewFileMode);
    while (descriptor == -1 && errno == EINTR);
    if (descriptor != -1 && (!MayBeUsed(descriptor, flags) || !MakeBlocking(descriptor)))
    {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

} // namespace Toolkit
