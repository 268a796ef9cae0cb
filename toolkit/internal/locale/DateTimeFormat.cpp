// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/DateTimeFormat.h"

#include <algorithm>
#include <cstdint>

#include "toolkit/internal/text/DecimalDigits.h"
#include "toolkit/internal/zones/CivilTime.h"

namespace Toolkit
{

namespace
{

using Text = TString<wchar_t>;

const std::int64_t s_nNoon = 12;
const std::int64_t s_nYearsOfCentury = 100;
// Numbers are longer than their tokens by so much at most, as a rule.
const std::size_t s_uSpare = 4;

void Append(Text& out, std::int64_t number, std::size_t width)
{
    wchar_t digits[DecimalDigits::s_iMost];
    const auto count = static_cast<std::size_t>(DecimalDigits::Write(digits, number) - digits);
    out.append(width - std::min(width, count), L'0').append(digits, count);
}

std::size_t RunLength(const Text& text, std::size_t start)
{
    return std::min(text.find_first_not_of(text[start], start), text.size()) - start;
}

// A run of one letter: two of them stand for two digits, from the left; one that is left over stands for as
// few digits as it takes, but for at least `least`.
void AppendRun(Text& out, std::size_t run, std::int64_t number, std::size_t least)
{
    for (; run >= 2; run -= 2)
        Append(out, number, 2);
    if (run == 1)
        Append(out, number, least);
}

// A run of "y": four stand for the year, then two for its last two digits; one is no token.
void AppendYear(Text& out, std::size_t run, std::int64_t year)
{
    for (; run >= 4; run -= 4)
        Append(out, year, 4);
    for (; run >= 2; run -= 2)
        Append(out, year % s_nYearsOfCentury, 2);
    out.append(run, L'y');
}

// A run of letters after "%" of which the first one makes a token with it.
void AppendBehindPercent(Text& out, std::size_t run, wchar_t letter, std::int64_t number, std::size_t width)
{
    out.pop_back();
    Append(out, number, width);
    out.append(run - 1, letter);
}

std::int64_t HourOf(const CivilTime& time, bool halfDay)
{
    if (!halfDay)
        return time.hour;
    return time.hour == 0 ? s_nNoon : time.hour > s_nNoon ? time.hour - s_nNoon : time.hour;
}

// A character that the pattern does not hold. It stands for the marker until everything else is done: no
// letter of the marker is a token.
wchar_t PlaceholderFor(const Text& pattern)
{
    wchar_t placeholder = 0xE000;
    while (pattern.find(placeholder) != Text::npos)
        ++placeholder;
    return placeholder;
}

// The tokens that are neither hours nor minutes, few of which any locale has.
void ReplaceRareTokens(Text& text, std::int64_t hour, std::int64_t minute)
{
    for (const wchar_t* const removed : {L":ss", L".ss", L"a", L"tt"})
        text.Replace(removed, Text());
    Text both;
    Append(both, hour, 2);
    both += L':';
    Append(both, minute, 2);
    for (const wchar_t* const token : {L"%T", L"%R", L"%r"})
        text.Replace(token, both);
}

Text WithMarker(const Text& text, wchar_t placeholder, const Text& marker)
{
    Text result;
    for (const wchar_t c : text)
        if (c == placeholder)
            result += marker;
        else
            result += c;
    return result;
}

} // namespace

Text DateTimeFormat::Date(const Text& pattern, const CivilTime& time)
{
    // No token holds a space.
    const std::size_t end = std::min(pattern.find(L' '), pattern.size());
    Text out;
    // The time may be put after it.
    out.reserve(pattern.size() + s_uSpare);
    for (std::size_t i = 0; i < end;)
    {
        const wchar_t c = pattern[i];
        const std::size_t run = RunLength(pattern, i);
        const bool percent = i > 0 && pattern[i - 1] == L'%';
        if (c == L'd' && percent && run == 1)
            AppendBehindPercent(out, run, c, time.day, 2);
        else if (c == L'd')
            AppendRun(out, run, time.day, 1);
        else if (c == L'm' && percent)
            AppendBehindPercent(out, run, c, time.month, 2);
        else if (c == L'M')
            AppendRun(out, run, time.month, 2);
        else if (c == L'Y' && percent)
            AppendBehindPercent(out, run, c, time.year, 4);
        else if (c == L'y')
            AppendYear(out, run, time.year);
        else
            out.append(run, c);
        i += run;
    }
    return out;
}

Text DateTimeFormat::Time(const Text& pattern, const CivilTime& time, const Text& marker)
{
    const bool halfDay = IsHalfDay(pattern);
    const wchar_t placeholder = halfDay ? PlaceholderFor(pattern) : L'\0';
    const bool hasA = pattern.find(L'a') != Text::npos;
    const std::int64_t hour = HourOf(time, halfDay);
    Text out;
    out.reserve(pattern.size());
    for (std::size_t i = pattern.find(L' ') + 1; i < pattern.size();)
    {
        const wchar_t c = pattern[i];
        const std::size_t run = RunLength(pattern, i);
        if (c == L'H' || c == L'h')
            AppendRun(out, run, hour, 1);
        else if (c == L'm')
            AppendRun(out, run, time.minute, 1);
        else if (c == L'a' && halfDay)
            out.append(run, placeholder);
        else if (c == L't' && halfDay && !hasA)
            out.append(run / 2, placeholder).append(run % 2, c);
        else
            out.append(run, c);
        i += run;
    }
    if (out.find_first_of(L"sat%") != Text::npos)
        ReplaceRareTokens(out, hour, time.minute);
    return halfDay ? WithMarker(out, placeholder, marker) : out;
}

bool DateTimeFormat::IsHalfDay(const Text& pattern)
{
    return pattern.find(L'h') != Text::npos || pattern.find(L"tt") != Text::npos;
}

} // namespace Toolkit
