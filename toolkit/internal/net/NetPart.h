// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_NET_NETPART_H
#define TOOLKIT_INTERNAL_NET_NETPART_H

#include "toolkit/core/Result.h"
#include "toolkit/internal/net/NetCalls.h"

namespace Toolkit
{

// What the part of the library does that is linked with wxWidgets' net library. The first call loads it, as
// `LibraryPart::Load` says, which tells of its failure, too.
Result<const NetCalls*> LoadNet();

} // namespace Toolkit

#endif
