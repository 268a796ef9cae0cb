// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_UTF8SCAN_H
#define TOOLKIT_INTERNAL_TEXT_UTF8SCAN_H

#include <cstddef>
#include <string_view>

namespace Toolkit::Utf8Scan
{

// The bytes of the character that the text, which is not empty, begins with; 0 when it begins with none.
std::size_t CharacterLength(std::string_view text) noexcept;

// The offset of the first byte that begins no UTF-8 character; npos when all of it is UTF-8.
std::size_t FindBroken(std::string_view bytes) noexcept;

} // namespace Toolkit::Utf8Scan

#endif
