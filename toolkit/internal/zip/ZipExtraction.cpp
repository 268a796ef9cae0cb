// SPDX-License-Identifier: MIT
#include "toolkit/internal/zip/ZipExtraction.h"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>

#include "toolkit/internal/charsets/FoldedText.h"
#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/TemporaryFile.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/zip/ZipContent.h"
#include "toolkit/internal/zip/ZipEntryPath.h"

namespace Toolkit
{

namespace
{

const char c_strAttempt[] = "cannot extract";
// Below that length no ratio is too high.
const std::uint64_t s_uNoRatio = 16 << 20;

bool IsSpecial(unsigned int mode)
{
    const unsigned int kind = mode & S_IFMT;
    return kind != 0 && kind != S_IFREG && kind != S_IFDIR;
}

// A folder below `parent`, made if it is missing; never through a link.
Descriptor OpenFolderBelow(int parent, const std::string& name)
{
    const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    Descriptor folder(openat(parent, name.c_str(), flags));
    if (folder.IsOpen() || errno != ENOENT || (mkdirat(parent, name.c_str(), 0777) != 0 && errno != EEXIST))
        return folder;
    return Descriptor(openat(parent, name.c_str(), flags));
}

// True when a content is more than so many times as long as in the archive.
bool IsOver(std::uint64_t ratio, std::uint64_t size, std::uint64_t compressed)
{
    if (ratio == 0)
        return true;
    const std::uint64_t least = size / ratio + (size % ratio != 0 ? 1 : 0);
    return compressed < least;
}

// True where nothing is there, or a regular file.
bool MayBeReplaced(int folder, const std::string& name)
{
    struct stat status = {};
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT;
    errno = S_ISDIR(status.st_mode) ? EISDIR : EEXIST;
    return S_ISREG(status.st_mode);
}

} // namespace

std::string ZipExtraction::TakenNames::Take(const std::vector<std::string_view>& parts, bool isFolder)
{
    Name* last = nullptr;
    std::size_t parent = 0;
    for (const std::string_view part : parts)
    {
        const Result<std::string> folded = FoldText(part);
        if (!folded)
            return "its name is not compared with the others: " + folded.error().Message();
        const std::size_t number = m_names.size() + 1;
        const auto place = m_names.try_emplace({parent, *folded}, Name{std::string(part), number}).first;
        last = &place->second;
        if (last->m_strPart != part)
            return "its name is another one's but for case or form";
        parent = last->m_uNumber;
    }
    return isFolder || !std::exchange(last->m_bIsFile, true) ? "" : "its name is another one's";
}

ZipExtraction::ZipExtraction(std::shared_ptr<const ZipFile> file, int root, std::uint64_t bytes,
                             std::uint64_t ratio)
    : m_file(std::move(file)), m_iRoot(root), m_uBytes(bytes), m_uRatio(ratio)
{
}

Result<void> ZipExtraction::Extract(const Entry& entry)
{
    const std::string& bytes = entry.record.name;
    const char* const wrongName = WrongInZipPath(bytes.find('\0') != bytes.npos ? bytes : entry.name);
    std::string wrong = wrongName != nullptr ? wrongName : "";
    // No system call takes a longer one.
    if (entry.name.size() >= PATH_MAX)
        return SystemFailure(c_strAttempt, entry.name, ENAMETOOLONG);
    const std::vector<std::string_view> parts = PartsOfZipPath(entry.name);
    if (wrong.empty() && IsSpecial(entry.record.mode))
        wrong = "it is a link or a device";
    if (wrong.empty())
        wrong = m_names.Take(parts, entry.isFolder);
    if (!wrong.empty())
        return Failure(Errc::Refused, c_strAttempt + (" " + entry.name) + ": " + wrong);
    if (entry.size > m_uBytes || (entry.size > s_uNoRatio && IsOver(m_uRatio, entry.size, entry.compressed)))
        return Failure(Errc::LimitReached, c_strAttempt + (" " + entry.name) + ": it is too long");
    return ExtractInto(entry, parts);
}

Result<void> ZipExtraction::ExtractInto(const Entry& entry, const std::vector<std::string_view>& parts)
{
    Descriptor parent;
    const std::size_t folders = entry.isFolder ? parts.size() : parts.size() - 1;
    for (std::size_t i = 0; i < folders; ++i)
    {
        Descriptor folder = OpenFolderBelow(i == 0 ? m_iRoot : parent.Get(), std::string(parts[i]));
        if (!folder.IsOpen())
            return SystemFailure(c_strAttempt, entry.name, errno);
        parent = std::move(folder);
    }
    return entry.isFolder
               ? Result<void>()
               : ExtractFile(entry, folders == 0 ? m_iRoot : parent.Get(), std::string(parts.back()));
}

Result<void> ZipExtraction::ExtractFile(const Entry& entry, int folder, const std::string& name)
{
    if (!MayBeReplaced(folder, name))
        return SystemFailure(c_strAttempt, entry.name, errno);
    TemporaryFile file(folder, 0666);
    if (!file.IsOpen())
        return SystemFailure(c_strAttempt, entry.name, errno);
    const auto take = [&](const char* block, std::size_t count)
    { return WriteAll(file.Get(), block, count); };
    if (Result<void> decoded = ZipContent::Decode(m_file, entry.record, c_strAttempt, entry.name, take);
        !decoded)
        return decoded;
    if (!file.TakePlaceOf(name.c_str()))
        return SystemFailure(c_strAttempt, entry.name, errno);
    m_uBytes -= entry.size;
    return {};
}

} // namespace Toolkit
