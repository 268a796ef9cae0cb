// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_UTF8REPAIR_H
#define TOOLKIT_INTERNAL_TEXT_UTF8REPAIR_H

#include <cstddef>
#include <string>
#include <string_view>

namespace Toolkit
{

// UTF-8 for texts that must not be lost for a broken byte: U+FFFD stands for what is no Unicode character.
// Any thread may call it.
class Utf8Repair
{
public:
    // True when every byte is ASCII.
    static bool IsAscii(std::string_view text);

    // Replaces each byte that belongs to no well-formed character.
    static void Repair(std::string& text);

    // Each element is a code point.
    static void AppendWide(std::string& text, std::wstring_view wide);

private:
    // The length of the well-formed character of more than one byte that `text` begins with; 0 without one.
    static std::size_t LengthOf(std::string_view text);
};

} // namespace Toolkit

#endif
