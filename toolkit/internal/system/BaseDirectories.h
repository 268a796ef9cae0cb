// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_BASEDIRECTORIES_H
#define TOOLKIT_INTERNAL_SYSTEM_BASEDIRECTORIES_H

#include <filesystem>
#include <optional>
#include <string_view>

#include "toolkit/core/Result.h"

// The base directories of the user, which XDG_CONFIG_HOME and its like name. A relative value of a variable
// is ignored, and so is the whole environment in a process that has more rights than its user. Nothing is
// made.
namespace Toolkit::BaseDirectories
{

// HOME, or else the home folder of the user in the system's list.
Result<std::filesystem::path> Home();

// The folder that the variable names, or that of this name in the home folder.
Result<std::filesystem::path> Of(const char* variable, const char* inHome);

// Where the sockets and locks of the user's session lie, XDG_RUNTIME_DIR or what takes its place on this
// system; nothing where that is not a folder of the user in which nobody else can write. A folder that
// XDG_RUNTIME_DIR names need not be there yet.
std::optional<std::filesystem::path> Runtime();

// The folder of an application of that name in there, or in the user's cache where there is no such place.
Result<std::filesystem::path> RuntimeOf(std::string_view name);

} // namespace Toolkit::BaseDirectories

#endif
