// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_ASCIITEXT_H
#define TOOLKIT_INTERNAL_TEXT_ASCIITEXT_H

#include <cstddef>

// Narrow text that every conversion leaves as it is: ASCII without a NUL, which may end one.
namespace Toolkit::AsciiText
{

// Writes the bytes as characters of their values; false when they are no such text, whatever was written.
inline bool Widen(const char* bytes, std::size_t length, wchar_t* characters)
{
    int bits = 0;
    for (std::size_t i = 0; i < length; ++i)
    {
        const int byte = static_cast<signed char>(bytes[i]);
        characters[i] = byte;
        // Negative for the others.
        bits |= byte | (byte - 1);
    }
    return bits >= 0;
}

} // namespace Toolkit::AsciiText

#endif
