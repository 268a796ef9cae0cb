// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_INSTANCELOCK_H
#define TOOLKIT_INTERNAL_SYSTEM_INSTANCELOCK_H

#include <sys/stat.h>
#include <sys/types.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/NativePath.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

// The lock file of the first instance of an application: it holds the number of its process and a NUL, as a
// checker of wxWidgets leaves it and understands it, and is locked by the process for as long as the object
// lives. The lock of a process that is gone is taken over; where the system has no such locks, the number and
// the state of its process decide alone.
class InstanceLock
{
public:
    // Finds out who is first, and is so where nobody else is.
    explicit InstanceLock(const NativePath& file);
    // Removes the file, if this process made it and no other lies there by now.
    ~InstanceLock();

    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    bool IsHeldByAnother() const;

private:
    enum class Found
    {
        // By a living process, or by something that is no lock.
        Taken,
        // Its process is gone.
        LeftBehind,
        // The file is not there any more.
        Vanished,
        // Its maker has not written its number yet.
        Unfinished
    };
    enum class Made
    {
        Yes,
        No,
        Exists
    };

    void FindFirst(bool hasTurn);
    Made Make();
    Made MakeUnnamed();
    Made MakeNamed();
    Made Keep(UnsharedDescriptor file);
    Found LookAtFile(bool hasTurn);
    Found LookAtNumber(const Descriptor& file, const struct stat& status, bool hasTurn);
    bool RemoveLeftBehind(bool hasTurn);
    bool IsInPlace(const struct stat& status) const;
    Descriptor Open(int flags) const;

    const NativePath m_file;
    UnsharedDescriptor m_descriptor;
    // 0 while there is none.
    pid_t m_iFirst = 0;
    pid_t m_iMaker = 0;
    struct stat m_status = {};
    // Of the file that was looked at last.
    struct stat m_found = {};
};

} // namespace Toolkit

#endif
