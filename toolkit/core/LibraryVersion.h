// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_LIBRARYVERSION_H
#define TOOLKIT_CORE_LIBRARYVERSION_H

#include <string>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// @ingroup version
/// The version of the library that is loaded: four numbers with dots in between. Any thread may call it at
/// any time.
///
/// @code
/// std::string version = Toolkit::LibraryVersion();
/// @endcode
TOOLKIT_API std::string LibraryVersion();

} // namespace Toolkit

#endif
