// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/Descriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "toolkit/internal/system/NoCancellation.h"

namespace Toolkit
{

bool Descriptor::Close()
{
    if (!IsOpen())
        return true;
    const NoCancellation whole;
    return close(Release()) == 0;
}

bool Descriptor::TryLock() const
{
    return flock(m_iDescriptor, LOCK_EX | LOCK_NB) == 0;
}

bool Descriptor::TryShareLock() const
{
    return flock(m_iDescriptor, LOCK_SH | LOCK_NB) == 0;
}

std::FILE* Descriptor::ToStream(const char* mode)
{
    std::FILE* const stream = IsOpen() ? fdopen(m_iDescriptor, mode) : nullptr;
    if (stream != nullptr)
        Release();
    Close();
    return stream;
}

int Descriptor::AboveStandard(int descriptor)
{
    if (descriptor < 0 || descriptor > STDERR_FILENO)
        return descriptor;
    const int higher = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(descriptor);
    errno = error;
    return higher;
}

} // namespace Toolkit
