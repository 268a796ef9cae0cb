// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_SANITIZED_H
#define TOOLKIT_TESTS_SUPPORT_SANITIZED_H

namespace ToolkitTest
{

// A sanitizer reserves more than any limit, and refuses too large allocations itself.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const bool s_bSanitized = true;
#elif defined(__has_feature)
const bool s_bSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
const bool s_bSanitized = false;
#endif

} // namespace ToolkitTest

#endif
