// SPDX-License-Identifier: MIT
#include "toolkit/core/LibraryVersion.h"

namespace Toolkit
{

std::string LibraryVersion()
{
    return TOOLKIT_VERSION;
}

} // namespace Toolkit
