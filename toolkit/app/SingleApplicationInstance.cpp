// SPDX-License-Identifier: MIT
#include "toolkit/app/SingleApplicationInstance.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/app/PathManager.h"
#include "toolkit/internal/folders/StandardFolders.h"
#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/PathLock.h"

namespace Toolkit
{

namespace
{

const mode_t s_uOwnerOnly = 0600;
// A starting process may wait for others that start; an ending one is not to be held up by any that hangs.
const std::chrono::seconds s_startLimit(5);
const std::chrono::milliseconds s_endLimit(250);
const char* const c_strTurnExtension = ".turn";
// How often a lock that is left behind is removed and somebody else takes the place at once.
const int s_iMostTries = 3;

// Keeps other processes from looking at, making or removing the lock file meanwhile: its number is written
// some time after it is made, and whoever takes over a dead process's file might remove that of the one who
// was quicker. If that takes too long, or there can be no such lock, it does without.
void TakeTurn(std::optional<PathLock>& turn, const NativePath& file, std::chrono::milliseconds limit)
{
    turn.emplace(file.GetBytes() + c_strTurnExtension, limit);
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The number of a process, perhaps with zeros or a line end behind it; 0 for anything else.
pid_t ProcessNumber(const char* begin, const char* end)
{
    const char* const behind = std::find_if_not(begin, end, IsDigit);
    pid_t number = 0;
    if (behind - begin <= 9 && begin != end && *begin != '0' &&
        std::all_of(behind, end, [](char c) { return c == '\0' || c == '\n'; }))
        std::from_chars(begin, behind, number);
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

// As `read` answers.
ssize_t ReadFrom(int descriptor, char* bytes, std::size_t size)
{
    ssize_t count = 0;
    do
        count = read(descriptor, bytes, size);
    while (count == -1 && errno == EINTR);
    return count;
}

// True when all is written.
bool WriteTo(int descriptor, const char* bytes, std::size_t size)
{
    for (std::size_t written = 0; written < size;)
    {
        const ssize_t count = write(descriptor, bytes + written, size - written);
        if (count > 0)
            written += static_cast<std::size_t>(count);
        else if (count == 0 || errno != EINTR)
            return false;
    }
    return true;
}

// True while the process that made the file has not written its number yet.
bool IsBeingWritten(int descriptor)
{
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    return fcntl(descriptor, F_GETLK, &lock) != 0 || lock.l_type != F_UNLCK;
}

bool IsAlive(pid_t process)
{
    return kill(process, 0) == 0;
}

// The name of the lock file; empty without a path manager.
TString<wchar_t> LockName()
{
    if (PathManager::s_pInstance == nullptr)
        return TString<wchar_t>();
    const smart_ptr<PathManager> paths(*PathManager::s_pInstance);
    return paths.IsNull() ? TString<wchar_t>() : paths->GetUniqueInstanceName();
}

} // namespace

// The lock file: it holds the number of the first instance's process and a zero, as a checker of the base
// library leaves it and understands it.
class SingleApplicationInstance::Checker
{
public:
    explicit Checker(const NativePath& file) : m_file(file) {}

    // With the turn, a file without a number is one whose maker was killed.
    void FindFirst(bool hasTurn)
    {
        for (int i = 0; i < s_iMostTries; ++i)
            if (Make() != Made::Exists || !IsLeftBehind(hasTurn) || !IsGoneAfterRemoval())
                return;
    }

    // The file belongs to the process that made it.
    bool IsOurs() const { return m_iMaker == getpid(); }
    // Unless another lies there by then.
    void Remove() const
    {
        struct stat status = {};
        if (lstat(m_file.c_str(), &status) == 0 && IsSame(status, m_status))
            unlink(m_file.c_str());
    }

    bool IsAnotherRunning() const { return m_iFirst != 0 && m_iFirst != getpid(); }

    const NativePath m_file;

private:
    enum class Made
    {
        Yes,
        No,
        Exists
    };

    Made Make()
    {
        const Descriptor file(Open(O_WRONLY | O_CREAT | O_EXCL));
        if (!file.IsOpen())
            return errno == EEXIST ? Made::Exists : Made::No;
        if (!Write(file.Get()) || fstat(file.Get(), &m_status) != 0)
        {
            unlink(m_file.c_str());
            return Made::No;
        }
        m_iMaker = m_iFirst = getpid();
        return Made::Yes;
    }

    // The mode is that of the file, whatever the host lets new files have. Locked meanwhile where there are
    // such locks.
    static bool Write(int descriptor)
    {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        fcntl(descriptor, F_SETLK, &lock);
        const std::string number = std::to_string(getpid());
        return fchmod(descriptor, s_uOwnerOnly) == 0 &&
               WriteTo(descriptor, number.c_str(), number.size() + 1);
    }

    // Looks who is first: true when that is nobody, because its process is gone.
    bool IsLeftBehind(bool hasTurn)
    {
        m_iFirst = 0;
        struct stat status = {};
        if (lstat(m_file.c_str(), &status) != 0 || !MayBeLock(status))
            return false;
        const Descriptor file(Open(O_RDONLY));
        if (!file.IsOpen() || fstat(file.Get(), &status) != 0 || !MayBeLock(status))
            return false;
        char bytes[16];
        const ssize_t count = ReadFrom(file.Get(), bytes, sizeof bytes);
        if (count == 0)
            return hasTurn && !IsBeingWritten(file.Get());
        // What fills all of the room is longer than any number.
        const bool isShort = count > 0 && count < static_cast<ssize_t>(sizeof bytes);
        const pid_t first = isShort ? ProcessNumber(bytes, bytes + count) : 0;
        m_iFirst = first != 0 && IsAlive(first) ? first : 0;
        return first != 0 && m_iFirst == 0;
    }

    bool IsGoneAfterRemoval() const { return unlink(m_file.c_str()) == 0 || errno == ENOENT; }

    int Open(int flags) const
    {
        int descriptor = -1;
        do
            descriptor =
                open(m_file.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, s_uOwnerOnly);
        while (descriptor == -1 && errno == EINTR);
        return descriptor;
    }

    // 0 while there is none.
    pid_t m_iFirst = 0;
    pid_t m_iMaker = 0;
    struct stat m_status = {};
};

smart_ptr<SingleApplicationInstance, smart_ptr_policy>* SingleApplicationInstance::s_pInstance = nullptr;

SingleApplicationInstance::SingleApplicationInstance() : m_pChecker(nullptr)
{
    TString<wchar_t> path;
    const TString<wchar_t> name = LockName();
    const TString<wchar_t> folder = StandardFolders::Home();
    PathManager::AppendPath(path, folder, name);
    const NativePath file(path);
    if (name.empty() || folder.empty() || !file.IsValid())
        return;
    auto checker = std::make_unique<Checker>(file);
    std::optional<PathLock> turn;
    TakeTurn(turn, file, s_startLimit);
    checker->FindFirst(turn->IsLocked());
    m_pChecker = checker.release();
}

SingleApplicationInstance::~SingleApplicationInstance()
{
    const std::unique_ptr<Checker> checker(m_pChecker);
    if (checker == nullptr || !checker->IsOurs())
        return;
    std::optional<PathLock> turn;
    try
    {
        TakeTurn(turn, checker->m_file, s_endLimit);
    }
    catch (const std::bad_alloc&)
    {
        // Then it goes without a turn.
    }
    checker->Remove();
}

bool SingleApplicationInstance::IsAlreadyRunning() const
{
    return m_pChecker != nullptr && m_pChecker->IsAnotherRunning();
}

} // namespace Toolkit
