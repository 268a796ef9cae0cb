// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_CHARSETS_UTF8SCAN_H
#define TOOLKIT_INTERNAL_CHARSETS_UTF8SCAN_H

#include <cstddef>
#include <string_view>

namespace Toolkit::Utf8Scan
{

// The offset of the first byte that begins no UTF-8 character; npos when all of it is UTF-8.
std::size_t FindBroken(std::string_view bytes) noexcept;

} // namespace Toolkit::Utf8Scan

#endif
