// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/PathLock.h"

#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Toolkit
{

namespace
{

const mode_t s_uOwnerOnly = 0600;
const int s_iFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
const std::chrono::milliseconds s_pause(5);

bool IsSame(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

PathLock::PathLock(const TString<char>& file, std::chrono::milliseconds limit) : m_strFile(file)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!TryLock() && (errno == EWOULDBLOCK || errno == EINTR) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(s_pause);
}

PathLock::~PathLock()
{
    struct stat status = {};
    if (!IsLocked())
        return;
    if (fstat(m_file.Get(), &status) == 0 && status.st_size == 0)
        unlink(m_strFile.c_str());
    // Not left to the closing: a child that is being forked may have the descriptor, too.
    flock(m_file.Get(), LOCK_UN);
}

// When it fails, EWOULDBLOCK tells that another process is at it, or was until just now, and EINTR that a
// signal came.
bool PathLock::TryLock()
{
    int error = 0;
    UnsharedDescriptor file(
        [this, &error]
        {
            Descriptor opened(open(m_strFile.c_str(), s_iFlags, s_uOwnerOnly));
            error = errno;
            return opened;
        });
    struct stat opened = {};
    if (!file.IsOpen() || fstat(file.Get(), &opened) != 0)
    {
        errno = error;
        return false;
    }
    errno = EPERM;
    if (!S_ISREG(opened.st_mode) || opened.st_uid != geteuid())
        return false;
    if (flock(file.Get(), LOCK_EX | LOCK_NB) != 0)
        return false;
    struct stat named = {};
    if (lstat(m_strFile.c_str(), &named) != 0 || !IsSame(opened, named))
    {
        // Who held it has removed it: whatever the system says of that, there is a new one to be had.
        file.Close();
        errno = EWOULDBLOCK;
        return false;
    }
    m_file = std::move(file);
    return true;
}

} // namespace Toolkit
