// SPDX-License-Identifier: MIT
#include "toolkit/files/WholeFile.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/ReadWhole.h"
#include "toolkit/internal/system/SafeReplace.h"
#include "toolkit/internal/system/SystemFailure.h"

namespace Toolkit
{

namespace
{

// For the user alone, as a new folder for settings or data must be: who shares a folder says so by making it.
const mode_t s_uFolderMode = 0700;

bool HoldsNul(const std::filesystem::path& path)
{
    return path.native().find('\0') != std::string::npos;
}

// True when the folder is there; otherwise errno tells why not. What another made meanwhile is no failure.
bool MakeEach(const std::filesystem::path& folder)
{
    if (mkdir(folder.c_str(), s_uFolderMode) == 0 || errno == EEXIST)
        return true;
    const std::filesystem::path parent = folder.parent_path();
    if (errno != ENOENT || parent.empty() || parent == folder || !MakeEach(parent))
        return false;
    return mkdir(folder.c_str(), s_uFolderMode) == 0 || errno == EEXIST;
}

// A failure of its own, for without its folder the file cannot be written, either.
Result<void> MakeFolders(const std::filesystem::path& folder)
{
    if (!MakeEach(folder))
        return SystemFailure("cannot make the folder", folder.native(), errno);
    return {};
}

} // namespace

Result<std::string> ReadFile(const std::filesystem::path& path, std::size_t largest)
{
    if (HoldsNul(path))
        return SystemFailure("cannot read", path.native(), EINVAL);
    Result<std::string> bytes = std::string();
    Result<mode_t> read = ReadWhole(path.native(), largest, *bytes);
    return read ? std::move(bytes) : std::move(read).error();
}

Result<void> WriteFile(const std::filesystem::path& path, std::string_view content)
{
    if (HoldsNul(path))
        return SystemFailure("cannot write", path.native(), EINVAL);
    SafeReplace::Options options;
    options.m_bFollowsDangling = true;
    const NativePath native = NativePath::OfBytes(path.native());
    Result<void> written = SafeReplace::Write(native, content, options);
    if (written || written.error().Code() != std::errc::no_such_file_or_directory)
        return written;
    const std::filesystem::path folder = path.parent_path();
    if (folder.empty())
        return written;
    if (const Result<void> made = MakeFolders(folder); !made)
        return made;
    return SafeReplace::Write(native, content, options);
}

} // namespace Toolkit
