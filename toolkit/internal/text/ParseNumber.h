// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_PARSENUMBER_H
#define TOOLKIT_INTERNAL_TEXT_PARSENUMBER_H

#include <limits>

// Numbers as a wide stream in the classic locale reads them, without the stream.
namespace Toolkit::ParseNumber
{

inline const wchar_t* SkipSpace(const wchar_t* text, const wchar_t* end)
{
    while (text != end && (*text == L' ' || (*text >= L'\t' && *text <= L'\r')))
        ++text;
    return text;
}

// What `>>` makes of [text, end), which afterwards begins after the number. False where it fails:
// `value` stays as it was when there was nothing but white space, is 0 when there was no number, and the
// largest or the smallest when it does not fit.
template <class Number>
inline bool Read(const wchar_t*& text, const wchar_t* end, Number& value)
{
    using Limits = std::numeric_limits<Number>;
    static_assert(Limits::is_integer && Limits::digits <= 32, "Ten times its bound fits");
    text = SkipSpace(text, end);
    if (text == end)
        return false;
    const bool negative = *text == L'-';
    if (negative || *text == L'+')
        ++text;
    const bool below = negative && Limits::is_signed;
    const unsigned long long bound = static_cast<unsigned long long>(Limits::max()) + (below ? 1 : 0);
    const wchar_t* const digits = text;
    unsigned long long magnitude = 0;
    bool fits = true;
    for (; text != end && *text >= L'0' && *text <= L'9'; ++text)
    {
        magnitude = magnitude * 10 + static_cast<unsigned long long>(*text - L'0');
        fits = fits && magnitude <= bound;
        if (!fits)
            magnitude = bound;
    }
    if (fits)
        value = static_cast<Number>(negative ? 0 - magnitude : magnitude);
    else
        value = below ? Limits::min() : Limits::max();
    return fits && text != digits;
}

} // namespace Toolkit::ParseNumber

#endif
