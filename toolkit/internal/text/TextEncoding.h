// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_TEXTENCODING_H
#define TOOLKIT_INTERNAL_TEXT_TEXTENCODING_H

#include <cstddef>
#include <cstdint>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// How the bytes of a text become characters: UTF-8, UTF-16 or UTF-32 in either byte order, as a byte-order
// mark selects, UTF-8 without one. All forms are strict: surrogates that make no pair and values above 10FFFF
// are refused. Zeros are characters like any other.
class TextEncoding
{
public:
    // What is in force without a mark.
    TextEncoding() = default;
    // What the first bytes of a text select.
    TextEncoding(const char* bytes, std::size_t count);

    // In bytes; 0 without a mark.
    std::size_t GetMarkLength() const { return m_uMarkLength; }

    // True when the bytes may be the beginning of a mark that is longer than they are.
    static bool MayBecomeMark(const char* bytes, std::size_t count);

    // The bytes of the smallest part that a character is made of: 1, 2 or 4.
    std::size_t GetUnitLength() const { return m_uUnitLength; }
    // The bytes of the character that begins with this unit, at least one unit.
    std::size_t GetCharacterLength(const char* unit) const;

    // False, with `text` unspecified, when the bytes, which come without a mark, are not well-formed.
    bool Decode(const TString<char>& bytes, TString<wchar_t>& text) const;

    // UTF-8 without a mark; false when the text holds what has no UTF-8 form.
    static bool Encode(const TString<wchar_t>& text, TString<char>& bytes);

    // The text as it was decoded, with the mark that selected the encoding; false as for Encode.
    bool EncodeMarked(const TString<wchar_t>& text, TString<char>& bytes) const;

private:
    void AddUnit(unsigned long value, TString<char>& bytes) const;
    bool DecodeUnits(const TString<char>& bytes, TString<wchar_t>& text) const;
    std::uint32_t GetUnit(const char* unit) const;

    std::size_t m_uMarkLength = 0;
    std::size_t m_uUnitLength = 1;
    bool m_bBigEndian = false;
};

} // namespace Toolkit

#endif
