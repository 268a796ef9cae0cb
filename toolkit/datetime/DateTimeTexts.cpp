// SPDX-License-Identifier: MIT
// The texts of a DateTime in the user's locale.
#include "toolkit/datetime/DateTime.h"

#include <cstdint>
#include <ctime>

#include <wx/datetime.h>

#include "toolkit/datetime/Locales.h"
#include "toolkit/internal/locale/DateTimeFormat.h"
#include "toolkit/internal/wx/WxText.h"
#include "toolkit/internal/zones/CivilTime.h"

namespace Toolkit
{

namespace
{

using Text = TString<wchar_t>;

const std::int64_t s_nMillisecondsPerSecond = 1000;
const std::int64_t s_nNoon = 12;

// All of them 0 for an invalid value; a valid one is one of whole seconds.
CivilTime FieldsOf(const wxDateTime& time)
{
    return time.IsValid() ? CivilTime::Local(time.GetValue().GetValue() / s_nMillisecondsPerSecond)
                          : CivilTime();
}

// In the C library's locale; where that has none, the hours of half a day would be ambiguous.
Text MarkerFor(const CivilTime& time)
{
    const bool afternoon = time.hour >= s_nNoon;
    wxString marker;
    wxDateTime::GetAmPmStrings(afternoon ? nullptr : &marker, afternoon ? &marker : nullptr);
    return !marker.empty() ? FromWx(marker) : Text(afternoon ? L"PM" : L"AM");
}

Text TimeOf(const Text& pattern, const CivilTime& time)
{
    return DateTimeFormat::Time(pattern, time,
                                DateTimeFormat::IsHalfDay(pattern) ? MarkerFor(time) : Text::Empty());
}

// False when there is none.
bool GetPattern(Text& pattern)
{
    return Locales::GetCurrentDateFormat(pattern) && !pattern.empty();
}

bool IsToday(const CivilTime& time)
{
    const CivilTime now = CivilTime::Local(std::time(nullptr));
    return time.year == now.year && time.month == now.month && time.day == now.day;
}

} // namespace

void DateTime::GetDate(Text& out) const
{
    Text pattern;
    if (GetPattern(pattern))
        out = DateTimeFormat::Date(pattern, FieldsOf(*m_pDateTime));
}

void DateTime::GetTime(Text& out) const
{
    Text pattern;
    if (GetPattern(pattern))
        out = TimeOf(pattern, FieldsOf(*m_pDateTime));
}

void DateTime::GetString(Text& out) const
{
    out = L" ";
    Text pattern;
    if (!GetPattern(pattern))
        return;
    const CivilTime time = FieldsOf(*m_pDateTime);
    out = DateTimeFormat::Date(pattern, time);
    out += L' ';
    out += TimeOf(pattern, time);
}

void DateTime::GetRelativeStringFromNow(Text& out) const
{
    Text pattern;
    if (!GetPattern(pattern))
        return;
    const CivilTime time = FieldsOf(*m_pDateTime);
    out = IsToday(time) ? TimeOf(pattern, time) : DateTimeFormat::Date(pattern, time);
}

} // namespace Toolkit
