// SPDX-License-Identifier: MIT
#include "toolkit/core/Export.h"

// A library, and no plug-in.

extern "C" TOOLKIT_API int Answer();

extern "C" int Answer()
{
    return 42;
}
