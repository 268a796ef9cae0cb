// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_FOLDERS_H
#define TOOLKIT_APP_FOLDERS_H

#include <filesystem>
#include <memory>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// Where an application keeps the files of its user: a folder of the application's name below each XDG base
/// directory (XDG_CONFIG_HOME and the others). The base directories are found out once,
/// from the environment, which is not read in a process that has more rights than its user. Nothing is made:
/// whoever writes there makes the folder, for its user alone (0700), as `WriteFile` does. A value that is
/// cheap to copy; any thread may read it.
///
/// @code
/// Toolkit::Result<Toolkit::Folders> folders = Toolkit::Folders::Of("watch");
/// if (!folders)
///     return Fail(folders.error().Message());
/// auto settings = Toolkit::Settings::LoadOrNew(folders->Config() / "watch.ini");
/// @endcode
class TOOLKIT_API Folders
{
public:
    /// The folders of the application of that name: a plain name of a folder of at most 255 bytes, without
    /// slashes and control characters (`std::errc::invalid_argument`). Without a home folder, in HOME or for
    /// the system's users, it fails with `std::errc::no_such_file_or_directory`, or, where the list of users
    /// could not be read, with the code of the system (`std::errc::too_many_files_open`, for instance).
    static Result<Folders> Of(std::string_view name);

    Folders(const Folders& other) noexcept;
    Folders& operator=(const Folders& other) noexcept;
    ~Folders();

    /// Settings: below XDG_CONFIG_HOME, or ~/.config.
    std::filesystem::path Config() const;
    /// What the user would miss: below XDG_DATA_HOME, or ~/.local/share.
    std::filesystem::path Data() const;
    /// Logs, histories, what a restart goes on with: below XDG_STATE_HOME, or ~/.local/state.
    std::filesystem::path State() const;
    /// What can be made again: below XDG_CACHE_HOME, or ~/.cache.
    std::filesystem::path Cache() const;
    /// Sockets and locks, which end with the session: below XDG_RUNTIME_DIR, or else /run/user/ID, where
    /// that is a folder of this user in which nobody else can write; or else "runtime" in the cache. It is
    /// never a folder that is anyone else's.
    std::filesystem::path Runtime() const;

    /// The file of the running executable; empty where the system does not tell.
    static std::filesystem::path Executable();

private:
    struct Paths;

    explicit Folders(std::shared_ptr<const Paths> paths) noexcept;

    std::shared_ptr<const Paths> m_pPaths;
};

} // namespace Toolkit

#endif
