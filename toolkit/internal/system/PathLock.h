// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_PATHLOCK_H
#define TOOLKIT_INTERNAL_SYSTEM_PATHLOCK_H

#include <chrono>

#include "toolkit/core/TString.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

// Held while a process looks at a path and takes it, so that of two that do so at once neither harms the
// other. It is a locked file of this user alone, whom no other user can keep waiting; it goes with the lock.
// Whatever else lies there is left alone, and there is no lock then.
class PathLock
{
public:
    // Waits for another process of this user, for so long at most.
    PathLock(const TString<char>& file, std::chrono::milliseconds limit);
    ~PathLock();

    PathLock(const PathLock&) = delete;
    PathLock& operator=(const PathLock&) = delete;

    bool IsLocked() const { return m_file.IsOpen(); }

private:
    bool TryLock();

    const TString<char> m_strFile;
    UnsharedDescriptor m_file;
};

} // namespace Toolkit

#endif
