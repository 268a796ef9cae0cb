// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/FolderStream.h"

#include <fcntl.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NoCancellation.h"

namespace Toolkit
{

void CloseFolder::operator()(DIR* folder) const
{
    const NoCancellation whole;
    closedir(folder);
}

FolderStream OpenFolder(int from, const char* path)
{
    Descriptor descriptor(openat(from, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    FolderStream folder(descriptor.IsOpen() ? fdopendir(descriptor.Get()) : nullptr);
    if (folder != nullptr)
        descriptor.Release();
    return folder;
}

} // namespace Toolkit
