// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_RESOURCES_H
#define TOOLKIT_TESTS_SUPPORT_RESOURCES_H

#include <cstddef>
#include <string>

namespace ToolkitTest
{

// What the process holds at the moment.

// What is allocated and not freed: in bytes, and in blocks where a sanitizer has a heap of its own.
long long HeapInUse();
// True when HeapInUse tells blocks; memory that was freed stays resident for a while then.
bool HasSanitizersHeap();

std::size_t ResidentBytes();
long OpenDescriptors();
// An open descriptor that stands for `path`, -1 if there is none.
int DescriptorOf(const std::string& path);

} // namespace ToolkitTest

#endif
