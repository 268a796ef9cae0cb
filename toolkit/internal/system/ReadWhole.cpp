// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/ReadWhole.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/text/WrittenText.h"

namespace Toolkit
{

namespace
{

const char* const c_strAttempt = "cannot read";
const mode_t s_uPermissions = 0777;
// What is read at once where the system does not tell a file's length.
const std::size_t s_uSlice = 65536;

Failure MakeFailure(Errc code, const std::string& path, const std::string& reason)
{
    return Failure(code, std::string(c_strAttempt) + " " + path + ": " + reason);
}

// What `read` returns, but for interruptions.
ssize_t ReadOnce(int descriptor, char* buffer, std::size_t size)
{
    ssize_t count = 0;
    do
        count = read(descriptor, buffer, size);
    while (count < 0 && errno == EINTR);
    return count;
}

// Reads up to one byte more than `largest`; false on an error, which errno tells.
bool ReadToEnd(int descriptor, std::size_t expected, std::size_t largest, std::string& bytes)
{
    const std::size_t most = std::max(largest, largest + 1);
    // One more than expected: a file gives less than was asked for at its end alone, so that the end is met
    // without another read. One whose length the system does not tell may do so anywhere.
    std::size_t room = std::min(expected + 1, most);
    ssize_t count = 0;
    const WriteText read = [&](char* memory, std::size_t size)
    {
        count = ReadOnce(descriptor, memory, size);
        return static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    };
    bytes.clear();
    for (bool ended = false; !ended && bytes.size() < most;)
    {
        if (bytes.size() == room)
            room = std::min(room + room / 2 + s_uSlice, most);
        AppendWritten(bytes, room - bytes.size(), read);
        if (count < 0)
            return false;
        ended = count == 0 || (bytes.size() == expected && bytes.size() < room);
    }
    return true;
}

} // namespace

Result<mode_t> ReadWhole(const std::string& path, std::size_t largest, std::string& bytes)
{
    struct stat status = {};
    const Descriptor file = NativePath::OpenName(path.c_str(), O_RDONLY, status);
    if (!file.IsOpen() && errno != ENXIO)
        return SystemFailure(c_strAttempt, path, errno);
    if (!file.IsOpen() || !S_ISREG(status.st_mode))
        return MakeFailure(Errc::Refused, path, "it is no regular file");
    const std::size_t size = static_cast<std::size_t>(status.st_size);
    if (size <= largest && !ReadToEnd(file.Get(), size, largest, bytes))
        return SystemFailure(c_strAttempt, path, errno);
    if (size > largest || bytes.size() > largest)
        return MakeFailure(Errc::LimitReached, path,
                           "it is longer than " + std::to_string(largest) + " bytes");
    return static_cast<mode_t>(status.st_mode & s_uPermissions);
}

} // namespace Toolkit
