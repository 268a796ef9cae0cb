// SPDX-License-Identifier: MIT
#include "toolkit/internal/net/NetPart.h"

#include "toolkit/internal/system/LibraryPart.h"

namespace Toolkit
{

namespace
{

LibraryPart<NetCalls> s_part("net", c_strNetEntry);

} // namespace

Result<const NetCalls*> LoadNet()
{
    return s_part.Load();
}

} // namespace Toolkit
