#include "toolkit/encoding/UTF8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Toolkit
{

namespace
{

const std::size_t s_uBlock = 16;
// The characters that are encoded at once, on the stack, so that no memory is cleared before it is written.
const std::size_t s_uPart = 512;
const std::size_t s_uInvalid = static_cast<std::size_t>(-1);

bool IsAsciiBlock(const char* text)
{
    unsigned char all = 0;
    for (std::size_t i = 0; i < s_uBlock; ++i)
        all = static_cast<unsigned char>(all | static_cast<unsigned char>(text[i]));
    return all <= 0x7F;
}

// The number of ASCII bytes that `text` begins with, rounded down to whole blocks unless all of it is ASCII.
std::size_t AsciiPrefix(const char* text, std::size_t length)
{
    std::size_t position = 0;
    for (; length - position >= s_uBlock; position += s_uBlock)
        if (!IsAsciiBlock(text + position))
            return position;
    if (length >= s_uBlock)
        return IsAsciiBlock(text + length - s_uBlock) ? length : position;
    while (position < length && static_cast<unsigned char>(text[position]) <= 0x7F)
        ++position;
    return position == length ? position : 0;
}

template <class From, class To>
void CopyAscii(const From* from, std::size_t length, To* to)
{
    std::size_t position = 0;
    for (; length - position >= s_uBlock; position += s_uBlock)
        for (std::size_t i = 0; i < s_uBlock; ++i)
            to[position + i] = static_cast<To>(from[position + i]);
    for (; position < length; ++position)
        to[position] = static_cast<To>(from[position]);
}

bool IsContinuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

// The bytes of the well-formed sequence that begins at `text`, 0 if none does. The ranges of the second byte
// leave out overlong forms, surrogates and values above 10FFFF.
std::size_t SequenceLength(const unsigned char* text, std::size_t left)
{
    const unsigned char lead = text[0];
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    const std::size_t count = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (left < count)
        return 0;
    const unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (text[1] < lowest || text[1] > highest)
        return 0;
    for (std::size_t i = 2; i < count; ++i)
        if (!IsContinuation(text[i]))
            return 0;
    return count;
}

// The characters in well-formed UTF-8, s_uInvalid for any other bytes.
std::size_t CountCharacters(const unsigned char* text, std::size_t length)
{
    std::size_t characters = 0;
    for (std::size_t position = 0; position < length; ++characters)
    {
        const std::size_t count = SequenceLength(text + position, length - position);
        if (count == 0)
            return s_uInvalid;
        position += count;
    }
    return characters;
}

void Decode(const unsigned char* text, std::size_t length, wchar_t* to)
{
    for (const unsigned char* const end = text + length; text != end; ++to)
    {
        const std::uint32_t lead = *text++;
        if (lead < 0x80)
        {
            *to = static_cast<wchar_t>(lead);
            continue;
        }
        const int rest = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        std::uint32_t value = lead & (0x3FU >> rest);
        for (int i = 0; i < rest; ++i)
            value = (value << 6) | (*text++ & 0x3FU);
        *to = static_cast<wchar_t>(value);
    }
}

// The bytes that the characters need, whether they have a UTF-8 form or not.
std::size_t CountBytes(const wchar_t* text, std::size_t length)
{
    std::size_t bytes = length;
    for (std::size_t i = 0; i < length; ++i)
    {
        const std::uint32_t value = static_cast<std::uint32_t>(text[i]);
        bytes += static_cast<std::uint32_t>(value > 0x7F) + static_cast<std::uint32_t>(value > 0x7FF) +
                 static_cast<std::uint32_t>(value > 0xFFFF);
    }
    return bytes;
}

// True when the block is encoded: all of it is ASCII other than zero.
bool EncodeAsciiBlock(const wchar_t* text, char* to)
{
#ifdef __SSE2__
    const auto load = [text](std::size_t i)
    { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i)); };
    // Values that do not fit are cut to the greatest or the least, so that none of them becomes ASCII; the
    // least, and zero, are not greater than zero.
    const __m128i low = _mm_packs_epi32(load(0), load(4));
    const __m128i high = _mm_packs_epi32(load(8), load(12));
    const __m128i bytes = _mm_packus_epi16(low, high);
    if (_mm_movemask_epi8(_mm_cmpgt_epi8(bytes, _mm_setzero_si128())) != 0xFFFF)
        return false;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
#else
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
#endif
    return true;
}

