// SPDX-License-Identifier: MIT
#include "toolkit/encoding/QP.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "toolkit/encoding/UTF8.h"

namespace Toolkit
{

namespace
{

constexpr char c_strDigits[] = "0123456789ABCDEF";

// The ASCII codes that must be escaped: code c is bit c mod 8 of byte c / 8. Control characters, space and
// "(),/:;<=>?@[\] with the quotation mark.
constexpr unsigned char QUOTED[16] = {0xFF, 0xFF, 0xFF, 0xFF, 0x05, 0x93, 0x00, 0xFC,
                                      0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x00, 0x00};

constexpr unsigned char s_uFirstNotPlain = 127;
constexpr unsigned char s_uLineEnd = 254;
constexpr unsigned char s_uNoDigit = 255;
// Quirk: one more than a hexadecimal digit can be.
constexpr unsigned char s_uLargestDigit = 16;
constexpr unsigned char s_uBadDigit = 128;

constexpr int s_iNoByte = -1;

// The largest characters that take one, two and three bytes in UTF-8; the longest takes four.
constexpr std::uint32_t s_uLargestOfOne = 0x7F;
constexpr std::uint32_t s_uLargestOfTwo = 0x7FF;
constexpr std::uint32_t s_uLargestOfThree = 0xFFFF;
constexpr std::size_t s_uLongest = 4;

constexpr std::size_t s_uEscape = 3;
constexpr std::ptrdiff_t s_iEscape = 3;
constexpr std::size_t s_uBlock = 16;
constexpr std::ptrdiff_t s_iBlock = 16;
constexpr std::size_t s_uBuffer = 1024;
constexpr unsigned int s_uNoBlock = 1U << s_uBlock;
constexpr unsigned int s_uShortestLine = 4;
const wchar_t c_strBreak[] = L"=\r\n";
constexpr std::size_t s_uBreak = 3;

constexpr bool IsCharacter(std::uint32_t value)
{
    return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

// True for ASCII but zero.
constexpr bool IsPlain(wchar_t character)
{
    return character > 0 && character <= static_cast<wchar_t>(s_uLargestOfOne);
}

constexpr bool IsQuoted(unsigned char byte)
{
    return byte >= s_uFirstNotPlain || (QUOTED[byte / 8] >> (byte % 8) & 1) != 0;
}

// What each byte becomes, itself or an escape, and its length; a text is written as one copy of an entry.
struct Code
{
    wchar_t m_text[s_uEscape];
    std::uint32_t m_uLength;
};

constexpr std::array<Code, 256> MakeCodes()
{
    std::array<Code, 256> codes{};
    for (unsigned int byte = 0; byte < codes.size(); ++byte)
        if (IsQuoted(static_cast<unsigned char>(byte)))
            codes[byte] = Code{{L'=', c_strDigits[byte / 16], c_strDigits[byte % 16]}, s_uEscape};
        else
            codes[byte] = Code{{static_cast<wchar_t>(byte), 0, 0}, 1};
    return codes;
}

// The value of each byte as a digit, letters in either case.
constexpr std::array<unsigned char, 256> MakeDigitValues()
{
    std::array<unsigned char, 256> values{};
    for (unsigned char& value : values)
        value = s_uNoDigit;
    for (unsigned char i = 0; i < 10; ++i)
        values[static_cast<unsigned char>('0' + i)] = i;
    for (unsigned char i = 0; i < 26; ++i)
    {
        values[static_cast<unsigned char>('A' + i)] = static_cast<unsigned char>(10 + i);
        values[static_cast<unsigned char>('a' + i)] = static_cast<unsigned char>(10 + i);
    }
    values['\r'] = s_uLineEnd;
    values['\n'] = s_uLineEnd;
    return values;
}

constexpr std::array<Code, 256> s_codes = MakeCodes();
constexpr std::array<unsigned char, 256> CHARVAL = MakeDigitValues();

// The same for the digits of an escape; s_uBadDigit for everything else.
constexpr std::array<unsigned char, 256> MakeDigits()
{
    std::array<unsigned char, 256> digits{};
    for (std::size_t i = 0; i < digits.size(); ++i)
        digits[i] = CHARVAL[i] > s_uLargestDigit ? s_uBadDigit : CHARVAL[i];
    return digits;
}

constexpr std::array<unsigned char, 256> s_digits = MakeDigits();

// ---- encoding

// Writes a whole entry; what is behind its length is overwritten by the next one.
wchar_t* Put(wchar_t* to, unsigned int byte)
{
    std::memcpy(to, &s_codes[byte], sizeof(Code));
    return to + s_codes[byte].m_uLength;
}

wchar_t* PutEscape(wchar_t* to, unsigned int byte)
{
    std::memcpy(to, &s_codes[byte], sizeof(Code));
    return to + s_uEscape;
}

// The escapes of a character beyond ASCII.
wchar_t* PutWide(wchar_t* to, std::uint32_t value)
{
    if (value <= s_uLargestOfTwo)
        return PutEscape(PutEscape(to, 0xC0U | value >> 6), 0x80U | (value & 0x3FU));
    if (value <= s_uLargestOfThree)
        to = PutEscape(to, 0xE0U | value >> 12);
    else
        to = PutEscape(PutEscape(to, 0xF0U | value >> 18), 0x80U | (value >> 12 & 0x3FU));
    return PutEscape(PutEscape(to, 0x80U | (value >> 6 & 0x3FU)), 0x80U | (value & 0x3FU));
}

// Collects encoded text and breaks it into lines on the way: the first break comes before position `first`,
// each further one `advance` characters behind the one before.
class Lines
{
public:
    Lines(std::size_t first, std::size_t advance) : m_uNext(first), m_uAdvance(advance) {}

    void Reserve(std::size_t length) { m_strResult.reserve(length); }

    // `text` ends between two escapes, so that a step back never leaves it.
    void Append(const wchar_t* text, std::size_t length)
    {
        std::size_t begin = 0;
        while (m_uNext - m_uDone < length)
        {
            std::size_t at = m_uNext - m_uDone;
            if (at > 0 && text[at - 1] == L'=')
                --at;
            m_strResult.append(text + begin, at - begin);
            m_strResult.append(c_strBreak, s_uBreak);
            begin = at;
            m_uNext = m_uDone + at + m_uAdvance;
        }
        m_strResult.append(text + begin, length - begin);
        m_uDone += length;
    }

    TString<wchar_t> Result() { return std::move(m_strResult); }

private:
    std::size_t m_uNext;
    const std::size_t m_uAdvance;
    std::size_t m_uDone = 0;
    TString<wchar_t> m_strResult;
};

TString<wchar_t> Encode(const TString<wchar_t>& text, Lines lines)
{
    const std::size_t length = std::min(text.find(L'\0'), text.size());
    const std::size_t block = 256;
    wchar_t buffer[block * s_uLongest * s_uEscape + sizeof(Code) / sizeof(wchar_t)];
    lines.Reserve(length + length / 2);
    for (std::size_t i = 0; i < length;)
    {
        const std::size_t end = std::min(length, i + block);
        wchar_t* to = buffer;
        bool valid = true;
        for (; i < end; ++i)
        {
            const std::uint32_t value = static_cast<std::uint32_t>(text[i]);
            if (value <= s_uLargestOfOne)
                to = Put(to, value);
            else if (IsCharacter(value))
                to = PutWide(to, value);
            else
                valid = false;
        }
        if (!valid)
            return TString<wchar_t>();
        lines.Append(buffer, static_cast<std::size_t>(to - buffer));
    }
    return lines.Result();
}

// ---- decoding

// The byte that two digits make; s_iNoByte if one of them is none, as nothing beyond ASCII is.
template <class C>
int ByteOf(C highDigit, C lowDigit)
{
    using Unsigned = std::make_unsigned_t<C>;
    const auto both =
        static_cast<Unsigned>(static_cast<Unsigned>(highDigit) | static_cast<Unsigned>(lowDigit));
    if (both > s_uLargestOfOne)
        return s_iNoByte;
    const unsigned int high = s_digits[static_cast<unsigned char>(highDigit)];
    const unsigned int low = s_digits[static_cast<unsigned char>(lowDigit)];
    return (high | low) >= s_uBadDigit ? s_iNoByte : static_cast<int>((high * 16 + low) & 0xFFU);
}

// Decodes any bytes in place: the result is never longer. Answers its length.
std::size_t DecodeBytes(char* bytes, std::size_t size)
{
    std::size_t to = 0;
    for (std::size_t i = 0; i < size;)
    {
        const bool escape = bytes[i] == '=' && size - i >= s_uEscape;
        const int byte = escape ? ByteOf(bytes[i + 1], bytes[i + 2]) : s_iNoByte;
        if (byte != s_iNoByte)
            bytes[to++] = static_cast<char>(byte);
        else if (!escape)
            bytes[to++] = bytes[i];
        i += byte != s_iNoByte ? s_uEscape : 1;
    }
    return to;
}

// One bit for each "=" in a block; s_uNoBlock when it holds a zero or a character beyond ASCII.
unsigned int FindEscapes(const wchar_t* text)
{
#ifdef __SSE2__
    const __m128i sign = _mm_set1_epi32(L'=');
    const __m128i lowest = _mm_set1_epi32(1);
    const __m128i highest = _mm_set1_epi32(s_uLargestOfOne);
    __m128i found[4];
    __m128i other = _mm_setzero_si128();
    for (int i = 0; i < 4; ++i)
    {
        const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text) + i);
        found[i] = _mm_cmpeq_epi32(part, sign);
        other =
            _mm_or_si128(other, _mm_or_si128(_mm_cmplt_epi32(part, lowest), _mm_cmpgt_epi32(part, highest)));
    }
    const __m128i all =
        _mm_packs_epi16(_mm_packs_epi32(found[0], found[1]), _mm_packs_epi32(found[2], found[3]));
    return _mm_movemask_epi8(other) != 0 ? s_uNoBlock : static_cast<unsigned int>(_mm_movemask_epi8(all));
#else
    unsigned int mask = 0;
    for (unsigned int i = 0; i < s_uBlock; ++i)
    {
        if (!IsPlain(text[i]))
            return s_uNoBlock;
        mask |= (text[i] == L'=' ? 1U : 0U) << i;
    }
    return mask;
#endif
}

// Where a decoder stands: what it reads, up to the end, and what it writes.
struct Cursor
{
    const wchar_t* m_pFrom;
    const wchar_t* m_pEnd;
    wchar_t* m_pTo;
};

// Copies up to `end`, which is at most a block away; whole blocks can be read and written.
inline void CopyTo(Cursor& cursor, const wchar_t* end)
{
    std::memcpy(cursor.m_pTo, cursor.m_pFrom, s_uBlock * sizeof(wchar_t));
    cursor.m_pTo += end - cursor.m_pFrom;
    cursor.m_pFrom = end;
}

// The byte of the escape that begins at `position`; s_iNoByte if none does.
int EscapeAt(const wchar_t* position, const wchar_t* end)
{
    if (end - position < s_iEscape || *position != L'=')
        return s_iNoByte;
    return ByteOf(position[1], position[2]);
}

// Decodes the character whose escapes begin at `from`, the first one being `lead`. Answers their number; 0 if
// they are no character of more than one byte.
int DecodeSequence(const wchar_t* from, const wchar_t* end, unsigned int lead, wchar_t* to)
{
    const std::uint32_t below[] = {0, s_uLargestOfOne, s_uLargestOfTwo, s_uLargestOfThree};
    const int rest = lead < 0xC0 || lead > 0xF7 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    if (rest == 0 || end - from < (rest + 1) * s_iEscape)
        return 0;
    std::uint32_t value = lead & (0x3FU >> rest);
    for (int i = 1; i <= rest; ++i)
    {
        const int next = EscapeAt(from + i * s_iEscape, end);
        if (next == s_iNoByte || (next & 0xC0) != 0x80)
            return 0;
        value = value << 6 | (static_cast<std::uint32_t>(next) & 0x3FU);
    }
    *to = static_cast<wchar_t>(value);
    return value > below[rest] && IsCharacter(value) ? rest + 1 : 0;
}

// Decodes what the "=" here begins; false where the bytes must be looked at as a whole.
inline bool DecodeEscape(Cursor& cursor)
{
    const int byte = EscapeAt(cursor.m_pFrom, cursor.m_pEnd);
    if (byte > 0 && byte <= static_cast<int>(s_uLargestOfOne))
    {
        *cursor.m_pTo++ = static_cast<wchar_t>(byte);
        cursor.m_pFrom += s_iEscape;
        return true;
    }
    if (byte != s_iNoByte)
    {
        const int count =
            DecodeSequence(cursor.m_pFrom, cursor.m_pEnd, static_cast<unsigned int>(byte), cursor.m_pTo);
        cursor.m_pFrom += count * s_iEscape;
        ++cursor.m_pTo;
        return count != 0;
    }
    if (cursor.m_pEnd - cursor.m_pFrom < s_iEscape)
        return false;
    ++cursor.m_pFrom;
    return true;
}

// Decodes the block and leaves the cursor behind it, where an escape may have ended. What is copied from
// inside a block reaches into the next one, which must be there.
bool DecodeBlock(Cursor& cursor, const wchar_t* block)
{
    unsigned int mask = FindEscapes(block);
    if (mask == s_uNoBlock)
        return false;
    Cursor here = cursor;
    for (; mask != 0; mask &= mask - 1)
    {
        const wchar_t* const found = block + __builtin_ctz(mask);
        if (found < here.m_pFrom)
            continue;
        CopyTo(here, found);
        do
        {
            if (!DecodeEscape(here))
                return false;
        } while (here.m_pFrom < block + s_uBlock && *here.m_pFrom == L'=');
    }
    if (here.m_pFrom < block + s_uBlock)
        CopyTo(here, block + s_uBlock);
    cursor = here;
    return true;
}

// Decodes a plain ASCII text whose escapes are well-formed UTF-8 straight to wide text, block by block; false
// for any other text.
bool DecodeBlocks(const TString<wchar_t>& text, TString<wchar_t>& result)
{
    wchar_t buffer[s_uBuffer + 2 * s_uBlock];
    Cursor cursor{text.data(), text.data() + text.size(), buffer};
    const wchar_t* block = cursor.m_pFrom;
    result.reserve(text.size());
    for (; cursor.m_pEnd - block >= 2 * s_iBlock; block += s_iBlock)
    {
        if (!DecodeBlock(cursor, block))
            return false;
        if (cursor.m_pTo - buffer >= static_cast<std::ptrdiff_t>(s_uBuffer))
        {
            result.append(buffer, static_cast<std::size_t>(cursor.m_pTo - buffer));
            cursor.m_pTo = buffer;
        }
    }
    while (cursor.m_pFrom < cursor.m_pEnd)
    {
        if (!IsPlain(*cursor.m_pFrom))
            return false;
        if (*cursor.m_pFrom != L'=')
            *cursor.m_pTo++ = *cursor.m_pFrom++;
        else if (!DecodeEscape(cursor))
            return false;
    }
    result.append(buffer, static_cast<std::size_t>(cursor.m_pTo - buffer));
    return true;
}

} // namespace

