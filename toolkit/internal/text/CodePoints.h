// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_CODEPOINTS_H
#define TOOLKIT_INTERNAL_TEXT_CODEPOINTS_H

#include <cstdint>

// The ranges of Unicode: characters, and the surrogates that UTF-16 writes two of for a character above FFFF;
// and what a byte of UTF-8 is.
namespace Toolkit::CodePoints
{

constexpr std::uint32_t s_uLast = 0x10FFFF;

constexpr bool IsHighSurrogate(std::uint32_t value)
{
    return value >= 0xD800 && value <= 0xDBFF;
}

constexpr bool IsLowSurrogate(std::uint32_t value)
{
    return value >= 0xDC00 && value <= 0xDFFF;
}

constexpr bool IsSurrogate(std::uint32_t value)
{
    return value >= 0xD800 && value <= 0xDFFF;
}

// True for what has a UTF-8 form.
constexpr bool IsCharacter(std::uint32_t value)
{
    return value <= s_uLast && !IsSurrogate(value);
}

// True for a byte of UTF-8 that continues a character.
constexpr bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The character of a high surrogate and the low one that follows it.
constexpr std::uint32_t FromPair(std::uint32_t high, std::uint32_t low)
{
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// The two surrogates of a character above FFFF.
constexpr std::uint32_t HighOf(std::uint32_t character)
{
    return 0xD800 + ((character - 0x10000) >> 10);
}

constexpr std::uint32_t LowOf(std::uint32_t character)
{
    return 0xDC00 + ((character - 0x10000) & 0x3FF);
}

} // namespace Toolkit::CodePoints

#endif
