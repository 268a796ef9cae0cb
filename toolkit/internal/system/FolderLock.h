// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_FOLDERLOCK_H
#define TOOLKIT_INTERNAL_SYSTEM_FOLDERLOCK_H

#include <chrono>
#include <filesystem>

#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

// Held while a process looks at a file and then replaces it, so that of two that do so at once neither undoes
// what the other did. It is an advisory lock of the folder that the file, or what it links to, lies in: it
// leaves nothing behind, and ends with the process; a forked child has no part in it. A folder that is not
// there and a system without such locks are no hindrance.
class FolderLock
{
public:
    // Waits for others, in this process too, for so long at most.
    FolderLock(const std::filesystem::path& file, std::chrono::milliseconds limit);

    // True when another one held it all the time.
    bool IsBusy() const { return m_bBusy; }

private:
    UnsharedDescriptor m_folder;
    bool m_bBusy = false;
};

} // namespace Toolkit

#endif
