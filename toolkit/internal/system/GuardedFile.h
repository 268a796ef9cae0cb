// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_GUARDEDFILE_H
#define TOOLKIT_INTERNAL_SYSTEM_GUARDEDFILE_H

#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{
class NativePath;
}

// Files at places that can be guessed, in folders where everyone may write. Only a regular file of this user
// is ours; links, FIFOs and the files of others are neither opened nor trusted. What is written to must have
// no other name either.
namespace Toolkit::GuardedFile
{

// True when such a file lies at `path`, whatever other names it has.
bool IsAt(const NativePath& path);

// True when `descriptor` is one of such a file that has no other name.
bool Is(int descriptor);

// Opens for writing, made if missing, not truncated: a close-on-exec descriptor; none on failure and when
// something else, or a file with a second name, lies there. It never waits.
Descriptor Open(const NativePath& path);

// Empties the file of `descriptor`; false on failure.
bool Empty(int descriptor);

} // namespace Toolkit::GuardedFile

#endif
