// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZONES_CIVILTIME_H
#define TOOLKIT_INTERNAL_ZONES_CIVILTIME_H

#include <cstdint>

namespace Toolkit
{

// What a calendar and a clock show, in the Gregorian calendar of all times; the year before year 1 is year 0.
// Instants are seconds since 1970-01-01 00:00:00 UTC. The zones are the C library's, which looks at TZ in
// every call. Any thread may call it. Nothing fails: callers see to it that years are below 1000 million.
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

    // How many seconds the clocks of the local zone are ahead of UTC at the instant.
    static std::int64_t LocalOffset(std::int64_t instant);

    static std::int64_t DaysOfMonth(std::int64_t year, std::int64_t month);

    // A day that the new month does not have becomes its last one.
    void AddMonths(std::int64_t months);

    // False for what no calendar or clock shows. The seconds 60 and 61 are those of a minute with leap
    // seconds, and count on into the next minute where the system has none.
    bool Exists() const;

    // The instant at which the clocks of the local zone, or of UTC, show this. A day outside the month, and
    // an hour outside the day, count on into those around. Of a local time that comes twice it is the first;
    // a local time that never comes, as the clocks went forward, counts on from the last one before.
    std::int64_t LocalInstant() const;
    std::int64_t UtcInstant() const;
};

} // namespace Toolkit

#endif
