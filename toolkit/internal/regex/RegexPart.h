// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_REGEXPART_H
#define TOOLKIT_INTERNAL_REGEX_REGEXPART_H

#include "toolkit/core/Result.h"
#include "toolkit/internal/regex/RegexCalls.h"

namespace Toolkit
{

// What the part of the library does that is linked with PCRE2 or PCRE. The first call loads it, as
// `LibraryPart::Load` says, which tells of its failure, too.
Result<const RegexCalls*> LoadRegex();

// The same for whoever holds what the part has made, a compiled pattern for instance.
const RegexCalls& LoadedRegex();

} // namespace Toolkit

#endif
