// SPDX-License-Identifier: MIT
#include "toolkit/internal/icu/IcuPart.h"

#include "toolkit/internal/system/LibraryPart.h"

namespace Toolkit
{

namespace
{

LibraryPart<IcuCalls> s_part("icu", c_strIcuEntry);

} // namespace

Result<const IcuCalls*> LoadIcu()
{
    return s_part.Load();
}

} // namespace Toolkit
