// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/InstancePlace.h"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/BaseDirectories.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/text/Fingerprint.h"

namespace Toolkit
{

namespace
{

const mode_t s_uFolderMode = 0700;
// Of all keys.
const char* const c_strFolder = "toolkit";

void MakeFolder(const std::filesystem::path& path)
{
    std::error_code ignored;
    std::vector<std::filesystem::path> missing;
    for (std::filesystem::path each = path.parent_path();
         !each.empty() && !std::filesystem::exists(each, ignored); each = each.parent_path())
        missing.push_back(each);
    for (auto each = missing.rbegin(); each != missing.rend(); ++each)
        mkdir(each->c_str(), s_uFolderMode);
    mkdir(path.c_str(), s_uFolderMode);
}

Result<Descriptor> OpenFolder(const std::filesystem::path& path)
{
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (!folder.IsOpen() || fstat(folder.Get(), &status) != 0)
        return SystemFailure("cannot open the folder", path.native(), errno);
    if (status.st_uid != geteuid())
        return SystemFailure("cannot use the folder", path.native(), EPERM);
    return Result<Descriptor>(std::move(folder));
}

} // namespace

Result<InstancePlace> InstancePlace::Make(std::string_view key)
{
    const Result<std::filesystem::path> path = BaseDirectories::RuntimeOf(c_strFolder);
    if (!path)
        return path.error();
    MakeFolder(*path);
    Result<Descriptor> folder = OpenFolder(*path);
    if (!folder)
        return folder.error();
    if (fchmod(folder->Get(), s_uFolderMode) != 0)
        return SystemFailure("cannot use the folder", path->native(), errno);
    return InstancePlace(*std::move(folder), key);
}

Result<InstancePlace> InstancePlace::Find(std::string_view key)
{
    const Result<std::filesystem::path> path = BaseDirectories::RuntimeOf(c_strFolder);
    if (!path)
        return path.error();
    Result<Descriptor> folder = OpenFolder(*path);
    return folder ? Result<InstancePlace>(InstancePlace(*std::move(folder), key)) : folder.error();
}

InstancePlace::InstancePlace(Descriptor folder, std::string_view key)
    : m_folder(std::move(folder)),
      m_strPath("/proc/self/fd/" + std::to_string(m_folder.Get()) + "/" + Fingerprint(key))
{
}

IPCAddress InstancePlace::Socket() const
{
    return IPCAddress(TString<wchar_t>(std::wstring(m_strPath.begin(), m_strPath.end()) + L".socket"));
}

} // namespace Toolkit
