// SPDX-License-Identifier: MIT
#include "toolkit/encoding/QP.h"

#include <array>
#include <cstddef>

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
constexpr std::size_t s_uEscape = 3;
constexpr unsigned int s_uShortestLine = 4;
const wchar_t* const c_strBreak = L"=\r\n";

constexpr bool IsQuoted(unsigned char byte)
{
    return byte >= s_uFirstNotPlain || (QUOTED[byte / 8] >> (byte % 8) & 1) != 0;
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

constexpr std::array<unsigned char, 256> CHARVAL = MakeDigitValues();

// The value of a digit; what is none is worth more than `s_uLargestDigit`.
unsigned int DigitValue(char digit)
{
    return CHARVAL[static_cast<unsigned char>(digit)];
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
    const TString<char> bytes = UTF8::ToUTF8(text);
    TString<wchar_t> result;
    result.reserve(bytes.size() + bytes.size() / 2);
    for (const char each : bytes)
    {
        const auto byte = static_cast<unsigned char>(each);
        if (!IsQuoted(byte))
        {
            result += static_cast<wchar_t>(byte);
            continue;
        }
        result += L'=';
        result += static_cast<wchar_t>(HEX[byte / 16]);
        result += static_cast<wchar_t>(HEX[byte % 16]);
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
    const TString<char> bytes = UTF8::ToUTF8(text);
    TString<char> decoded;
    decoded.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        if (bytes[i] != '=' || bytes.size() - i < s_uEscape)
        {
            decoded += bytes[i];
            continue;
        }
        const unsigned int high = DigitValue(bytes[i + 1]);
        const unsigned int low = DigitValue(bytes[i + 2]);
        if (high > s_uLargestDigit || low > s_uLargestDigit)
            continue;
        decoded += static_cast<char>(high * 16 + low);
        i += s_uEscape - 1;
    }
    return UTF8::ToUNICODE(decoded);
}

} // namespace Toolkit
