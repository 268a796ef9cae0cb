#ifndef TOOLKIT_TESTS_SUPPORT_RESOURCES_H
#define TOOLKIT_TESTS_SUPPORT_RESOURCES_H

#include <cstddef>

namespace ToolkitTest
{

// What the process holds at the moment.

// What is allocated and not freed: in bytes, and in blocks where a sanitizer has a heap of its own.
long long HeapInUse();
// True when HeapInUse tells blocks; memory that was freed stays resident for a while then.
bool HasSanitizersHeap();

std::size_t ResidentBytes();
long OpenDescriptors();

} // namespace ToolkitTest

#endif
