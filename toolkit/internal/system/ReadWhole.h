// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_READWHOLE_H
#define TOOLKIT_INTERNAL_SYSTEM_READWHOLE_H

#include <cstddef>
#include <string>

#include <sys/types.h>

#include "toolkit/core/Result.h"

namespace Toolkit
{

// Reads a regular file, whose name is the system's own, to its end, wherever that is: the file may change
// meanwhile. Returns its permissions. It is a failure (Errc::LimitReached) when the file is longer than
// `largest`, and (Errc::Refused) when it is something else than a regular file; what `bytes` holds then means
// nothing.
Result<mode_t> ReadWhole(const std::string& path, std::size_t largest, std::string& bytes);

} // namespace Toolkit

#endif