const char* const HEX = c_strDigits;

bool QP::HasToBeQP(const TString<char>& text, unsigned int length, unsigned int limit, bool onlyLength)
{
    if (length > limit || text.find('\n') != text.npos)
        return true;
    if (onlyLength)
        return false;
    for (const char byte : text)
        if (IsQuoted(static_cast<unsigned char>(byte)))
            return true;
    return false;
}

bool QP::HasToBeQP(const TString<wchar_t>& text, unsigned int length, unsigned int limit, bool onlyLength)
{
    return HasToBeQP(UTF8::ToUTF8(text), length, limit, onlyLength);
}

TString<wchar_t> QP::ToQP(const TString<wchar_t>& text)
{
    return Encode(text, Lines(text.npos, 0));
}

TString<wchar_t> QP::ToQP(const TString<wchar_t>& text, unsigned int firstLine, unsigned int lineLength)
{
    if (lineLength < s_uShortestLine || firstLine == 0)
        return ToQP(text);
    return Encode(text, Lines(std::size_t{firstLine} - 1, std::size_t{lineLength} - 1));
}

TString<wchar_t> QP::ToUNICODE(const TString<wchar_t>& text)
{
    TString<wchar_t> result;
    if (DecodeBlocks(text, result))
        return result;
    TString<char> bytes = UTF8::ToUTF8(text);
    bytes.resize(DecodeBytes(bytes.data(), bytes.size()));
    return UTF8::ToUNICODE(bytes);
}

} // namespace Toolkit
