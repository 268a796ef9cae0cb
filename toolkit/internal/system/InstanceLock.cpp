// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/InstanceLock.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "toolkit/internal/system/PathLock.h"
#include "toolkit/internal/system/ProcessState.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

const mode_t s_uOwnerOnly = 0600;
const int s_iSafeFlags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
// A starting process may wait for others that start.
const std::chrono::seconds s_turnLimit(5);
// For the number of a process that is writing it.
const std::chrono::seconds s_writeLimit(1);
const std::chrono::milliseconds s_pause(5);
const char* const c_strTurnExtension = ".turn";
// How often the file may vanish while it is looked at: others come and go just as quickly.
const int s_iMostTries = 10000;
const pid_t s_iUnknownProcess = -1;

// Keeps other processes from looking at the lock file and taking it over meanwhile: whoever takes over a dead
// process's file might remove that of the one who was quicker. If that takes too long, or there can be no
// such lock, it does without.
class Turn
{
public:
    explicit Turn(const NativePath& file) : m_lock(file.GetBytes() + c_strTurnExtension, s_turnLimit) {}

    bool IsTaken() const { return m_lock.IsLocked(); }

private:
    const PathLock m_lock;
};

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The number of a process, perhaps followed by NULs or a line end; 0 for anything else.
pid_t ProcessNumber(const char* begin, const char* end)
{
    const char* const rest = std::find_if_not(begin, end, IsDigit);
    pid_t number = 0;
    if (rest - begin <= 9 && begin != end && *begin != '0' &&
        std::all_of(rest, end, [](char c) { return c == '\0' || c == '\n'; }))
        std::from_chars(begin, rest, number);
    return number;
}

// A removed file's number may be a new one's; both are written once.
bool IsSame(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_mtim.tv_sec == b.st_mtim.tv_sec &&
           a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// False when something lies there that no process of this user has made for its lock.
bool MayBeLock(const struct stat& status)
{
    return status.st_uid == geteuid() && status.st_mode == (S_IFREG | s_uOwnerOnly);
}

// True while the process that made the file has not written its number yet.
bool IsBeingWritten(int descriptor)
{
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    return fcntl(descriptor, F_GETLK, &lock) != 0 || lock.l_type != F_UNLCK;
}

// True while the process that made the file lives, whatever its number and the clocks say. One that another
// library made is never locked. Where the system has no locks, or none left, nobody can tell: it may be.
bool IsLockedByItsMaker(int descriptor)
{
    return flock(descriptor, LOCK_SH | LOCK_NB) != 0;
}

bool IsStale(pid_t process, int descriptor, const struct stat& status)
{
    return !ProcessState::IsRunning(process) ||
           (ProcessState::StartedAfter(process, status.st_mtim) && !IsLockedByItsMaker(descriptor));
}

// Both locks end with the process; the first one tells a checker of wxWidgets that the number is being
// written. The mode is that of the file, whatever the host lets new files have.
bool LockAndWrite(int descriptor)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    fcntl(descriptor, F_SETLK, &lock);
    flock(descriptor, LOCK_EX | LOCK_NB);
    const std::string number = std::to_string(getpid());
    return fchmod(descriptor, s_uOwnerOnly) == 0 && WriteAll(descriptor, number.c_str(), number.size() + 1);
}

} // namespace

// Where no file lies, as at most starts, nobody needs a turn: it comes into place at once and whole.
InstanceLock::InstanceLock(const NativePath& file) : m_file(file)
{
    if (MakeUnnamed() == Made::Yes)
        return;
    const Turn turn(m_file);
    FindFirst(turn.IsTaken());
}

// Nor here: nobody takes over the file of a process that lives.
InstanceLock::~InstanceLock()
{
    if (m_iMaker == getpid() && IsInPlace(m_status))
        unlink(m_file.c_str());
}

bool InstanceLock::IsHeldByAnother() const
{
    return m_iFirst != 0 && m_iFirst != getpid();
}

// A file that vanishes makes nobody the first: it is made anew. When that never ends, others are at it.
void InstanceLock::FindFirst(bool hasTurn)
{
    const auto end = std::chrono::steady_clock::now() + s_writeLimit;
    for (int i = 0; i < s_iMostTries; ++i)
    {
        if (Make() != Made::Exists)
            return;
        const Found found = LookAtFile(hasTurn);
        if (found == Found::Taken || (found == Found::LeftBehind && !RemoveLeftBehind(hasTurn)))
            return;
        if (found == Found::Unfinished)
        {
            if (std::chrono::steady_clock::now() >= end)
                return;
            std::this_thread::sleep_for(s_pause);
        }
    }
    m_iFirst = s_iUnknownProcess;
}

