#include "toolkit/encoding/UTF8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Toolkit
{

namespace
{

const std::size_t s_uBlock = 16;
const std::size_t s_uInvalid = static_cast<std::size_t>(-1);

// The number of ASCII elements that `text` begins with, rounded down to whole blocks unless all of it is
// ASCII.
template <class C>
std::size_t AsciiPrefix(const C* text, std::size_t length)
{
    using Unsigned = std::make_unsigned_t<C>;
    std::size_t position = 0;
    for (; length - position >= s_uBlock; position += s_uBlock)
    {
        Unsigned all = 0;
        for (std::size_t i = 0; i < s_uBlock; ++i)
            all = static_cast<Unsigned>(all | static_cast<Unsigned>(text[position + i]));
        if (all > 0x7F)
            return position;
    }
    std::size_t rest = position;
    while (rest < length && static_cast<Unsigned>(text[rest]) <= 0x7F)
        ++rest;
    return rest == length ? rest : position;
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

// Encodes the ASCII elements other than zero that `text` begins with and answers their number, which may be
// rounded down to whole blocks.
std::size_t EncodeAscii(const wchar_t* text, std::size_t length, char* to)
{
    std::size_t position = 0;
    for (; length - position >= s_uBlock; position += s_uBlock)
    {
        std::uint32_t all = 0;
        for (std::size_t i = 0; i < s_uBlock; ++i)
        {
            const std::uint32_t value = static_cast<std::uint32_t>(text[position + i]);
            // Less one, a zero has all its bits set.
            all |= value | (value - 1U);
        }
        if (all > 0x7F)
            return position;
        for (std::size_t i = 0; i < s_uBlock; ++i)
            to[position + i] = static_cast<char>(text[position + i]);
    }
    for (; position < length && static_cast<std::uint32_t>(text[position]) - 1U < 0x7F; ++position)
        to[position] = static_cast<char>(text[position]);
    return position;
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

// The bytes that the characters need, s_uInvalid if one of them has no UTF-8 form.
std::size_t CountBytes(const wchar_t* text, std::size_t length)
{
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < length; ++i)
    {
        const std::uint32_t value = static_cast<std::uint32_t>(text[i]);
        if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
            return s_uInvalid;
        bytes += 1U + (value > 0x7F) + (value > 0x7FF) + (value > 0xFFFF);
    }
    return bytes;
}

char Continuation(std::uint32_t value, int shift)
{
    return static_cast<char>(0x80U | ((value >> shift) & 0x3FU));
}

void EncodeRest(const wchar_t* text, std::size_t length, char* to)
{
    for (std::size_t i = 0; i < length; ++i)
    {
        const std::uint32_t value = static_cast<std::uint32_t>(text[i]);
        if (value <= 0x7F)
        {
            *to++ = static_cast<char>(value);
            continue;
        }
        if (value <= 0x7FF)
            *to++ = static_cast<char>(0xC0U | (value >> 6));
        else
        {
            if (value <= 0xFFFF)
                *to++ = static_cast<char>(0xE0U | (value >> 12));
            else
            {
                *to++ = static_cast<char>(0xF0U | (value >> 18));
                *to++ = Continuation(value, 12);
            }
            *to++ = Continuation(value, 6);
        }
        *to++ = Continuation(value, 0);
    }
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
    const unsigned char* const rest = reinterpret_cast<const unsigned char*>(text.data()) + ascii;
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
    bytes.resize(text.size());
    const std::size_t ascii = EncodeAscii(text.data(), text.size(), bytes.data());
    if (ascii == text.size())
        return;

    const wchar_t* const rest = text.data() + ascii;
    const std::size_t restLength = std::min(text.find(L'\0', ascii), text.size()) - ascii;
    const std::size_t restBytes = CountBytes(rest, restLength);
    if (restBytes == s_uInvalid)
    {
        bytes.clear();
        return;
    }
    bytes.resize(ascii + restBytes);
    EncodeRest(rest, restLength, bytes.data() + ascii);
}

bool UTF8::HasToBeUTF8(const TString<wchar_t>& text)
{
    return ToUTF8(text).size() != text.size();
}

} // namespace Toolkit
