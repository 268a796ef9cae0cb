// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/Transfer.h"

#include <cerrno>

#include <unistd.h>

namespace Toolkit
{

namespace
{

// Repeats `step`, which transfers what is left after `done` bytes and returns as `read` does.
template <class Step>
std::size_t Repeat(std::size_t size, Step step)
{
    for (std::size_t done = 0; done < size;)
    {
        const ssize_t count = step(done);
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else if (count == 0)
        {
            errno = 0;
            return done;
        }
        else if (errno != EINTR)
            return done;
    }
    return size;
}

} // namespace

bool WriteAll(int descriptor, const void* data, std::size_t size)
{
    return WriteUpTo(descriptor, data, size) == size;
}

std::size_t WriteUpTo(int descriptor, const void* data, std::size_t size)
{
    const char* const bytes = static_cast<const char*>(data);
    return Repeat(size, [&](std::size_t done) { return write(descriptor, bytes + done, size - done); });
}

std::size_t ReadUpTo(int descriptor, void* buffer, std::size_t size)
{
    char* const bytes = static_cast<char*>(buffer);
    return Repeat(size, [&](std::size_t done) { return read(descriptor, bytes + done, size - done); });
}

std::size_t ReadUpTo(int descriptor, void* buffer, std::size_t size, off_t offset)
{
    char* const bytes = static_cast<char*>(buffer);
    return Repeat(size,
                  [&](std::size_t done) {
                      return pread(descriptor, bytes + done, size - done, offset + static_cast<off_t>(done));
                  });
}

} // namespace Toolkit
