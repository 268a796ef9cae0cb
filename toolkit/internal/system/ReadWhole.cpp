// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/ReadWhole.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

const char* const c_strAttempt = "cannot read";
const mode_t s_uPermissions = 0777;
// What is read at once where the system does not tell a file's length.
const std::size_t s_uSlice = 65536;

Failure MakeFailure(Errc code, const NativePath& path, const std::string& reason)
{
    return Failure(code, std::string(c_strAttempt) + " " + path.GetBytes() + ": " + reason);
}

// Reads up to one byte more than `largest`; false on an error, which errno tells.
bool ReadToEnd(int descriptor, std::size_t expected, std::size_t largest, std::string& bytes)
{
    const std::size_t most = std::max(largest, largest + 1);
    std::size_t have = 0;
    // One more than expected, so that the end is met without another slice.
    bytes.resize(std::min(expected + 1, most));
    for (;;)
    {
        have += ReadUpTo(descriptor, &bytes[have], bytes.size() - have);
        if (have < bytes.size() || have == most)
            break;
        bytes.resize(std::min(have + have / 2 + s_uSlice, most));
    }
    const bool whole = have == most || errno == 0;
    bytes.resize(have);
    return whole;
}

} // namespace

Result<mode_t> ReadWhole(const NativePath& path, std::size_t largest, std::string& bytes)
{
    const Descriptor file = path.Open(O_RDONLY);
    struct stat status = {};
    if (!file.IsOpen() && errno != ENXIO)
        return SystemFailure(c_strAttempt, path.GetBytes(), errno);
    if (file.IsOpen() && fstat(file.Get(), &status) != 0)
        return SystemFailure(c_strAttempt, path.GetBytes(), errno);
    if (!S_ISREG(status.st_mode))
        return MakeFailure(Errc::Refused, path, "it is no regular file");
    const std::size_t size = static_cast<std::size_t>(status.st_size);
    if (size <= largest && !ReadToEnd(file.Get(), size, largest, bytes))
        return SystemFailure(c_strAttempt, path.GetBytes(), errno);
    if (size > largest || bytes.size() > largest)
        return MakeFailure(Errc::LimitReached, path,
                           "it is longer than " + std::to_string(largest) + " bytes");
    return static_cast<mode_t>(status.st_mode & s_uPermissions);
}

} // namespace Toolkit
