// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_PLUGINS_BROUGHT_H
#define TOOLKIT_TESTS_PLUGINS_BROUGHT_H

#include "toolkit/core/Export.h"

namespace ToolkitTest
{

// In a library that a plug-in brings along: registers a module of that library.
TOOLKIT_API void RegisterBrought();

} // namespace ToolkitTest

#endif
