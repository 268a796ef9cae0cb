#include "toolkit/datetime/IsoText.h"

#include <array>
#include <cstdint>
#include <limits>

namespace Toolkit
{

namespace
{

// White space of the classic locale.
bool IsSpace(wchar_t character)
{
    return character == L' ' || (character >= L'\t' && character <= L'\r');
}

bool IsDigit(wchar_t character)
{
    return character >= L'0' && character <= L'9';
}

const wchar_t* SkipSpace(const wchar_t* text, const wchar_t* end)
{
    while (text != end && IsSpace(*text))
        ++text;
    return text;
}

// Reads an int as a stream does: where nothing is left the value stays, what is no number is 0, one that is
// too large is the largest, or the smallest. False for all of these.
bool ReadInt(const wchar_t*& text, const wchar_t* end, std::int64_t& value)
{
    text = SkipSpace(text, end);
    if (text == end)
        return false;
    const bool negative = *text == L'-';
    if (*text == L'-' || *text == L'+')
        ++text;
    const wchar_t* const begin = text;
    const std::int64_t largest = std::numeric_limits<int>::max() + std::int64_t{negative};
    bool fits = true;
    value = 0;
    for (; text != end && IsDigit(*text); ++text)
    {
        value = value * 10 + (*text - L'0');
        fits = fits && value <= largest;
        if (!fits)
            value = largest;
    }
    if (negative)
        value = -value;
    return text != begin && fits;
}

} // namespace

IsoText IsoText::Read(const wchar_t* text, const wchar_t* end)
{
    IsoText result;
    CivilTime& time = result.time;
    time.year = time.month = time.day = time.hour = time.minute = time.second = -1;
    for (std::int64_t* const field :
         {&time.year, &time.month, &time.day, &time.hour, &time.minute, &time.second})
    {
        if (!ReadInt(text, end, *field))
            return result;
        if (text != end)
            ++text;
    }
    text = SkipSpace(text, end);
    result.utc = text != end && *text == L'Z';
    return result;
}

} // namespace Toolkit
