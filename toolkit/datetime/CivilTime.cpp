#include "toolkit/datetime/CivilTime.h"

#include <ctime>

#include <wx/datetime.h>

namespace Toolkit
{

namespace
{

const std::int64_t s_nFirstYear = 1900;

const std::int64_t s_nMillisecondsPerSecond = 1000;

// The second in which the instant lies.
std::int64_t Seconds(const wxDateTime& time)
{
    const std::int64_t milliseconds = time.GetValue().GetValue();
    const std::int64_t seconds = milliseconds / s_nMillisecondsPerSecond;
    return milliseconds % s_nMillisecondsPerSecond < 0 ? seconds - 1 : seconds;
}

CivilTime FromTm(const std::tm& time)
{
    CivilTime civil;
    civil.year = s_nFirstYear + time.tm_year;
    civil.month = time.tm_mon + 1;
    civil.day = time.tm_mday;
    civil.hour = time.tm_hour;
    civil.minute = time.tm_min;
    civil.second = time.tm_sec;
    return civil;
}

std::tm ToTm(const CivilTime& civil)
{
    std::tm time = {};
    time.tm_year = static_cast<int>(civil.year - s_nFirstYear);
    time.tm_mon = static_cast<int>(civil.month - 1);
    time.tm_mday = static_cast<int>(civil.day);
    time.tm_hour = static_cast<int>(civil.hour);
    time.tm_min = static_cast<int>(civil.minute);
    time.tm_sec = static_cast<int>(civil.second);
    time.tm_isdst = -1;
    return time;
}

} // namespace

CivilTime CivilTime::Local(std::int64_t instant)
{
    const std::time_t seconds = instant;
    std::tm time = {};
    tzset();
    localtime_r(&seconds, &time);
    return FromTm(time);
}

CivilTime CivilTime::Utc(std::int64_t instant)
{
    const std::time_t seconds = instant;
    std::tm time = {};
    tzset();
    gmtime_r(&seconds, &time);
    return FromTm(time);
}

CivilTime CivilTime::Local(const wxDateTime& time)
{
    return time.IsValid() ? Local(Seconds(time)) : CivilTime();
}

CivilTime CivilTime::Utc(const wxDateTime& time)
{
    return time.IsValid() ? Utc(Seconds(time)) : CivilTime();
}

bool CivilTime::Exists() const
{
    return month >= 1 && month <= 12 && day >= 1 && day <= DaysOfMonth(year, month) && hour >= 0 &&
           hour <= 23 && minute >= 0 && minute <= 59 && second >= 0 && second <= 61;
}

std::int64_t CivilTime::ToInstant() const
{
    std::tm time = ToTm(*this);
    return std::mktime(&time);
}

std::int64_t CivilTime::ToUtcInstant() const
{
    std::tm time = ToTm(*this);
    return timegm(&time);
}

std::int64_t CivilTime::DaysOfMonth(std::int64_t year, std::int64_t month)
{
    if (month == 2)
        return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

} // namespace Toolkit
