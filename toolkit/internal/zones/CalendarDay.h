// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZONES_CALENDARDAY_H
#define TOOLKIT_INTERNAL_ZONES_CALENDARDAY_H

#include <cstdint>

namespace Toolkit
{

// A day of the Gregorian calendar of all times, which days since 1970-01-01 count. No zone has a part in it.
struct CalendarDay
{
    std::int64_t year = 1970;
    std::int64_t month = 1; // from 1
    std::int64_t day = 1;

    // Days outside the month count on into those around it.
    std::int64_t Number() const
    {
        // Years that begin in March end with their leap day.
        const std::int64_t marchYear = month > 2 ? year : year - 1;
        const std::int64_t marchMonth = month > 2 ? month - 3 : month + 9;
        const std::int64_t dayOfYear = (153 * marchMonth + 2) / 5 + day - 1;
        return marchYear * 365 + FloorDivide(marchYear, 4) - FloorDivide(marchYear, 100) +
               FloorDivide(marchYear, 400) + dayOfYear - s_nBefore1970;
    }

    static CalendarDay Of(std::int64_t number)
    {
        number += s_nBefore1970;
        const std::int64_t era = FloorDivide(number, s_nEra);
        const std::int64_t dayOfEra = number - era * s_nEra;
        const std::int64_t yearOfEra =
            (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
        const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
        const std::int64_t marchMonth = (5 * dayOfYear + 2) / 153;
        const std::int64_t month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
        const std::int64_t year = era * 400 + yearOfEra + (month <= 2 ? 1 : 0);
        return {year, month, dayOfYear - (153 * marchMonth + 2) / 5 + 1};
    }

    // From 0, which is Sunday.
    static std::int64_t Weekday(std::int64_t number) { return number + 4 - FloorDivide(number + 4, 7) * 7; }

    static std::int64_t DaysOfMonth(std::int64_t year, std::int64_t month)
    {
        if (month == 2)
            return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
        return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
    }

    static std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor)
    {
        return value / divisor - (value % divisor < 0 ? 1 : 0);
    }

private:
    // From 0000-03-01 to 1970-01-01, and of 400 years.
    static constexpr std::int64_t s_nBefore1970 = 719468;
    static constexpr std::int64_t s_nEra = 146097;
};

} // namespace Toolkit

#endif
