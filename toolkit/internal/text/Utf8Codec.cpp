// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/Utf8Codec.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/Utf8Blocks.h"

namespace Toolkit
{

namespace
{

using CodePoints::IsSurrogate;
using Utf8Blocks::s_uBlock;

// The six bits of a byte that continues a character; more than 3F of any other byte.
std::uint32_t Continued(char byte)
{
    return static_cast<unsigned char>(byte) ^ 0x80U;
}

// Decodes the characters that begin in front of `stop`, one after the other, up to what is no UTF-8. The last
// of them may go on after `stop`, up to `end`.
inline void DecodeEach(const char*& text, const char* stop, const char* end, wchar_t*& to)
{
    while (text < stop)
    {
        const std::uint32_t lead = static_cast<unsigned char>(text[0]);
        if (lead < 0x80)
        {
            *to++ = static_cast<wchar_t>(lead);
            ++text;
        }
        else if (lead < 0xE0)
        {
            if (end - text < 2 || lead < 0xC2 || Continued(text[1]) > 0x3F)
                return;
            *to++ = static_cast<wchar_t>((lead & 0x1FU) << 6 | Continued(text[1]));
            text += 2;
        }
        else if (lead < 0xF0)
        {
            if (end - text < 3 || (Continued(text[1]) | Continued(text[2])) > 0x3F)
                return;
            const std::uint32_t value = (lead & 0x0FU) << 12 | Continued(text[1]) << 6 | Continued(text[2]);
            if (value < 0x800 || IsSurrogate(value))
                return;
            *to++ = static_cast<wchar_t>(value);
            text += 3;
        }
        else
        {
            if (end - text < 4 || (Continued(text[1]) | Continued(text[2]) | Continued(text[3])) > 0x3F)
                return;
            // A lead from F8 on makes a value that is too great.
            const std::uint32_t value = (lead & 0x0FU) << 18 | Continued(text[1]) << 12 |
                                        Continued(text[2]) << 6 | Continued(text[3]);
            if (value < 0x10000 || value > CodePoints::s_uLast)
                return;
            *to++ = static_cast<wchar_t>(value);
            text += 4;
        }
    }
}

// Returns the place after what it has written; null if the text is not UTF-8.
wchar_t* DecodeAll(const char* text, const char* end, wchar_t* to)
{
    const char* const begin = text;
    while (static_cast<std::size_t>(end - text) >= s_uBlock)
    {
        const char* const stop = text + s_uBlock;
        if (Utf8Blocks::WidenAscii(text, to))
        {
            text = stop;
            to += s_uBlock;
            continue;
        }
        DecodeEach(text, stop, end, to);
        if (text < stop)
            return nullptr;
    }
    // The rest, too, is a block with what stands before it, if all of that is ASCII.
    const std::size_t left = static_cast<std::size_t>(end - text);
    const std::size_t again = s_uBlock - left;
    if (static_cast<std::size_t>(text - begin) >= again && Utf8Blocks::WidenAscii(text - again, to - again))
        return to + left;
    DecodeEach(text, end, end, to);
    return text == end ? to : nullptr;
}

char Continuation(std::uint32_t value, int shift)
{
    return static_cast<char>(0x80U | ((value >> shift) & 0x3FU));
}

// Encodes one character after the other up to a NUL or what has no UTF-8 form.
inline void EncodeEach(const wchar_t*& text, const wchar_t* end, char*& to)
{
    for (; text != end; ++text)
    {
        const std::uint32_t value = static_cast<std::uint32_t>(*text);
        if (value <= 0x7F)
        {
            if (value == 0)
                return;
            *to++ = static_cast<char>(value);
        }
        else if (value <= 0x7FF)
        {
            *to++ = static_cast<char>(0xC0U | (value >> 6));
            *to++ = Continuation(value, 0);
        }
        else if (value <= 0xFFFF)
        {
            if (IsSurrogate(value))
                return;
            *to++ = static_cast<char>(0xE0U | (value >> 12));
            *to++ = Continuation(value, 6);
            *to++ = Continuation(value, 0);
        }
        else
        {
            if (value > CodePoints::s_uLast)
                return;
            *to++ = static_cast<char>(0xF0U | (value >> 18));
            *to++ = Continuation(value, 12);
            *to++ = Continuation(value, 6);
            *to++ = Continuation(value, 0);
        }
    }
}

// Encodes up to a NUL or what has no UTF-8 form, at which `text` is left, and returns the place after what
// it has written.
char* EncodeAll(const wchar_t*& text, const wchar_t* end, char* to)
{
    const wchar_t* next = text;
    while (static_cast<std::size_t>(end - next) >= s_uBlock)
    {
        const wchar_t* const stop = next + s_uBlock;
        if (Utf8Blocks::NarrowAscii(next, to))
        {
            next = stop;
            to += s_uBlock;
            continue;
        }
        EncodeEach(next, stop, to);
        if (next != stop)
        {
            text = next;
            return to;
        }
    }
    const std::size_t left = static_cast<std::size_t>(end - next);
    const std::size_t again = s_uBlock - left;
    if (static_cast<std::size_t>(next - text) >= again && Utf8Blocks::NarrowAscii(next - again, to - again))
    {
        text = end;
        return to + left;
    }
    EncodeEach(next, end, to);
    text = next;
    return to;
}

// Has `write(room)` make a text of at most `length` elements and return its length.
template <class C, class Write>
void Overwrite(TString<C>& text, std::size_t length, Write write)
{
    text.resize(length);
    text.resize(write(text.data()));
}

// So many characters are encoded on the stack. If there are more, these tell what may follow.
const std::size_t s_uPart = 256;
using Part = char[4 * s_uPart];

// Encodes the beginning of the text and returns its bytes. `rest` is where to go on; null if that was all.
std::size_t EncodeBeginning(const TString<wchar_t>& text, Part& part, const wchar_t*& rest)
{
    const wchar_t* next = text.data();
    const wchar_t* const stop = next + std::min(s_uPart, text.size());
    const std::size_t bytes = static_cast<std::size_t>(EncodeAll(next, stop, part) - part);
    const bool valid = next == stop || *next == L'\0';
    rest = next == stop && text.size() > s_uPart ? next : nullptr;
    return valid ? bytes : 0;
}

// Encodes `rest` after the bytes that are done.
void EncodeBehind(const char* done, std::size_t count, const wchar_t* rest, const wchar_t* end,
                  TString<char>& bytes)
{
    const std::size_t most = count + Utf8Blocks::CountBytes(rest, static_cast<std::size_t>(end - rest));
    Overwrite(bytes, most,
              [&](char* room)
              {
                  std::memcpy(room, done, count);
                  return static_cast<std::size_t>(EncodeAll(rest, end, room + count) - room);
              });
    if (*rest != L'\0')
        bytes.clear();
}

// The same after a part that is ASCII: so the rest will be, in most texts.
void EncodeBehindAscii(const Part& part, const wchar_t* rest, const wchar_t* end, TString<char>& bytes)
{
    const std::size_t left = static_cast<std::size_t>(end - rest);
    Overwrite(bytes, s_uPart + left,
              [&](char* room)
              {
                  std::memcpy(room, part, s_uPart);
                  return s_uPart + Utf8Blocks::NarrowAsciiRun(rest, left, room + s_uPart);
              });
    rest += bytes.size() - s_uPart;
    if (*rest == L'\0')
        return;
    TString<char> longer;
    EncodeBehind(bytes.data(), bytes.size(), rest, end, longer);
    bytes.swap(longer);
}

void EncodeLong(const TString<wchar_t>& text, const Part& part, std::size_t count, const wchar_t* rest,
                TString<char>& bytes)
{
    const wchar_t* const end = text.data() + text.size();
    if (count == s_uPart)
        EncodeBehindAscii(part, rest, end, bytes);
    else
        EncodeBehind(part, count, rest, end, bytes);
}

} // namespace

TString<wchar_t> Utf8Codec::Decode(const TString<char>& bytes)
{
    const char* const begin = bytes.data();
    std::size_t length = bytes.size();
    std::size_t characters = length;
    if (!Utf8Blocks::IsAscii(begin, length))
    {
        length = std::min(length, std::char_traits<char>::length(begin));
        characters = Utf8Blocks::CountLeads(begin, length);
    }
    TString<wchar_t> wide(characters, L'\0');
    // Of a text that is no UTF-8, no more characters are decoded before that is seen.
    Overwrite(wide, characters,
              [begin, length](wchar_t* room)
              {
                  const wchar_t* const end = DecodeAll(begin, begin + length, room);
                  return end == nullptr ? 0 : static_cast<std::size_t>(end - room);
              });
    return wide;
}

TString<char> Utf8Codec::Encode(const TString<wchar_t>& text)
{
    Part part;
    const wchar_t* rest = nullptr;
    const std::size_t count = EncodeBeginning(text, part, rest);
    if (rest == nullptr)
        return std::string(part, count);
    TString<char> bytes;
    EncodeLong(text, part, count, rest, bytes);
    return bytes;
}

void Utf8Codec::EncodeInto(const TString<wchar_t>& text, TString<char>& bytes)
{
    Part part;
    const wchar_t* rest = nullptr;
    const std::size_t count = EncodeBeginning(text, part, rest);
    bytes.assign(part, count);
    if (rest != nullptr)
        EncodeLong(text, part, count, rest, bytes);
}

} // namespace Toolkit
