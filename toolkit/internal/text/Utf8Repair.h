// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_UTF8REPAIR_H
#define TOOLKIT_INTERNAL_TEXT_UTF8REPAIR_H

#include <cstddef>
#include <string>
#include <string_view>

// UTF-8 for texts that must not be lost for a broken byte: U+FFFD stands for what is no Unicode character.
// Any thread may call it.
namespace Toolkit::Utf8Repair
{

// True when every byte is ASCII and no NUL.
bool IsAscii(std::string_view text);

// Replaces each byte that belongs to no well-formed character.
void Repair(std::string& text);

// Each element is a code point.
void AppendWide(std::string& text, std::wstring_view wide);

} // namespace Toolkit::Utf8Repair

#endif
