// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_RUNONSTACK_H
#define TOOLKIT_TESTS_SUPPORT_RUNONSTACK_H

#include <cstddef>
#include <functional>

namespace ToolkitTest
{

// Runs `work` on a thread with a stack of that many bytes, to its end. A sanitizer's own share comes on top.
void RunOnStack(std::size_t size, const std::function<void()>& work);

} // namespace ToolkitTest

#endif
