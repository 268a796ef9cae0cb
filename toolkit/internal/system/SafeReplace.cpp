// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/SafeReplace.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/NoCancellation.h"

namespace Toolkit
{

namespace
{

const mode_t s_uNewFileMode = 0666;
const mode_t s_uPrivateMode = 0600;
const mode_t s_uPermissions = 07777;
const int s_iAttempts = 100;
std::atomic<unsigned int> s_uNames{0};

// A file that is removed unless it takes another one's place.
class TemporaryFile
{
public:
    TemporaryFile(const std::string& folder, mode_t mode)
    {
        for (int i = 0; i < s_iAttempts && m_iDescriptor == -1; ++i)
        {
            m_strPath = folder + ".toolkit-" + std::to_string(getpid()) + "-" + std::to_string(++s_uNames);
            m_iDescriptor = open(m_strPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
            if (m_iDescriptor == -1 && errno != EEXIST && errno != EINTR)
                return;
        }
    }

    ~TemporaryFile()
    {
        const NoCancellation whole;
        Close();
        if (m_bMade)
            unlink(m_strPath.c_str());
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool IsOpened() const { return m_iDescriptor != -1; }

    // The owner comes first: changing it takes permissions away. A user who may not give files away keeps
    // them.
    bool Imitate(const struct stat& status)
    {
        if (fchown(m_iDescriptor, status.st_uid, status.st_gid) != 0 &&
            fchown(m_iDescriptor, static_cast<uid_t>(-1), status.st_gid) != 0 && errno != EPERM)
            return false;
        return fchmod(m_iDescriptor, status.st_mode & s_uPermissions) == 0;
    }

    bool Write(const TString<char>& bytes)
    {
        for (std::size_t written = 0; written < bytes.size();)
        {
            const ssize_t count = write(m_iDescriptor, bytes.data() + written, bytes.size() - written);
            if (count > 0)
                written += static_cast<std::size_t>(count);
            else if (count == 0 || errno != EINTR)
                return false;
        }
        return true;
    }

    bool TakePlaceOf(const std::string& path)
    {
        if (!Close() || std::rename(m_strPath.c_str(), path.c_str()) != 0)
            return false;
        m_bMade = false;
        return true;
    }

private:
    bool Close()
    {
        const int descriptor = m_iDescriptor;
        m_iDescriptor = -1;
        m_bMade = m_bMade || descriptor != -1;
        return descriptor == -1 || close(descriptor) == 0;
    }

    std::string m_strPath;
    int m_iDescriptor = -1;
    bool m_bMade = false;
};

// What lies at the end of the links; the path itself when nothing is there.
std::string ResolveLinks(const char* path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path, nullptr), &std::free);
    return resolved != nullptr ? resolved.get() : path;
}

// True when nothing is there, or a regular file that may be written.
bool Examine(const NativePath& path, struct stat& status, bool& exists)
{
    exists = lstat(path.c_str(), &status) == 0;
    if (!exists)
        return errno == ENOENT;
    const Descriptor file = path.Open(O_WRONLY);
    return fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

bool SafeReplace::Write(const NativePath& path, const TString<char>& bytes)
{
    struct stat status = {};
    bool exists = false;
    if (!path.IsValid() || !Examine(path, status, exists))
        return false;
    const std::string target = ResolveLinks(path.c_str());
    const std::size_t name = target.rfind('/') == target.npos ? 0 : target.rfind('/') + 1;
    TemporaryFile file(target.substr(0, name), exists ? s_uPrivateMode : s_uNewFileMode);
    return file.IsOpened() && file.Write(bytes) && (!exists || file.Imitate(status)) &&
           file.TakePlaceOf(target);
}

} // namespace Toolkit
