// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ICU_ICUPART_H
#define TOOLKIT_INTERNAL_ICU_ICUPART_H

#include "toolkit/core/Result.h"
#include "toolkit/internal/icu/IcuCalls.h"

namespace Toolkit
{

// What the part of the library does that is linked with ICU. The first call loads it, as
// `LibraryPart::Load` says, which tells of its failure, too.
Result<const IcuCalls*> LoadIcu();

} // namespace Toolkit

#endif
