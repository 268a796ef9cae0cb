// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_UTF8BLOCKS_H
#define TOOLKIT_INTERNAL_TEXT_UTF8BLOCKS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "toolkit/internal/text/SimdBlock.h"

// What the conversion of UTF-8 does with many neighbouring elements at once. Not installed.
namespace Toolkit::Utf8Blocks
{

// The elements of a block.
const std::size_t s_uBlock = 16;

#ifdef __SSE2__

// Widens a block that is ASCII; of any other it returns false and writes nothing.
inline bool WidenAscii(const char* text, wchar_t* to)
{
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    if (_mm_movemask_epi8(bytes) != 0)
        return false;
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_unpacklo_epi8(bytes, zero);
    const __m128i high = _mm_unpackhi_epi8(bytes, zero);
    const auto into = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(into, _mm_unpacklo_epi16(low, zero));
    _mm_storeu_si128(into + 1, _mm_unpackhi_epi16(low, zero));
    _mm_storeu_si128(into + 2, _mm_unpacklo_epi16(high, zero));
    _mm_storeu_si128(into + 3, _mm_unpackhi_epi16(high, zero));
    return true;
}

// Narrows a block that is ASCII without a NUL; of any other it returns false and writes nothing.
inline bool NarrowAscii(const wchar_t* text, char* to)
{
    const auto from = reinterpret_cast<const __m128i*>(text);
    // Values that do not fit are cut to the greatest or the least, so that none of them becomes ASCII; the
    // least, and zero, are not greater than zero.
    const __m128i low = _mm_packs_epi32(_mm_loadu_si128(from), _mm_loadu_si128(from + 1));
    const __m128i high = _mm_packs_epi32(_mm_loadu_si128(from + 2), _mm_loadu_si128(from + 3));
    const __m128i bytes = _mm_packus_epi16(low, high);
    if (_mm_movemask_epi8(_mm_cmpgt_epi8(bytes, _mm_setzero_si128())) != 0xFFFF)
        return false;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    return true;
}

#else

inline bool WidenAscii(const char* text, wchar_t* to)
{
    unsigned char all = 0;
    for (std::size_t i = 0; i < s_uBlock; ++i)
        all = static_cast<unsigned char>(all | static_cast<unsigned char>(text[i]));
    if (all > 0x7F)
        return false;
    for (std::size_t i = 0; i < s_uBlock; ++i)
        to[i] = static_cast<wchar_t>(text[i]);
    return true;
}

inline bool NarrowAscii(const wchar_t* text, char* to)
{
    std::uint32_t all = 0;
    for (std::size_t i = 0; i < s_uBlock; ++i)
    {
        const std::uint32_t value = static_cast<std::uint32_t>(text[i]);
        // Less one, a zero has all its bits set.
        all |= value | (value - 1U);
    }
    if (all > 0x7F)
        return false;
    for (std::size_t i = 0; i < s_uBlock; ++i)
        to[i] = static_cast<char>(text[i]);
    return true;
}

#endif

// Narrows what `text` begins with while it is ASCII without a NUL, in whole blocks unless that is all of it,
// and returns the elements.
inline std::size_t NarrowAsciiRun(const wchar_t* text, std::size_t length, char* to)
{
    std::size_t i = 0;
    while (length - i >= s_uBlock && NarrowAscii(text + i, to + i))
        i += s_uBlock;
    const bool tail = length - i < s_uBlock && length >= s_uBlock;
    return tail && NarrowAscii(text + length - s_uBlock, to + length - s_uBlock) ? length : i;
}

// True if the bytes are ASCII without a NUL.
inline bool IsAscii(const char* text, std::size_t length)
{
    using Bytes = Detail::SimdBlock<char>;
    const auto other = [text](std::size_t i) { return Bytes::Load(text + i) <= 0; };
    std::size_t i = 0;
    for (; length - i >= 4 * s_uBlock; i += 4 * s_uBlock)
        if (Bytes::Any(other(i) | other(i + s_uBlock) | other(i + 2 * s_uBlock) | other(i + 3 * s_uBlock)))
            return false;
    for (; length - i >= s_uBlock; i += s_uBlock)
        if (Bytes::Any(other(i)))
            return false;
    if (length >= s_uBlock)
        return !Bytes::Any(other(length - s_uBlock));
    for (; i < length; ++i)
        if (static_cast<signed char>(text[i]) <= 0)
            return false;
    return true;
}

// The bytes that do not continue a character, which those of 80 to BF do: as signed numbers, -128 to -65.
inline std::size_t CountLeads(const char* text, std::size_t length)
{
    using Bytes = Detail::SimdBlock<char>;
    std::size_t leads = 0;
    std::size_t i = 0;
    while (length - i >= Bytes::s_uCount)
    {
        // A lane counts to 127.
        const std::size_t blocks = std::min<std::size_t>((length - i) / Bytes::s_uCount, 127);
        Bytes::Vector sums{};
        for (const std::size_t end = i + blocks * Bytes::s_uCount; i != end; i += Bytes::s_uCount)
            sums -= Bytes::Load(text + i) > -65;
        for (std::size_t lane = 0; lane < Bytes::s_uCount; ++lane)
            leads += static_cast<std::size_t>(sums[lane]);
    }
    for (; i < length; ++i)
        leads += static_cast<std::size_t>(static_cast<signed char>(text[i]) > -65);
    return leads;
}

// The bytes of the UTF-8 form; of elements that have none, some number.
inline std::size_t CountBytes(const wchar_t* text, std::size_t length)
{
    using Text = Detail::SimdBlock<wchar_t>;
    std::size_t bytes = length;
    std::size_t i = 0;
    while (length - i >= Text::s_uCount)
    {
        // Few enough for the sum of a lane.
        const std::size_t blocks = std::min<std::size_t>((length - i) / Text::s_uCount, 1U << 20);
        Text::Vector sums{};
        for (const std::size_t end = i + blocks * Text::s_uCount; i != end; i += Text::s_uCount)
        {
            const Text::Vector values = Text::Load(text + i);
            sums -= (values > 0x7F) + (values > 0x7FF) + (values > 0xFFFF);
        }
        for (std::size_t lane = 0; lane < Text::s_uCount; ++lane)
            bytes += static_cast<std::size_t>(sums[lane]);
    }
    for (; i < length; ++i)
        bytes += static_cast<std::size_t>((text[i] > 0x7F) + (text[i] > 0x7FF) + (text[i] > 0xFFFF));
    return bytes;
}

} // namespace Toolkit::Utf8Blocks

#endif
