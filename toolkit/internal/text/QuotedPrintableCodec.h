// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_QUOTEDPRINTABLECODEC_H
#define TOOLKIT_INTERNAL_TEXT_QUOTEDPRINTABLECODEC_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

// The escapes of quoted-printable: "=" and two hexadecimal digits.
namespace Toolkit::QuotedPrintableCodec
{

constexpr char c_strDigits[] = "0123456789ABCDEF";
constexpr char s_chEscape = '=';
constexpr std::size_t s_uEscape = 3;
constexpr unsigned char s_uNoDigit = 255;

// The value of each byte as a digit. The letters go on after "F", for whoever takes more of them.
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
    return values;
}

constexpr std::array<unsigned char, 256> s_digitValues = MakeDigitValues();

template <typename C>
void AppendEscape(std::basic_string<C>& to, unsigned char byte)
{
    to += static_cast<C>(s_chEscape);
    to += static_cast<C>(c_strDigits[byte / 16]);
    to += static_cast<C>(c_strDigits[byte % 16]);
}

// Decodes the escape at `from` when its digits are at most `largest` each; false when it is none.
inline bool TakeEscape(const char*& from, const char* end, char*& to, unsigned int largest = 15)
{
    if (static_cast<std::size_t>(end - from) < s_uEscape)
        return false;
    const unsigned int high = s_digitValues[static_cast<unsigned char>(from[1])];
    const unsigned int low = s_digitValues[static_cast<unsigned char>(from[2])];
    if (high > largest || low > largest)
        return false;
    *to++ = static_cast<char>(high * 16 + low);
    from += s_uEscape;
    return true;
}

// Copies the text, in which `take(from, end, to)` decodes what stands at each "=". What it takes is never
// shorter than what it writes.
template <typename Take>
std::string Decode(std::string_view text, Take take)
{
    std::string bytes(text.size(), '\0');
    const char* from = text.data();
    const char* const end = from + text.size();
    char* to = bytes.data();
    while (from != end)
    {
        if (*from == s_chEscape)
            take(from, end, to);
        else
            *to++ = *from++;
    }
    bytes.resize(static_cast<std::size_t>(to - bytes.data()));
    return bytes;
}

} // namespace Toolkit::QuotedPrintableCodec

#endif
