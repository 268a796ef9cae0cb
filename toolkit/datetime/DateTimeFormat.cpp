#include "toolkit/datetime/DateTimeFormat.h"

#include <algorithm>

#include <wx/datetime.h>

#include "toolkit/datetime/DateTime.h"
#include "toolkit/datetime/Locales.h"
#include "toolkit/encoding/WxText.h"

namespace Toolkit
{

namespace
{

using Text = TString<wchar_t>;

const unsigned int s_uNoon = 12;

// A character that the pattern does not hold. It stands for the marker until everything else is done: no letter
// of the marker is a token, and no space of it ends the date.
wchar_t PlaceholderFor(const Text& pattern)
{
    wchar_t placeholder = 0xE000;
    while (pattern.find(placeholder) != Text::npos)
        ++placeholder;
    return placeholder;
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

unsigned int HourOfHalfDay(unsigned int hour)
{
    return hour == 0 ? s_uNoon : hour > s_uNoon ? hour - s_uNoon : hour;
}

// The marker in the C library's locale; where that has none, hours of half a day would be ambiguous.
Text MarkerFor(unsigned int hour)
{
    wxString am;
    wxString pm;
    wxDateTime::GetAmPmStrings(&am, &pm);
    const bool afternoon = hour >= s_uNoon;
    const Text marker = FromWx(afternoon ? pm : am);
    return !marker.empty() ? marker : Text(afternoon ? L"PM" : L"AM");
}

bool IsSameDay(const DateTime& a, const DateTime& b)
{
    return a.GetYear() == b.GetYear() && a.GetMonth() == b.GetMonth() && a.GetDay() == b.GetDay();
}

} // namespace

Text DateTimeFormat::Date(const Text& pattern, const DateTime& value)
{
    const int year = value.GetYear();
    const int day = static_cast<int>(value.GetDay());
    const Text twoOfDay = value.IntToUString(day, 2);
    const Text twoOfMonth = value.IntToUString(value.GetMonth(), 2);
    const Text fourOfYear = value.IntToUString(year, 4);

    // No token holds a space, so that the rest need not be filled in first.
    Text text = pattern.substr(0, pattern.find(L' '));
    text.Replace(L"dd", twoOfDay);
    text.Replace(L"%d", twoOfDay);
    text.Replace(L"d", value.IntToUString(day, 1));
    text.Replace(L"MM", twoOfMonth);
    text.Replace(L"%m", twoOfMonth);
    text.Replace(L"M", twoOfMonth);
    text.Replace(L"yyyy", fourOfYear);
    text.Replace(L"%Y", fourOfYear);
    text.Replace(L"yy", value.IntToUString(year % 100, 2));
    return text;
}

Text DateTimeFormat::Time(const Text& pattern, const DateTime& value, const Text& marker)
{
    const wchar_t placeholder = PlaceholderFor(pattern);
    const bool halfDay = IsHalfDay(pattern);
    const int hour = static_cast<int>(halfDay ? HourOfHalfDay(value.GetHour()) : value.GetHour());
    const int minute = static_cast<int>(value.GetMinute());
    const Text twoOfHour = value.IntToUString(hour, 2);
    const Text twoOfMinute = value.IntToUString(minute, 2);

    const std::size_t space = pattern.find(L' ');
    Text text = space == Text::npos ? pattern : Text(pattern.substr(space + 1));
    if (halfDay)
        text.Replace(pattern.Contains(L"a") ? L"a" : L"tt", Text(Text::Base(1, placeholder)));
    text.Replace(L"HH", twoOfHour);
    text.Replace(L"H", value.IntToUString(hour, 1));
    text.Replace(L"hh", twoOfHour);
    text.Replace(L"h", value.IntToUString(hour, 1));
    text.Replace(L"mm", twoOfMinute);
    text.Replace(L"m", value.IntToUString(minute, 1));
    for (const wchar_t* const removed : {L":ss", L".ss", L"a", L"tt"})
        text.Replace(removed, Text());
    for (const wchar_t* const token : {L"%T", L"%R", L"%r"})
        text.Replace(token, twoOfHour + L":" + twoOfMinute);
    return WithMarker(text, placeholder, marker);
}

bool DateTimeFormat::IsHalfDay(const Text& pattern)
{
    return pattern.Contains(L"tt") || pattern.Contains(L"h");
}

void DateTime::GetDate(Text& out) const
{
    Text pattern;
    if (Locales::GetCurrentDateFormat(pattern) && !pattern.empty())
        out = DateTimeFormat::Date(pattern, *this);
}

void DateTime::GetTime(Text& out) const
{
    Text pattern;
    if (Locales::GetCurrentDateFormat(pattern) && !pattern.empty())
        out = DateTimeFormat::Time(
            pattern, *this, DateTimeFormat::IsHalfDay(pattern) ? MarkerFor(GetHour()) : Text::Empty());
}

void DateTime::GetString(Text& out) const
{
    Text date;
    Text time;
    GetDate(date);
    GetTime(time);
    out = date + L" " + time;
}

void DateTime::GetRelativeStringFromNow(Text& out) const
{
    // Another day, and so no today, for a value that is none: its fields are 0.
    if (IsSameDay(*this, DateTime()))
        GetTime(out);
    else
        GetDate(out);
}

} // namespace Toolkit