char Continuation(std::uint32_t value, int shift)
{
    return static_cast<char>(0x80U | ((value >> shift) & 0x3FU));
}

// Encodes the character and answers the place behind it, null if it is zero or has no UTF-8 form.
char* EncodeOne(std::uint32_t value, char* to)
{
    if (value <= 0x7F)
    {
        *to = static_cast<char>(value);
        return value == 0 ? nullptr : to + 1;
    }
    if (value <= 0x7FF)
    {
        to[0] = static_cast<char>(0xC0U | (value >> 6));
        to[1] = Continuation(value, 0);
        return to + 2;
    }
    if (value <= 0xFFFF)
    {
        to[0] = static_cast<char>(0xE0U | (value >> 12));
        to[1] = Continuation(value, 6);
        to[2] = Continuation(value, 0);
        return value >= 0xD800 && value <= 0xDFFF ? nullptr : to + 3;
    }
    to[0] = static_cast<char>(0xF0U | (value >> 18));
    to[1] = Continuation(value, 12);
    to[2] = Continuation(value, 6);
    to[3] = Continuation(value, 0);
    return value > 0x10FFFF ? nullptr : to + 4;
}

// Encodes up to the first zero or character without a UTF-8 form, at which `text` is left, and answers the
// place behind what it has written.
char* EncodePart(const wchar_t*& text, const wchar_t* end, char* to)
{
    const wchar_t* const begin = text;
    while (text != end)
    {
        const std::size_t count = std::min(s_uBlock, static_cast<std::size_t>(end - text));
        const std::size_t again = s_uBlock - count;
        // The last block goes back over what has been encoded, if that was ASCII, too.
        if (count < s_uBlock && static_cast<std::size_t>(text - begin) >= again &&
            EncodeAsciiBlock(end - s_uBlock, to - again))
        {
            text = end;
            return to + count;
        }
        if (count == s_uBlock && EncodeAsciiBlock(text, to))
        {
            text += s_uBlock;
            to += s_uBlock;
            continue;
        }
        for (const wchar_t* const blockEnd = text + count; text != blockEnd; ++text)
        {
            char* const next = EncodeOne(static_cast<std::uint32_t>(*text), to);
            if (next == nullptr)
                return to;
            to = next;
        }
    }
    return to;
}

std::size_t LengthToZero(const char* text, std::size_t length)
{
    const void* const zero = std::memchr(text, 0, length);
    return zero == nullptr ? length : static_cast<std::size_t>(static_cast<const char*>(zero) - text);
}

} // namespace

TString<wchar_t> UTF8::ToUNICODE(const TString<char>& text)
{
    const std::size_t length = LengthToZero(text.data(), text.size());
    const std::size_t ascii = AsciiPrefix(text.data(), length);
    const unsigned char* const begin = reinterpret_cast<const unsigned char*>(text.data());
    if (ascii == length)
        return std::wstring(begin, begin + length);
    const unsigned char* const rest = begin + ascii;
    const std::size_t characters = CountCharacters(rest, length - ascii);

    TString<wchar_t> wide;
    if (characters == s_uInvalid)
        return wide;
    wide.resize(ascii + characters);
    CopyAscii(text.data(), ascii, wide.data());
    Decode(rest, length - ascii, wide.data() + ascii);
    return wide;
}

TString<char> UTF8::ToUTF8(const TString<wchar_t>& text)
{
    TString<char> bytes;
    Encode(text, bytes);
    return bytes;
}

void UTF8::Encode(const TString<wchar_t>& text, TString<char>& bytes)
{
    char part[4 * s_uPart];
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    bytes.clear();
    for (bool more = true; more;)
    {
        const wchar_t* const partEnd = next + std::min(s_uPart, static_cast<std::size_t>(end - next));
        const char* const written = EncodePart(next, partEnd, part);
        if (next != partEnd && *next != L'\0')
        {
            bytes.clear();
            return;
        }
        more = next == partEnd && next != end;
        if (more && bytes.empty())
            bytes.reserve(written == part + s_uPart ? text.size() : CountBytes(text.data(), text.size()));
        bytes.append(part, static_cast<std::size_t>(written - part));
    }
}

bool UTF8::HasToBeUTF8(const TString<wchar_t>& text)
{
    return ToUTF8(text).size() != text.size();
}

} // namespace Toolkit
