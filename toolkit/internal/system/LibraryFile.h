// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_LIBRARYFILE_H
#define TOOLKIT_INTERNAL_SYSTEM_LIBRARYFILE_H

#include "toolkit/core/Result.h"

namespace Toolkit
{

class NativePath;

// Says why a file is surely no library that this process can load: of these, the loader has no words for
// some, waits for others, and ends the process for a file that is cut short. What it says of the rest is the
// loader's business. The codes are those of `PluginsBase::Load`.
Result<void> CheckLibraryFile(const NativePath& path);

} // namespace Toolkit

#endif
