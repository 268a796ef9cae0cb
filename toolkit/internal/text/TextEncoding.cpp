// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/TextEncoding.h"

#include <algorithm>
#include <cstring>

#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/Utf8Codec.h"

namespace Toolkit
{

namespace
{

struct Mark
{
    const char* bytes;
    std::size_t length;
    std::size_t unitLength;
    bool bigEndian;
};

// The longer marks come first: that of UTF-16 is the beginning of one of UTF-32.
const Mark s_marks[] = {
    {"\xFF\xFE\0\0", 4, 4, false}, {"\0\0\xFE\xFF", 4, 4, true}, {"\xEF\xBB\xBF", 3, 1, false},
    {"\xFF\xFE", 2, 2, false},     {"\xFE\xFF", 2, 2, true},
};

const unsigned long s_uMark = 0xFEFF;

// Converts what lies between the zeros, where the converters would stop, and keeps the zeros.
template <class From, class To, class Convert>
bool ConvertAroundZeros(const TString<From>& from, TString<To>& to, Convert convert)
{
    std::size_t zero = from.find(From());
    if (zero == from.npos)
    {
        to = convert(from);
        return from.empty() || !to.empty();
    }
    to.clear();
    std::size_t begin = 0;
    for (;; zero = from.find(From(), begin))
    {
        const TString<From> part(from.substr(begin, zero == from.npos ? zero : zero - begin));
        const TString<To> converted = convert(part);
        if (converted.empty() && !part.empty())
            return false;
        to += converted;
        if (zero == from.npos)
            return true;
        to += To();
        begin = zero + 1;
    }
}

} // namespace

TextEncoding::TextEncoding(const char* bytes, std::size_t count)
{
    for (const Mark& mark : s_marks)
        if (count >= mark.length && std::memcmp(bytes, mark.bytes, mark.length) == 0)
        {
            m_uMarkLength = mark.length;
            m_uUnitLength = mark.unitLength;
            m_bBigEndian = mark.bigEndian;
            return;
        }
}

bool TextEncoding::MayBecomeMark(const char* bytes, std::size_t count)
{
    return std::any_of(std::begin(s_marks), std::end(s_marks),
                       [&](const Mark& mark)
                       { return count < mark.length && std::memcmp(bytes, mark.bytes, count) == 0; });
}

std::size_t TextEncoding::GetCharacterLength(const char* unit) const
{
    if (m_uUnitLength == 2)
        return CodePoints::IsHighSurrogate(GetUnit(unit)) ? 4 : 2;
    if (m_uUnitLength == 4)
        return 4;
    const unsigned char lead = static_cast<unsigned char>(*unit);
    return lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

bool TextEncoding::Decode(const TString<char>& bytes, TString<wchar_t>& text) const
{
    return m_uUnitLength == 1 ? ConvertAroundZeros(bytes, text, Utf8Codec::Decode) : DecodeUnits(bytes, text);
}

bool TextEncoding::Encode(const TString<wchar_t>& text, TString<char>& bytes)
{
    return ConvertAroundZeros(text, bytes, Utf8Codec::Encode);
}

bool TextEncoding::EncodeMarked(const TString<wchar_t>& text, TString<char>& bytes) const
{
    // It also tells whether there is a UTF-16 and a UTF-32 form.
    if (!Encode(text, bytes))
        return false;
    if (m_uUnitLength > 1)
        bytes.clear();
    if (m_uMarkLength == 3)
        bytes.insert(0, "\xEF\xBB\xBF");
    if (m_uUnitLength == 1)
        return true;
    bytes.reserve((text.size() + 1) * m_uUnitLength);
    AddUnit(s_uMark, bytes);
    for (const wchar_t character : text)
    {
        const std::uint32_t value = static_cast<std::uint32_t>(character);
        if (m_uUnitLength == 2 && value > 0xFFFF)
        {
            AddUnit(CodePoints::HighOf(value), bytes);
            AddUnit(CodePoints::LowOf(value), bytes);
        }
        else
            AddUnit(value, bytes);
    }
    return true;
}

void TextEncoding::AddUnit(unsigned long value, TString<char>& bytes) const
{
    for (std::size_t i = 0; i < m_uUnitLength; ++i)
    {
        const std::size_t place = m_bBigEndian ? m_uUnitLength - 1 - i : i;
        bytes += static_cast<char>(value >> (8 * place) & 0xFF);
    }
}

bool TextEncoding::DecodeUnits(const TString<char>& bytes, TString<wchar_t>& text) const
{
    text.clear();
    text.reserve(bytes.size() / m_uUnitLength);
    const char* const end = bytes.data() + bytes.size();
    for (const char* unit = bytes.data(); unit != end;)
    {
        const std::size_t left = static_cast<std::size_t>(end - unit);
        if (left < m_uUnitLength || left < GetCharacterLength(unit))
            return false;
        std::uint32_t value = GetUnit(unit);
        if (m_uUnitLength == 2 && CodePoints::IsHighSurrogate(value))
        {
            const std::uint32_t low = GetUnit(unit + 2);
            if (!CodePoints::IsLowSurrogate(low))
                return false;
            value = CodePoints::FromPair(value, low);
            unit += 2;
        }
        if (!CodePoints::IsCharacter(value))
            return false;
        text += static_cast<wchar_t>(value);
        unit += m_uUnitLength;
    }
    return true;
}

std::uint32_t TextEncoding::GetUnit(const char* unit) const
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < m_uUnitLength; ++i)
    {
        const std::size_t place = m_bBigEndian ? i : m_uUnitLength - 1 - i;
        value = (value << 8) | static_cast<unsigned char>(unit[place]);
    }
    return value;
}

} // namespace Toolkit
