#ifndef TOOLKIT_DATETIME_CIVILTIME_H
#define TOOLKIT_DATETIME_CIVILTIME_H

#include <cstdint>

class wxDateTime;

namespace Toolkit
{

// What a calendar and a clock show, in the Gregorian calendar of all times; year 0 is the one before year 1.
// Instants are seconds since 1970-01-01 00:00:00 UTC. The rules of the zones are the C library's, which looks
// at TZ in every call. Nothing here fails: who asks checks the ranges first.
struct CivilTime
{
    std::int64_t year = 0;
    std::int64_t month = 0; // from 1
    std::int64_t day = 0;
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    std::int64_t second = 0;

    // What the clocks of the local zone, and those of UTC, show at the instant.
    static CivilTime Local(std::int64_t instant);
    static CivilTime Utc(std::int64_t instant);
    // The same at the base library's instant; all fields 0 for an invalid one.
    static CivilTime Local(const wxDateTime& time);
    static CivilTime Utc(const wxDateTime& time);

    // False for dates and times that no calendar or clock shows; second 60 is one of a leap second, and 61
    // goes with it.
    bool Exists() const;

    // The instant at which the clocks show this; Exists() and |year| below 2^31. A day beyond the month's
    // last one counts on into the next. Of a local time that comes twice the first; one that is left out when
    // the clocks go forward counts on from the last time before.
    std::int64_t ToInstant() const;
    std::int64_t ToUtcInstant() const;

    static std::int64_t DaysOfMonth(std::int64_t year, std::int64_t month);
};

} // namespace Toolkit

#endif
