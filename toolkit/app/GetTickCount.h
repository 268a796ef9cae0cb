// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_GETTICKCOUNT_H
#define TOOLKIT_APP_GETTICKCOUNT_H

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// @ingroup classic_app
/// Milliseconds since an arbitrary moment, wrapping at 2^32. Any thread may ask.
/// Quirk: it advances in clock ticks, of 10 ms as a rule. Quirk: the length of a tick is spelled
/// `uMsMulitplier`.
TOOLKIT_API unsigned int GetTickCount();

} // namespace Toolkit

#endif
