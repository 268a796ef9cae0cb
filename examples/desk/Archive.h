// SPDX-License-Identifier: MIT
#ifndef DESK_ARCHIVE_H
#define DESK_ARCHIVE_H

#include <vector>

#include "Text.h"

namespace Desk
{

// Extracts the files of a ZIP archive whose names begin like `pattern` into `folder`, each under the last
// part of its name, so that no entry can lead out of the folder. Answers their paths in the order of the
// entries' names; lines for the user are appended to `report`. False when there is nothing to extract or
// something could not be.
bool ExtractFiles(const Text& path, const Text& pattern, const Text& folder, std::vector<Text>& paths,
                  std::vector<Text>& report);

} // namespace Desk

#endif
