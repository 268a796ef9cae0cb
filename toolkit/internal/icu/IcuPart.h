// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ICU_ICUPART_H
#define TOOLKIT_INTERNAL_ICU_ICUPART_H

#include "toolkit/core/Result.h"
#include "toolkit/internal/icu/IcuCalls.h"

namespace Toolkit
{

// What the part of the library does that is linked with ICU; the first call loads it, from the folder
// "toolkit" beside the library, and it stays loaded until the process ends. Any thread may call it. Where the
// part or ICU cannot be loaded, for want of memory for instance, the failure is `std::errc::not_supported`
// with the file and the reason of the loader, and the next call tries it again.
Result<const IcuCalls*> LoadIcu();

} // namespace Toolkit

#endif
