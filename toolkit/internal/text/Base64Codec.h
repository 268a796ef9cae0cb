// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_BASE64CODEC_H
#define TOOLKIT_INTERNAL_TEXT_BASE64CODEC_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The groups of Base64 (RFC 4648, the standard alphabet): three bytes are four characters.
namespace Toolkit::Base64Codec
{

constexpr std::size_t s_uGroupBytes = 3;
constexpr std::size_t s_uGroupCharacters = 4;
constexpr char s_chPad = '=';

// The bit of a group in which a character is not in the alphabet. The value of such a character is 0.
constexpr std::uint32_t s_uForeign = 0x80000000U;

// The number of characters for that many bytes, padding included.
constexpr std::size_t EncodedSize(std::size_t bytes)
{
    return (bytes + s_uGroupBytes - 1) / s_uGroupBytes * s_uGroupCharacters;
}

// Writes the text of the bytes with its padding and returns the number of characters.
std::size_t Encode(const unsigned char* data, std::size_t size, unsigned char* to);

// Writes the bytes of whole groups; false when a character of them is not in the alphabet.
bool DecodeGroups(const unsigned char* text, std::size_t groups, unsigned char* to);

// Up to three characters that are the beginning of a group, as 24 bits and s_uForeign.
std::uint32_t BeginningOfGroup(const unsigned char* text, std::size_t count);

// Text without padding. What is left after its last whole byte must be `leftOver`, which is 0 in what others
// write; of a last group of one character it is all. False when a character is not in the alphabet.
bool DecodeUnpadded(std::string_view text, std::string& bytes, std::uint32_t& leftOver);

bool IsInAlphabet(char character);

} // namespace Toolkit::Base64Codec

#endif
