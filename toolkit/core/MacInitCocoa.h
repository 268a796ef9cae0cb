// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_MACINITCOCOA_H
#define TOOLKIT_CORE_MACINITCOCOA_H

#include "toolkit/core/Export.h"

/// @ingroup classic_life
/// Starts the desktop's object runtime, which a host does before it uses any of the desktop's user-interface
/// services. False when it could not be started; this platform has none, so always false.
TOOLKIT_API bool MacInitCocoa();

#endif
