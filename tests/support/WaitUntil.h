// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_WAITUNTIL_H
#define TOOLKIT_TESTS_SUPPORT_WAITUNTIL_H

#include <functional>

namespace ToolkitTest
{

// True once `condition` holds; asked every few milliseconds for at most a minute.
bool WaitUntil(const std::function<bool()>& condition);

} // namespace ToolkitTest

#endif
