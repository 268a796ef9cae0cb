// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/BaseDirectories.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toolkit/internal/system/SystemFailure.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uRecord = 1024;
const std::size_t s_uLongestRecord = 1024 * 1024;

// The absolute path that a variable holds.
std::optional<std::filesystem::path> Named(const char* variable)
{
    const char* const value = secure_getenv(variable);
    if (value == nullptr || *value != '/')
        return std::nullopt;
    return std::filesystem::path(value);
}

Failure NoHome(uid_t user, int error)
{
    return SystemFailure("cannot find the home folder of user", std::to_string(user), error);
}

Result<std::filesystem::path> ListedHome()
{
    const uid_t user = geteuid();
    std::vector<char> record(s_uRecord);
    passwd entry = {};
    passwd* found = nullptr;
    int error = EINTR;
    while ((error = getpwuid_r(user, &entry, record.data(), record.size(), &found)) == EINTR ||
           (error == ERANGE && record.size() < s_uLongestRecord))
        if (error == ERANGE)
            record.resize(2 * record.size());
    if (found != nullptr && found->pw_dir != nullptr && *found->pw_dir == '/')
        return std::filesystem::path(found->pw_dir);
    return NoHome(user, error != 0 ? error : ENOENT);
}

// False, too, for a folder that is not there.
bool IsOwnFolder(const std::filesystem::path& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool IsMissing(const std::filesystem::path& path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

} // namespace

Result<std::filesystem::path> BaseDirectories::Home()
{
    if (std::optional<std::filesystem::path> home = Named("HOME"))
        return *std::move(home);
    return ListedHome();
}

Result<std::filesystem::path> BaseDirectories::Of(const char* variable, const char* inHome)
{
    if (std::optional<std::filesystem::path> named = Named(variable))
        return *std::move(named);
    Result<std::filesystem::path> home = Home();
    if (home)
        *home /= inHome;
    return home;
}

std::optional<std::filesystem::path> BaseDirectories::Runtime()
{
    std::optional<std::filesystem::path> named = Named("XDG_RUNTIME_DIR");
    if (named && (IsOwnFolder(*named) || IsMissing(*named)))
        return named;
    const std::filesystem::path usual = "/run/user/" + std::to_string(geteuid());
    return IsOwnFolder(usual) ? std::make_optional(usual) : std::nullopt;
}

Result<std::filesystem::path> BaseDirectories::RuntimeOf(std::string_view name)
{
    if (const std::optional<std::filesystem::path> runtime = Runtime())
        return *runtime / name;
    Result<std::filesystem::path> cache = Of("XDG_CACHE_HOME", ".cache");
    if (cache)
        *cache = *cache / name / "runtime";
    return cache;
}

} // namespace Toolkit
