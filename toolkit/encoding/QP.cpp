// SPDX-License-Identifier: MIT
#include "toolkit/encoding/QP.h"

#include <cstddef>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/text/QuotedPrintableCodec.h"

namespace Toolkit
{

namespace
{

namespace Codec = QuotedPrintableCodec;

// The ASCII codes that must be escaped: code c is bit c mod 8 of byte c / 8. Control characters, space and
// "(),/:;<=>?@[\] with the quotation mark.
constexpr unsigned char QUOTED[16] = {0xFF, 0xFF, 0xFF, 0xFF, 0x05, 0x93, 0x00, 0xFC,
                                      0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x00, 0x00};

constexpr unsigned char s_uFirstNotPlain = 127;
// Quirk: one more than a hexadecimal digit can be.
constexpr unsigned char s_uLargestDigit = 16;
constexpr unsigned int s_uShortestLine = 4;
const wchar_t* const c_strBreak = L"=\r\n";

constexpr bool IsQuoted(unsigned char byte)
{
    return byte >= s_uFirstNotPlain || (QUOTED[byte / 8] >> (byte % 8) & 1) != 0;
}

// Breaks encoded text into lines: the first break comes before position `next`, each further one `advance`
// characters after the one before, or one earlier where it would follow "=".
TString<wchar_t> BreakLines(const TString<wchar_t>& encoded, std::size_t next, std::size_t advance)
{
    TString<wchar_t> result;
    result.reserve(encoded.size() + encoded.size() / 2);
    std::size_t begin = 0;
    while (next < encoded.size())
    {
        if (next > 0 && encoded[next - 1] == L'=')
            --next;
        result.append(encoded, begin, next - begin).append(c_strBreak);
        begin = next;
        next += advance;
    }
    result.append(encoded, begin);
    return result;
}

// What stands at "=": an escape, "=" itself where less than an escape is left, or nothing.
void TakeAtEscape(const char*& from, const char* end, char*& to)
{
    const bool ends = static_cast<std::size_t>(end - from) < Codec::s_uEscape;
    if (Codec::TakeEscape(from, end, to, s_uLargestDigit))
        return;
    if (ends)
        *to++ = Codec::s_chEscape;
    ++from;
}

} // namespace

const char* const HEX = Codec::c_strDigits;

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
    const TString<char> bytes = UTF8::ToUTF8(text);
    TString<wchar_t> result;
    result.reserve(bytes.size() + bytes.size() / 2);
    for (const char each : bytes)
    {
        const auto byte = static_cast<unsigned char>(each);
        if (IsQuoted(byte))
            Codec::AppendEscape(result, byte);
        else
            result += static_cast<wchar_t>(byte);
    }
    return result;
}

TString<wchar_t> QP::ToQP(const TString<wchar_t>& text, unsigned int firstLine, unsigned int lineLength)
{
    const TString<wchar_t> encoded = ToQP(text);
    if (lineLength < s_uShortestLine || firstLine == 0)
        return encoded;
    return BreakLines(encoded, std::size_t{firstLine} - 1, std::size_t{lineLength} - 1);
}

TString<wchar_t> QP::ToUNICODE(const TString<wchar_t>& text)
{
    return UTF8::ToUNICODE(Codec::Decode(UTF8::ToUTF8(text), TakeAtEscape));
}

} // namespace Toolkit
