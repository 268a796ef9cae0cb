// SPDX-License-Identifier: MIT
#include "toolkit/internal/zones/CivilTime.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string_view>

namespace Toolkit
{

namespace
{

// The marks of what is kept of the system's zone, and of UTC where that zone counts: any numbers, as
// good as the hashes of names.
const std::uint64_t s_uSystemZone = 0x9E3779B97F4A7C15;
const std::uint64_t s_uSystemUtc = 0xC2B2AE3D27D4EB4F;
const std::int64_t s_nTmYear = 1900;
const std::int64_t s_nSecondsPerDay = 86400;
const std::int64_t s_nMonthsPerYear = 12;
const int s_nLeapSecond = 60;

// Longer than any two zones are apart, shorter than any zone of the database keeps its clocks unchanged. A
// rule in TZ may move them sooner again: there the second of two equal times may be taken for the first.
const std::int64_t s_nSpan = std::int64_t{1} << 17;

// What KeepAhead found for a span and a zone: asking again would cost as much as all the rest. The lowest
// bits hold the seconds, the others a mark of the span and the zone. It is looked up anew when the clocks
// were moved since, or seem to be because the zone's rules are others now; where it agrees with the clocks a
// mistake would but choose the second of two right instants.
const unsigned int s_uAheadBits = 18;
const std::uint64_t s_uAheadMask = (std::uint64_t{1} << s_uAheadBits) - 1;
const std::uint64_t s_uMarkMask = ~std::uint64_t{0} >> s_uAheadBits;
std::array<std::atomic<std::uint64_t>, 16384> s_aheadKept = {};

// When the C library last looked at the system's zone, in ticks of the coarse clock; -1 since it looked at
// TZ.
std::atomic<std::int64_t> s_nZoneLook = {-1};

std::int64_t CoarseTick()
{
    std::timespec now = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

// In the zone that was followed last.
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

// The clocks of the local zone, or of UTC.
struct Clocks
{
    std::tm (*show)(std::int64_t instant);
    // TZ, or null and the mark of the system's zone.
    const char* zone;
    std::uint64_t system;
    // Whether the C library has just looked at the zone. Else the host may have had it look at another TZ
    // since it did, and what it answers counts only where it agrees with what was kept.
    bool sure;
};

// Lets the C library look at the zone, which not every localtime_r does itself. Where TZ is not set it asks
// for the state of the system's file each time, which costs more than all the rest: once a tick is enough.
Clocks Follow(std::tm (*show)(std::int64_t instant), std::uint64_t system)
{
    const char* const zone = std::getenv("TZ");
    const std::int64_t look = zone != nullptr ? -1 : CoarseTick();
    const bool known = s_nZoneLook.load(std::memory_order_relaxed) == look;
    const bool sure = !known || look == -1;
    if (sure)
        tzset();
    if (!known)
        s_nZoneLook.store(look, std::memory_order_relaxed);
    return Clocks{show, zone, system, sure};
}

Clocks LocalClocks()
{
    return Follow(&LocalTm, s_uSystemZone);
}

Clocks UtcClocks()
{
    return Follow(&UtcTm, s_uSystemUtc);
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

std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor)
{
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// Days since 1970-01-01. Years that begin in March end with their leap day.
std::int64_t DayNumber(std::int64_t year, std::int64_t month, std::int64_t day)
{
    if (month <= 2)
        --year;
    const std::int64_t marchMonth = month > 2 ? month - 3 : month + 9;
    const std::int64_t dayOfYear = (153 * marchMonth + 2) / 5 + day - 1;
    return year * 365 + FloorDivide(year, 4) - FloorDivide(year, 100) + FloorDivide(year, 400) + dayOfYear -
           719468;
}

// The instant at which clocks would show this if no zone had ever moved them.
std::int64_t ClockInstant(const CivilTime& civil)
{
    return DayNumber(civil.year, civil.month, civil.day) * s_nSecondsPerDay + civil.hour * 3600 +
           civil.minute * 60 + civil.second;
}

bool Shows(const std::tm& time, const CivilTime& civil)
{
    return time.tm_sec == civil.second && time.tm_min == civil.minute && time.tm_hour == civil.hour &&
           time.tm_mday == civil.day && time.tm_mon + 1 == civil.month &&
           s_nTmYear + time.tm_year == civil.year;
}

// How far the clocks are ahead at the instant at which they show this.
std::int64_t Ahead(const std::tm& time, std::int64_t instant)
{
    return ClockInstant(FromTm(time)) - instant;
}

std::uint64_t Mark(const Clocks& clocks, std::int64_t span)
{
    const std::uint64_t zone =
        clocks.zone != nullptr ? std::hash<std::string_view>()(clocks.zone) : clocks.system;
    return zone + static_cast<std::uint64_t>(span);
}

// How far the clocks were ahead a day or two before they show `clock`, from a C library that has looked at
// the zone.
std::int64_t KeepAhead(Clocks& clocks, std::int64_t clock)
{
    if (!clocks.sure)
        tzset();
    clocks.sure = true;
    const std::int64_t span = FloorDivide(clock, s_nSpan);
    const std::int64_t instant = (span - 1) * s_nSpan;
    const std::int64_t seconds = Ahead(clocks.show(instant), instant);
    const std::uint64_t mark = Mark(clocks, span);
    s_aheadKept[mark % s_aheadKept.size()].store(
        mark << s_uAheadBits | static_cast<std::uint64_t>(seconds + s_nSpan), std::memory_order_relaxed);
    return seconds;
}

// The same from what was kept, where it was.
std::int64_t AheadBefore(Clocks& clocks, std::int64_t clock)
{
    const std::uint64_t mark = Mark(clocks, FloorDivide(clock, s_nSpan));
    const std::uint64_t found = s_aheadKept[mark % s_aheadKept.size()].load(std::memory_order_relaxed);
    if (found >> s_uAheadBits == (mark & s_uMarkMask))
        return static_cast<std::int64_t>(found & s_uAheadMask) - s_nSpan;
    return KeepAhead(clocks, clock);
}

// Whether this is what the clocks show at the instant; else what they show has to be asked again. In the days
// after they were moved nobody knows at first.
bool IsSure(Clocks& clocks, const CivilTime& civil, std::int64_t instant)
{
    if (clocks.sure)
        return true;
    const std::int64_t clock = ClockInstant(civil);
    if (AheadBefore(clocks, clock) == clock - instant)
        return true;
    KeepAhead(clocks, clock);
    return false;
}

CivilTime Shown(Clocks clocks, std::int64_t instant)
{
    const CivilTime civil = FromTm(clocks.show(instant));
    return IsSure(clocks, civil, instant) ? civil : FromTm(clocks.show(instant));
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
    return Shown(LocalClocks(), instant);
}

CivilTime CivilTime::Utc(std::int64_t instant)
{
    return Shown(UtcClocks(), instant);
}

std::int64_t CivilTime::DaysOfMonth(std::int64_t year, std::int64_t month)
{
    if (month == 2)
        return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

void CivilTime::AddMonths(std::int64_t months)
{
    const std::int64_t count = year * s_nMonthsPerYear + month - 1 + months;
    year = FloorDivide(count, s_nMonthsPerYear);
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
    Clocks clocks = LocalClocks();
    const std::int64_t clock = ClockInstant(*this);
    std::int64_t before = AheadBefore(clocks, clock);
    std::tm shown = LocalTm(clock - before);
    if (Shows(shown, *this))
        return clock - before;
    if (Ahead(shown, clock - before) != before)
    {
        before = KeepAhead(clocks, clock);
        shown = LocalTm(clock - before);
    }
    const std::int64_t first = Ahead(shown, clock - before);
    if (first == before)
        return clock - before + (shown.tm_sec == s_nLeapSecond && second < s_nLeapSecond ? 1 : 0);
    // Here the clocks were moved since. Where this is left out the two differ, and the smaller one was
    // before.
    return clock - std::min(first, Ahead(LocalTm(clock - first), clock - first));
}

std::int64_t CivilTime::UtcInstant() const
{
    Clocks clocks = UtcClocks();
    const std::int64_t instant = TimeGm(*this);
    return IsSure(clocks, *this, instant) ? instant : TimeGm(*this);
}

} // namespace Toolkit
