// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_DECIMALDIGITS_H
#define TOOLKIT_INTERNAL_TEXT_DECIMALDIGITS_H

#include <algorithm>
#include <charconv>

// Whole numbers as decimal text of any kind of character.
namespace Toolkit::DecimalDigits
{

// The characters of any number, with its sign.
constexpr int s_iMost = 20;

// Writes the digits, which need room for `s_iMost`, and returns their end.
template <class C, class Number>
C* Write(C* text, Number value)
{
    char digits[s_iMost];
    return std::copy(digits, std::to_chars(digits, digits + s_iMost, value).ptr, text);
}

// Writes a number from 0 to 99 as two digits and returns their end.
template <class C, class Number>
C* WriteTwo(C* text, Number value)
{
    *text++ = static_cast<C>('0' + value / 10);
    *text++ = static_cast<C>('0' + value % 10);
    return text;
}

} // namespace Toolkit::DecimalDigits

#endif
