// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/FolderStream.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NoCancellation.h"

namespace Toolkit
{

namespace
{

FolderStream Open(int from, const char* path, int flags)
{
    Descriptor descriptor(openat(from, path, flags | O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    FolderStream folder(descriptor.IsOpen() ? fdopendir(descriptor.Get()) : nullptr);
    if (folder != nullptr)
        descriptor.Release();
    return folder;
}

} // namespace

void CloseFolder::operator()(DIR* folder) const
{
    const NoCancellation whole;
    closedir(folder);
}

FolderStream OpenFolder(int from, const char* path)
{
    return Open(from, path, 0);
}

FolderStream OpenFolderUnnoted(int from, const char* path)
{
    FolderStream folder = Open(from, path, O_NOATIME);
    // Only the owner of a folder may ask for it.
    return folder != nullptr || errno != EPERM ? std::move(folder) : OpenFolder(from, path);
}

} // namespace Toolkit
