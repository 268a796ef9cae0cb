// SPDX-License-Identifier: MIT
#ifndef DESK_ARCHIVE_H
#define DESK_ARCHIVE_H

#include <filesystem>
#include <string>
#include <vector>

#include "toolkit/core/Result.h"

namespace Desk
{

// Extracts the files of a ZIP archive whose names match the regular expression `wanted` into `folder`, and
// returns their paths in the order of the archive. Each is named by the last part of its entry's name, so
// that no entry leads out of the folder. The first one that cannot be extracted ends it.
Toolkit::Result<std::vector<std::filesystem::path>> ExtractFiles(const std::filesystem::path& archive,
                                                                 const std::string& wanted,
                                                                 const std::filesystem::path& folder);

} // namespace Desk

#endif
