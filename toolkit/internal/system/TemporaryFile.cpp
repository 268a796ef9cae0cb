// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/TemporaryFile.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/FolderStream.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/ProcessState.h"

namespace Toolkit
{

namespace
{

const std::string_view s_strBegin = ".toolkit-";
const int s_iAttempts = 100;
std::atomic<unsigned int> s_uNames{0};

// The process that gave a file this name; 0 for every other name.
pid_t WriterOf(std::string_view name)
{
    if (name.substr(0, s_strBegin.size()) != s_strBegin)
        return 0;
    const char* const end = name.data() + name.size();
    pid_t writer = 0;
    unsigned long number = 0;
    const char* next = std::from_chars(name.data() + s_strBegin.size(), end, writer).ptr;
    if (writer <= 0 || next == end || *next != '-')
        return 0;
    next = std::from_chars(next + 1, end, number).ptr;
    return next == end && next[-1] != '-' ? writer : 0;
}

// A number that is nobody's, a thread's or a zombie's by now, or that a later process was given. Another
// user's process cannot be looked at, and counts as the writer.
bool IsGone(pid_t writer, const struct stat& file)
{
    if (kill(writer, 0) != 0)
        return errno == ESRCH;
    return !ProcessState::IsRunning(writer) || ProcessState::StartedAfter(writer, file.st_mtim);
}

Descriptor OpenAt(int folder, const char* name, int flags)
{
    return Descriptor(openat(folder, name, flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
}

bool IsNamed(int file, int folder, const char* name)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(file, &opened) == 0 && S_ISREG(opened.st_mode) &&
           fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

// A number may be a process's of another container: only who gets the lock knows that the writer is gone.
void RemoveIfLeftBehind(int folder, const char* name)
{
    const pid_t writer = WriterOf(name);
    struct stat named = {};
    if (writer == 0 || fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) != 0 || !IsGone(writer, named))
        return;
    Descriptor file = OpenAt(folder, name, O_RDONLY);
    if (!file.IsOpen())
        file = OpenAt(folder, name, O_WRONLY);
    if (file.TryLock() && IsNamed(file.Get(), folder, name))
        unlinkat(folder, name, 0);
}

// Which folders were looked through, and how many writes each lets pass until it is again. Nobody waits for
// the lock, which a forked child may find taken for ever.
class Folders
{
public:
    bool IsDue(const struct stat& status)
    {
        const std::unique_lock<std::mutex> lock(m_mutex, std::try_to_lock);
        if (!lock.owns_lock())
            return false;
        Folder& folder = Find(status);
        if (folder.device == status.st_dev && folder.inode == status.st_ino && folder.writes > 0)
        {
            --folder.writes;
            return false;
        }
        return true;
    }

    void Note(const struct stat& status, std::size_t entries)
    {
        const std::unique_lock<std::mutex> lock(m_mutex, std::try_to_lock);
        if (lock.owns_lock())
            Find(status) = {status.st_dev, status.st_ino, entries / s_uSmall};
    }

private:
    struct Folder
    {
        dev_t device;
        ino_t inode;
        std::size_t writes;
    };

    static constexpr std::size_t s_uSmall = 256;

    Folder& Find(const struct stat& status) { return m_folders[status.st_ino % m_folders.size()]; }

    std::mutex m_mutex;
    std::array<Folder, 16> m_folders = {};
};

Folders s_folders;

} // namespace

TemporaryFile::TemporaryFile(int folder, mode_t mode) : m_iFolder(folder)
{
    for (int i = 0; i < s_iAttempts && !Make(mode); ++i)
        if (errno != EEXIST && errno != EINTR)
            return;
}

TemporaryFile::~TemporaryFile()
{
    const NoCancellation whole;
    // Whoever is told why the file did not take its place is told by errno.
    const int error = errno;
    if (m_bMade)
        unlinkat(m_iFolder, m_strName.c_str(), 0);
    m_file.Close();
    errno = error;
}

bool TemporaryFile::TakePlaceOf(const char* name)
{
    if (renameat(m_iFolder, m_strName.c_str(), m_iFolder, name) != 0)
        return false;
    m_bMade = false;
    return true;
}

void TemporaryFile::RemoveLeftBehind(int folder)
{
    struct stat status = {};
    if (fstat(folder, &status) != 0 || !s_folders.IsDue(status))
        return;
    const FolderStream stream = OpenFolderUnnoted(folder, ".");
    std::size_t entries = 0;
    while (const dirent* const entry = stream != nullptr ? readdir(stream.get()) : nullptr)
    {
        ++entries;
        RemoveIfLeftBehind(folder, entry->d_name);
    }
    s_folders.Note(status, entries);
}

// Without a lock of the file system's own nothing is ever removed as left behind.
bool TemporaryFile::Make(mode_t mode)
{
    m_strName = std::string(s_strBegin) + std::to_string(getpid()) + "-" + std::to_string(++s_uNames);
    m_file = Descriptor(
        openat(m_iFolder, m_strName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    m_bMade = m_file.IsOpen();
    if (m_bMade)
        m_file.TryLock();
    return m_bMade;
}

} // namespace Toolkit
