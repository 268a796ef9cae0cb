// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_PIPE_H
#define TOOLKIT_INTERNAL_PROCESS_PIPE_H

#include <fcntl.h>
#include <unistd.h>

#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{

// The two ends of a pipe, which replaced images do not get. Both are closed when it is destroyed.
struct Pipe
{
    // False when there is none, and errno tells why. `flags` are those of `pipe2`.
    bool Open(int flags = 0)
    {
        int ends[2] = {-1, -1};
        if (pipe2(ends, flags | O_CLOEXEC) != 0)
            return false;
        m_read = Descriptor(ends[0]);
        m_write = Descriptor(ends[1]);
        return m_read.IsOpen() && m_write.IsOpen();
    }

    Descriptor m_read;
    Descriptor m_write;
};

} // namespace Toolkit

#endif
