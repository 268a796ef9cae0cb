// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/RegexPart.h"

#include "toolkit/internal/system/LibraryPart.h"

namespace Toolkit
{

namespace
{

LibraryPart<RegexCalls> s_part("regex", c_strRegexEntry);

} // namespace

Result<const RegexCalls*> LoadRegex()
{
    return s_part.Load();
}

const RegexCalls& LoadedRegex()
{
    return s_part.Get();
}

} // namespace Toolkit