// Nobody sees the file before it has its number, where the file system can do that.
InstanceLock::Made InstanceLock::Make()
{
    const Made made = MakeUnnamed();
    return made == Made::No ? MakeNamed() : made;
}

InstanceLock::Made InstanceLock::MakeUnnamed()
{
    const TString<char>& path = m_file.GetBytes();
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    UnsharedDescriptor file(
        [&folder]
        { return Descriptor(open(folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, s_uOwnerOnly)); });
    if (!file.IsOpen() || !LockAndWrite(file.Get()))
        return Made::No;
    const std::string unnamed = "/proc/self/fd/" + std::to_string(file.Get());
    if (linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, m_file.c_str(), AT_SYMLINK_FOLLOW) != 0)
        return errno == EEXIST ? Made::Exists : Made::No;
    return Keep(std::move(file));
}

InstanceLock::Made InstanceLock::MakeNamed()
{
    int error = 0;
    UnsharedDescriptor file(
        [this, &error]
        {
            Descriptor made = Open(O_WRONLY | O_CREAT | O_EXCL);
            error = errno;
            return made;
        });
    if (!file.IsOpen())
        return error == EEXIST ? Made::Exists : Made::No;
    if (LockAndWrite(file.Get()))
        return Keep(std::move(file));
    unlink(m_file.c_str());
    return Made::No;
}

InstanceLock::Made InstanceLock::Keep(UnsharedDescriptor file)
{
    if (fstat(file.Get(), &m_status) != 0)
    {
        unlink(m_file.c_str());
        return Made::No;
    }
    m_descriptor = std::move(file);
    m_iMaker = m_iFirst = getpid();
    return Made::Yes;
}

InstanceLock::Found InstanceLock::LookAtFile(bool hasTurn)
{
    m_iFirst = 0;
    if (lstat(m_file.c_str(), &m_found) != 0)
        return errno == ENOENT ? Found::Vanished : Found::Taken;
    if (!MayBeLock(m_found))
        return Found::Taken;
    const Descriptor file = Open(O_RDONLY);
    if (!file.IsOpen())
        return errno == ENOENT ? Found::Vanished : Found::Taken;
    if (fstat(file.Get(), &m_found) != 0 || !MayBeLock(m_found))
        return Found::Taken;
    return LookAtNumber(file, m_found, hasTurn);
}

// With the turn, a file without a number is one whose maker was killed.
InstanceLock::Found InstanceLock::LookAtNumber(const Descriptor& file, const struct stat& status,
                                               bool hasTurn)
{
    char bytes[16];
    const std::size_t count = ReadUpTo(file.Get(), bytes, sizeof bytes);
    if (count == 0 && errno == 0)
        return hasTurn && !IsBeingWritten(file.Get()) ? Found::LeftBehind : Found::Unfinished;
    // What fills all of the room is longer than any number.
    const pid_t first = count < sizeof bytes ? ProcessNumber(bytes, bytes + count) : 0;
    if (first != 0 && IsStale(first, file.Get(), status))
        return Found::LeftBehind;
    m_iFirst = first;
    return Found::Taken;
}

// Without the turn another process may have done the same already, and be the first by now: the file is taken
// aside, looked at there, and put back if it is another one. False when it cannot be removed.
bool InstanceLock::RemoveLeftBehind(bool hasTurn)
{
    if (!IsInPlace(m_found))
        return true;
    if (hasTurn)
        return unlink(m_file.c_str()) == 0 || errno == ENOENT;
    const std::string aside = m_file.GetBytes() + "." + std::to_string(getpid());
    if (std::rename(m_file.c_str(), aside.c_str()) != 0)
        return errno == ENOENT;
    struct stat status = {};
    if (lstat(aside.c_str(), &status) == 0 && !IsSame(status, m_found))
        static_cast<void>(link(aside.c_str(), m_file.c_str()));
    unlink(aside.c_str());
    return true;
}

bool InstanceLock::IsInPlace(const struct stat& status) const
{
    struct stat named = {};
    return lstat(m_file.c_str(), &named) == 0 && IsSame(named, status);
}

Descriptor InstanceLock::Open(int flags) const
{
    int descriptor = -1;
    do
        descriptor = open(m_file.c_str(), flags | s_iSafeFlags, s_uOwnerOnly);
    while (descriptor == -1 && errno == EINTR);
    return Descriptor(descriptor);
}

} // namespace Toolkit
