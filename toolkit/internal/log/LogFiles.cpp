// SPDX-License-Identifier: MIT
#include "toolkit/internal/log/LogFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/FolderStream.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/zones/CivilTime.h"

namespace Toolkit
{

namespace
{

namespace fs = std::filesystem;

const char c_strExtension[] = ".log";
// The places of digits in the moment, as "20260302T140509.250Z" has them.
const std::string_view c_strPattern("00000000T000000.000Z");
// A moment that is taken is that of another process or of an earlier file; a later one is soon free.
const int s_iMostTries = 10000;
const std::chrono::microseconds s_closeGap(50);
const std::chrono::milliseconds s_longestGap(1);
const unsigned int s_uMostNotLooked = 64;

bool MatchesPattern(std::string_view moment)
{
    return moment.size() == c_strPattern.size() &&
           std::equal(moment.begin(), moment.end(), c_strPattern.begin(),
                      [](char character, char pattern) {
                          return pattern == '0' ? character >= '0' && character <= '9' : character == pattern;
                      });
}

// Makes the folder and those above it that are missing; what is new is the user's alone.
bool MakeFolder(const fs::path& folder)
{
    if (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST)
        return true;
    if (errno != ENOENT || !folder.has_parent_path() || folder.parent_path() == folder)
        return false;
    return MakeFolder(folder.parent_path()) && (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

} // namespace

LogFiles::LogFiles(fs::path folder, std::string name, unsigned int keep, std::uint64_t maxSize)
    : m_folder(std::move(folder)),
      m_strName(std::move(name)),
      m_uKeep(keep),
      m_uMaxSize(maxSize),
      m_usualGap(s_longestGap)
{
}

bool LogFiles::Open()
{
    return MakeFolder(m_folder) && OpenNext();
}

bool LogFiles::Write(std::string_view lines, std::chrono::system_clock::time_point time)
{
    if (IsTimeToLook(time) && m_file.IsOpen())
    {
        if (!IsInPlace())
            m_file = Descriptor();
        else if (m_process != getpid())
            Lock(m_file);
    }
    const bool isFull = m_uMaxSize != 0 && m_uSize != 0 && m_uSize + lines.size() > m_uMaxSize;
    if (!m_file.IsOpen())
    {
        if (!Open())
            return false;
    }
    // Where no further file can be made, the one that is there goes on.
    else if (isFull)
        OpenNext();

    if (Append(lines))
        return true;
    // The limit of a file's size that the system sets is met by another file.
    return errno == EFBIG && m_uSize != 0 && OpenNext() && Append(lines);
}

std::size_t LogFiles::Room() const
{
    if (m_uMaxSize == 0)
        return std::numeric_limits<std::size_t>::max();
    return m_uSize < m_uMaxSize ? m_uMaxSize - m_uSize : 0;
}

bool LogFiles::Append(std::string_view lines)
{
    if (m_bTorn && !WriteAll(m_file.Get(), "\n", 1))
        return false;
    m_bTorn = false;
    const std::size_t written = WriteUpTo(m_file.Get(), lines.data(), lines.size());
    if (written == lines.size())
    {
        m_uSize += written;
        return true;
    }
    TakeBack(written);
    return false;
}

// A forked child may have written to the file, too: what is not known to be this line's own stays.
void LogFiles::TakeBack(std::size_t written)
{
    const int error = errno;
    struct stat status = {};
    if (error == EBADF)
    {
        // The host has closed it, as a rule with every other descriptor.
        m_file.Release();
        m_lock.Forget();
    }
    else if (written > 0)
        m_bTorn = fstat(m_file.Get(), &status) != 0 ||
                  static_cast<std::uint64_t>(status.st_size) != m_uSize + written ||
                  ftruncate(m_file.Get(), static_cast<off_t>(m_uSize)) != 0;
    errno = error;
}

bool LogFiles::IsTimeToLook(std::chrono::system_clock::time_point time)
{
    using std::chrono::nanoseconds;
    // What is further apart than can be counted is not close.
    const auto count = [](auto moment) { return nanoseconds(moment.time_since_epoch()).count(); };
    std::int64_t counted = 0;
    const bool isFar = __builtin_sub_overflow(count(time), count(std::exchange(m_lastWrite, time)), &counted);
    const nanoseconds gap(isFar ? -1 : counted);
    // The clock may be set; and the first line has none before it.
    const bool isClose = gap >= nanoseconds(0) && gap < 6 * m_usualGap && m_usualGap < s_closeGap;
    m_usualGap += (std::clamp<nanoseconds>(gap, nanoseconds(0), s_longestGap) - m_usualGap) / 8;
    m_uNotLooked = isClose && m_uNotLooked < s_uMostNotLooked ? m_uNotLooked + 1 : 0;
    return m_uNotLooked == 0;
}

bool LogFiles::IsInPlace() const
{
    struct stat status = {};
    return stat(m_path.c_str(), &status) == 0 && status.st_dev == m_uDevice && status.st_ino == m_uNumber;
}

bool LogFiles::OpenNext()
{
    using std::chrono::milliseconds;
    // A later file has a later moment, whatever the clock does.
    auto moment = std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
    moment = std::max(moment, NewestMoment() + milliseconds(1));
    for (int i = 0; i < s_iMostTries; ++i, moment += milliseconds(1))
    {
        if (OpenAt(moment))
        {
            RemoveOldest();
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    return false;
}

bool LogFiles::OpenAt(Moment moment)
{
    fs::path path = PathAt(moment);
    Descriptor file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0)
        return false;
    Lock(file);
    m_file = std::move(file);
    m_path.swap(path);
    m_uSize = 0;
    m_bTorn = false;
    m_uDevice = status.st_dev;
    m_uNumber = status.st_ino;
    return true;
}

// By a descriptor of its own, which no forked child shares: a child keeps the file in use only once it writes
// there itself. Without a lock the file is only less safe from other runs.
void LogFiles::Lock(const Descriptor& file)
{
    const std::string path = "/proc/self/fd/" + std::to_string(file.Get());
    m_lock = UnsharedDescriptor(
        [&path]
        {
            Descriptor lock(open(path.c_str(), O_RDONLY | O_CLOEXEC));
            lock.TryShareLock();
            return lock;
        });
    m_process = getpid();
}

fs::path LogFiles::PathAt(Moment moment) const
{
    const auto count = moment.time_since_epoch().count();
    const CivilTime utc = CivilTime::Utc(count / 1000);
    char text[64];
    std::snprintf(text, sizeof(text), "-%04d%02d%02dT%02d%02d%02d.%03dZ", static_cast<int>(utc.year),
                  static_cast<int>(utc.month), static_cast<int>(utc.day), static_cast<int>(utc.hour),
                  static_cast<int>(utc.minute), static_cast<int>(utc.second), static_cast<int>(count % 1000));
    return m_folder / (m_strName + text + c_strExtension);
}

bool LogFiles::IsOfThisLog(const std::string& name) const
{
    const std::size_t length = m_strName.size() + 1 + c_strPattern.size();
    return name.size() == length + sizeof(c_strExtension) - 1 &&
           name.compare(0, m_strName.size(), m_strName) == 0 && name[m_strName.size()] == '-' &&
           name.compare(length, std::string::npos, c_strExtension) == 0 &&
           MatchesPattern(std::string_view(name).substr(m_strName.size() + 1, c_strPattern.size()));
}

std::vector<fs::path> LogFiles::Files() const
{
    std::vector<fs::path> files;
    // The standard library's iterator ends the process when it finds no memory for a name.
    const FolderStream folder = OpenFolder(AT_FDCWD, m_folder.c_str());
    while (const dirent* const entry = folder != nullptr ? readdir(folder.get()) : nullptr)
        if (IsOfThisLog(entry->d_name))
            files.push_back(m_folder / entry->d_name);
    std::sort(files.begin(), files.end());
    return files;
}

LogFiles::Moment LogFiles::NewestMoment() const
{
    const std::vector<fs::path> files = Files();
    if (files.empty())
        return Moment();
    const std::string name = files.back().filename().native().substr(m_strName.size() + 1);
    const auto number = [&name](std::size_t place, std::size_t length)
    { return std::stoi(name.substr(place, length)); };
    CivilTime utc;
    utc.year = number(0, 4);
    utc.month = number(4, 2);
    utc.day = number(6, 2);
    utc.hour = number(9, 2);
    utc.minute = number(11, 2);
    utc.second = number(13, 2);
    // Somebody else made up a moment that there is not.
    if (!utc.Exists() || utc.second > 59 || utc.year > 9998)
        return Moment();
    return Moment(std::chrono::seconds(utc.UtcInstant()) + std::chrono::milliseconds(number(16, 3)));
}

void LogFiles::RemoveOldest() const
{
    if (m_uKeep == 0)
        return;
    std::vector<fs::path> files = Files();
    if (files.size() <= m_uKeep)
        return;
    files.resize(files.size() - m_uKeep);
    for (const fs::path& path : files)
    {
        const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status = {};
        if (path != m_path && file.IsOpen() && fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) &&
            file.TryLock())
            unlink(path.c_str());
    }
}

} // namespace Toolkit
