// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_CODEPOINTS_H
#define TOOLKIT_INTERNAL_TEXT_CODEPOINTS_H

#include <cstdint>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

// The ranges of Unicode, by the macros of ICU's headers, which need nothing of its libraries: characters, and
// the surrogates that UTF-16 writes two of for a character above FFFF; and what a byte of UTF-8 is.
namespace Toolkit::CodePoints
{

constexpr std::uint32_t s_uLast = 0x10FFFF;

constexpr bool IsHighSurrogate(std::uint32_t value)
{
    return U16_IS_LEAD(value);
}

constexpr bool IsLowSurrogate(std::uint32_t value)
{
    return U16_IS_TRAIL(value);
}

constexpr bool IsSurrogate(std::uint32_t value)
{
    return U_IS_SURROGATE(value);
}

// True for what has a UTF-8 form.
constexpr bool IsCharacter(std::uint32_t value)
{
    return value <= s_uLast && !IsSurrogate(value);
}

// True for a byte of UTF-8 that continues a character.
constexpr bool IsContinuation(char byte)
{
    return U8_IS_TRAIL(byte);
}

// The character of a high surrogate and the low one that follows it.
constexpr std::uint32_t FromPair(std::uint32_t high, std::uint32_t low)
{
    return static_cast<std::uint32_t>(U16_GET_SUPPLEMENTARY(high, low));
}

// The two surrogates of a character above FFFF.
constexpr std::uint32_t HighOf(std::uint32_t character)
{
    return U16_LEAD(character);
}

constexpr std::uint32_t LowOf(std::uint32_t character)
{
    return U16_TRAIL(character);
}

} // namespace Toolkit::CodePoints

#endif
