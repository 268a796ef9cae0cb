// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/SafeReplace.h"

#include <array>
#include <cerrno>
#include <climits>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/FileRights.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/TemporaryFile.h"
#include "toolkit/internal/system/Transfer.h"

namespace Toolkit
{

namespace
{

const mode_t s_uPrivateMode = 0600;
const int s_iMostLinks = 40;
const int s_iAttempts = 100;
const char* const c_strAttempt = "cannot write";

// What is written to: where the links end, and what is there.
struct Target
{
    // The folder, and the file's name in it.
    Descriptor m_folder;
    std::string m_strName;
    // The file that is there; not open where there is none.
    Descriptor m_file;
    struct stat m_status = {};
};

// The error of the last call that failed, or an error for a call that tells none.
int LastError()
{
    return errno != 0 ? errno : EIO;
}

// Where the links at the end of the path lead, be something there or not; false when they lead in a circle.
bool ResolveLinks(std::string& path)
{
    std::array<char, PATH_MAX> link;
    for (int i = 0; i < s_iMostLinks; ++i)
    {
        const ssize_t length = readlink(path.c_str(), link.data(), link.size());
        if (length < 0)
            return true;
        if (link[0] != '/')
            path.erase(path.rfind('/') == path.npos ? 0 : path.rfind('/') + 1);
        else
            path.clear();
        path.append(link.data(), static_cast<std::size_t>(length));
    }
    errno = ELOOP;
    return false;
}

// A folder that may not be read can still be written to, but neither looked through nor synced.
Descriptor OpenFolderToWrite(const std::string& path)
{
    const int flags = O_DIRECTORY | O_CLOEXEC;
    Descriptor folder(open(path.c_str(), O_RDONLY | flags));
    return folder.IsOpen() || errno != EACCES ? std::move(folder)
                                              : Descriptor(open(path.c_str(), O_PATH | flags));
}

// Opens what is there; true when that may be replaced, or nothing is there. On failure errno tells why, and
// is ENXIO for what is no file.
bool OpenFile(const NativePath& path, const SafeReplace::Options& options, Target& target)
{
    if (lstat(path.c_str(), &target.m_status) != 0)
        return errno == ENOENT;
    target.m_file = path.Open(O_WRONLY, target.m_status);
    if (!target.m_file.IsOpen())
        return errno == ENOENT && options.m_bFollowsDangling;
    errno = ENXIO;
    return S_ISREG(target.m_status.st_mode);
}

bool OpenTarget(const NativePath& path, const SafeReplace::Options& options, Target& target)
{
    std::string resolved = path.GetBytes();
    if (!OpenFile(path, options, target) || !ResolveLinks(resolved))
        return false;
    const std::size_t name = resolved.rfind('/') == resolved.npos ? 0 : resolved.rfind('/') + 1;
    target.m_strName = resolved.substr(name);
    errno = EISDIR;
    if (target.m_strName.empty())
        return false;
    target.m_folder = OpenFolderToWrite(name == 0 ? "." : resolved.substr(0, name));
    return target.m_folder.IsOpen();
}

bool IsMountedOn(int file)
{
    struct statx status = {};
    return statx(file, "", AT_EMPTY_PATH, 0, &status) == 0 &&
           (status.stx_attributes & status.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0;
}

// False when what was written may not be on the disk; file systems that cannot say count as whole.
bool Sync(int file)
{
    int answer = 0;
    do
        answer = fsync(file);
    while (answer != 0 && errno == EINTR);
    return answer == 0 || errno == EINVAL || errno == EROFS || errno == EOPNOTSUPP;
}

// Room is taken before anything is changed, so that a full disk leaves the old content.
bool WriteInPlace(const Target& target, std::string_view bytes)
{
    const int file = target.m_file.Get();
    const off_t size = static_cast<off_t>(bytes.size());
    if (size > target.m_status.st_size && fallocate(file, FALLOC_FL_KEEP_SIZE, 0, size) != 0 &&
        (errno == ENOSPC || errno == EDQUOT))
        return false;
    if (!WriteAll(file, bytes.data(), bytes.size()))
        return false;
    int answer = 0;
    do
        answer = ftruncate(file, size);
    while (answer != 0 && errno == EINTR);
    return answer == 0 && Sync(file);
}

// True when the name that was resolved leads to the file that was opened; ESTALE where it does not any more.
bool IsStillThere(const Target& target)
{
    struct stat named = {};
    const bool same =
        fstatat(target.m_folder.Get(), target.m_strName.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
        named.st_dev == target.m_status.st_dev && named.st_ino == target.m_status.st_ino;
    errno = ESTALE;
    return same;
}

bool GiveRights(const Target& target, const SafeReplace::Options& options, int file)
{
    if (target.m_file.IsOpen())
        return CopyRights(target.m_file.Get(), target.m_status, file);
    return !options.m_bWasThere || RemoveAccessList(file);
}

Failure MakeFailure(const NativePath& path, int error)
{
    if (error == ENXIO)
        return Failure(Errc::Refused, c_strAttempt + (" " + path.GetBytes()) + ": it is no regular file");
    return SystemFailure(c_strAttempt, path.GetBytes(), error);
}

bool IsSameFolder(int a, int b)
{
    struct stat first = {};
    struct stat second = {};
    return fstat(a, &first) == 0 && fstat(b, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

bool Replace(const Target& target, std::string_view bytes, const SafeReplace::Options& options)
{
    const bool exists = target.m_file.IsOpen();
    if (exists && IsMountedOn(target.m_file.Get()))
        return WriteInPlace(target, bytes);
    if (exists && !IsStillThere(target))
        return false;
    TemporaryFile::RemoveLeftBehind(target.m_folder.Get());
    TemporaryFile file(target.m_folder.Get(), exists ? s_uPrivateMode : options.m_uMode);
    if (!file.IsOpen() || !WriteAll(file.Get(), bytes.data(), bytes.size()) ||
        !GiveRights(target, options, file.Get()) || !Sync(file.Get()))
        return false;
    if (!file.TakePlaceOf(target.m_strName.c_str()))
        return exists && errno == EBUSY && WriteInPlace(target, bytes);
    // What is left is to have the folder survive a loss of power; the content is whole either way.
    static_cast<void>(Sync(target.m_folder.Get()));
    return true;
}

} // namespace

Result<void> SafeReplace::Write(const NativePath& path, std::string_view bytes, const Options& options)
{
    int error = ENOENT;
    // Another writer may replace the file between two steps; then it is looked at again.
    for (int i = 0; path.IsValid() && i < s_iAttempts; ++i)
    {
        Target target;
        errno = 0;
        if (OpenTarget(path, options, target) && Replace(target, bytes, options))
            return {};
        error = LastError();
        if (error != ESTALE)
            break;
    }
    return MakeFailure(path, error);
}

struct SafeReplace::Writer::Content
{
    Content(NativePath path, const Options& options, Target target)
        : m_path(std::move(path)),
          m_options(options),
          m_target(std::move(target)),
          m_file(m_target.m_folder.Get(), m_target.m_file.IsOpen() ? s_uPrivateMode : options.m_uMode)
    {
    }

    // Looks at the file again, which may be another one by now.
    bool Finish()
    {
        Target target;
        if (!OpenTarget(m_path, m_options, target))
            return false;
        errno = ESTALE;
        if (!IsSameFolder(target.m_folder.Get(), m_target.m_folder.Get()) ||
            (target.m_file.IsOpen() && !IsStillThere(target)))
            return false;
        if (!GiveRights(target, m_options, m_file.Get()) || !Sync(m_file.Get()) ||
            !m_file.TakePlaceOf(target.m_strName.c_str()))
            return false;
        static_cast<void>(Sync(target.m_folder.Get()));
        return true;
    }

    const NativePath m_path;
    const Options m_options;
    Target m_target;
    TemporaryFile m_file;
};

SafeReplace::Writer::Writer(std::unique_ptr<Content> content) : m_pContent(std::move(content)) {}

SafeReplace::Writer::~Writer() = default;

Result<std::unique_ptr<SafeReplace::Writer>> SafeReplace::Writer::Begin(const NativePath& path,
                                                                        const Options& options)
{
    Target target;
    errno = ENOENT;
    if (!path.IsValid() || !OpenTarget(path, options, target))
        return MakeFailure(path, LastError());
    TemporaryFile::RemoveLeftBehind(target.m_folder.Get());
    auto content = std::make_unique<Content>(path, options, std::move(target));
    if (!content->m_file.IsOpen())
        return MakeFailure(path, LastError());
    return std::unique_ptr<Writer>(new Writer(std::move(content)));
}

int SafeReplace::Writer::Get() const
{
    return m_pContent->m_file.Get();
}

Result<void> SafeReplace::Writer::Finish()
{
    int error = ESTALE;
    for (int i = 0; i < s_iAttempts && error == ESTALE; ++i)
    {
        errno = 0;
        if (m_pContent->Finish())
            return {};
        error = LastError();
    }
    return MakeFailure(m_pContent->m_path, error);
}

} // namespace Toolkit
