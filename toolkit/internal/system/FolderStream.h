// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_FOLDERSTREAM_H
#define TOOLKIT_INTERNAL_SYSTEM_FOLDERSTREAM_H

#include <memory>

#include <dirent.h>

namespace Toolkit
{

struct CloseFolder
{
    void operator()(DIR* folder) const;
};

// The entries of an open folder, for `readdir`.
using FolderStream = std::unique_ptr<DIR, CloseFolder>;

// Opens the folder at `path`, which counts from the open folder `from`, or from the working folder where that
// is AT_FDCWD. Null, and the reason in errno, on failure.
FolderStream OpenFolder(int from, const char* path);

// The same for a look that is nobody's but ours: where this user may ask for it, it is no access that the
// folder notes. A note would go to the disk with the next sync of the folder.
FolderStream OpenFolderUnnoted(int from, const char* path);

} // namespace Toolkit

#endif
