// SPDX-License-Identifier: MIT
#include "toolkit/internal/zones/CivilTime.h"

#include <algorithm>
#include <ctime>

#include "toolkit/internal/zones/CalendarDay.h"

namespace Toolkit
{

namespace
{

const std::int64_t s_nTmYear = 1900;
const std::int64_t s_nSecondsPerDay = 86400;
const std::int64_t s_nMonthsPerYear = 12;
const int s_nLeapSecond = 60;

// Longer than any two zones are apart, shorter than any zone of the database keeps its clocks unchanged. A
// rule in TZ may move them sooner again: there the second of two equal times may be taken for the first.
const std::int64_t s_nBefore = std::int64_t{1} << 17;

// In the zone that tzset has looked at last, as localtime_r need not look at TZ itself.
std::tm LocalTm(std::int64_t instant)
{
    const std::time_t seconds = instant;
    std::tm time = {};
    localtime_r(&seconds, &time);
    return time;
}

// The same for UTC, which counts leap seconds in a zone that counts them.
std::tm UtcTm(std::int64_t instant)
{
    const std::time_t seconds = instant;
    std::tm time = {};
    gmtime_r(&seconds, &time);
    return time;
}

CivilTime FromTm(const std::tm& time)
{
    CivilTime civil;
    civil.year = s_nTmYear + time.tm_year;
    civil.month = time.tm_mon + 1;
    civil.day = time.tm_mday;
    civil.hour = time.tm_hour;
    civil.minute = time.tm_min;
    civil.second = time.tm_sec;
    return civil;
}

// The instant at which clocks would show this if no zone had ever moved them.
std::int64_t ClockInstant(const CivilTime& civil)
{
    return CalendarDay{civil.year, civil.month, civil.day}.Number() * s_nSecondsPerDay + civil.hour * 3600 +
           civil.minute * 60 + civil.second;
}

bool Shows(const std::tm& time, const CivilTime& civil)
{
    return time.tm_sec == civil.second && time.tm_min == civil.minute && time.tm_hour == civil.hour &&
           time.tm_mday == civil.day && time.tm_mon + 1 == civil.month &&
           s_nTmYear + time.tm_year == civil.year;
}

// How far the clocks are ahead of UTC at the instant at which they show this.
std::int64_t OffsetOf(const std::tm& shown, std::int64_t instant)
{
    return ClockInstant(FromTm(shown)) - instant;
}

std::int64_t TimeGm(const CivilTime& civil)
{
    std::tm time = {};
    time.tm_year = static_cast<int>(civil.year - s_nTmYear);
    time.tm_mon = static_cast<int>(civil.month - 1);
    time.tm_mday = static_cast<int>(civil.day);
    time.tm_hour = static_cast<int>(civil.hour);
    time.tm_min = static_cast<int>(civil.minute);
    time.tm_sec = static_cast<int>(civil.second);
    return timegm(&time);
}

} // namespace

CivilTime CivilTime::Local(std::int64_t instant)
{
    tzset();
    return FromTm(LocalTm(instant));
}

CivilTime CivilTime::Utc(std::int64_t instant)
{
    tzset();
    return FromTm(UtcTm(instant));
}

std::int64_t CivilTime::LocalOffset(std::int64_t instant)
{
    tzset();
    return LocalTm(instant).tm_gmtoff;
}

std::int64_t CivilTime::DaysOfMonth(std::int64_t year, std::int64_t month)
{
    return CalendarDay::DaysOfMonth(year, month);
}

void CivilTime::AddMonths(std::int64_t months)
{
    const std::int64_t count = year * s_nMonthsPerYear + month - 1 + months;
    year = CalendarDay::FloorDivide(count, s_nMonthsPerYear);
    month = count - year * s_nMonthsPerYear + 1;
    day = std::min(day, DaysOfMonth(year, month));
}

bool CivilTime::Exists() const
{
    return month >= 1 && month <= 12 && day >= 1 && day <= DaysOfMonth(year, month) && hour >= 0 &&
           hour <= 23 && minute >= 0 && minute <= 59 && second >= 0 && second <= 61;
}

std::int64_t CivilTime::LocalInstant() const
{
    tzset();
    const std::int64_t clock = ClockInstant(*this);
    const std::int64_t before = OffsetOf(LocalTm(clock - s_nBefore), clock - s_nBefore);
    const std::tm shown = LocalTm(clock - before);
    if (Shows(shown, *this))
        return clock - before;
    const std::int64_t first = OffsetOf(shown, clock - before);
    if (first == before)
        return clock - before + (shown.tm_sec == s_nLeapSecond && second < s_nLeapSecond ? 1 : 0);
    // Here the clocks were moved since. Where this is left out the two differ, and the smaller one was
    // before.
    return clock - std::min(first, OffsetOf(LocalTm(clock - first), clock - first));
}

std::int64_t CivilTime::UtcInstant() const
{
    tzset();
    return TimeGm(*this);
}

} // namespace Toolkit
