// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_DATETIME_TIMESTAMP_H
#define TOOLKIT_DATETIME_TIMESTAMP_H

#include <chrono>
#include <string>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

class DateTime;

/// A moment of the system's clock, 292 years before and after 1970 in nanoseconds, with the texts and the
/// calendar that belong to it. It converts to and from `std::chrono::system_clock::time_point` by itself and
/// leaves all arithmetic to that. UTC has no leap seconds here, as that clock has none. The local zone is the
/// C library's, which follows TZ. A value; any thread may call all of it, while no thread changes the
/// environment.
///
/// @code
/// Toolkit::Result<Toolkit::Timestamp> sent = Toolkit::Timestamp::Parse("2026-03-02T14:05:09.250+05:00");
/// if (!sent)
///     return Fail(sent.error().Message());
/// std::cout << sent->ToRfc3339() << '\n'; // 2026-03-02T09:05:09.250Z
/// const Toolkit::Timestamp now = std::chrono::system_clock::now();
/// std::cout << now.LocalFields().hour << " h, " << now.Format(Toolkit::Timestamp::Style::Long) << '\n';
/// const std::chrono::system_clock::time_point due = *sent;
/// @endcode
class TOOLKIT_API Timestamp
{
public:
    /// The moment of the standard library.
    using TimePoint = std::chrono::system_clock::time_point;

    /// Whose clocks a text shows.
    enum class Zone : unsigned int
    {
        Utc = 0,
        Local = 1,
    };

    /// How much of a date and time a locale's text tells: "02.03.26, 09:05" at the least, the names of the
    /// day and of the zone at the most.
    enum class Style : unsigned int
    {
        Short = 0,
        Medium = 1,
        Long = 2,
        Full = 3,
    };

    /// What a calendar and a clock show.
    struct Fields
    {
        /// The year, as calendars count them.
        int year = 1970;
        /// From 1.
        int month = 1;
        /// From 1.
        int day = 1;
        /// From 0 to 23.
        int hour = 0;
        /// From 0 to 59.
        int minute = 0;
        /// At most 59, but for 60 in a zone that counts leap seconds.
        int second = 0;
        /// From 0 to 999,999,999.
        int nanosecond = 0;
        /// From 0, which is Sunday.
        int weekday = 4;
        /// How far the clock is ahead of UTC.
        std::chrono::seconds offset = std::chrono::seconds(0);
    };

    /// The moment 1970-01-01 00:00:00 UTC.
    Timestamp() noexcept = default;
    /// This moment.
    Timestamp(TimePoint time) noexcept : m_time(time) {}
    /// The moment of the standard library.
    operator TimePoint() const noexcept { return m_time; }

    /// Reads a date and time of RFC 3339, all of it as the RFC has it: "T" and "Z" may be small, "-00:00" is
    /// UTC, the fraction of the second has at most nine digits. The second 60, which there is at the end of a
    /// month in UTC alone, is the first one of the next day. `Errc::Malformed` for any other text, with the
    /// reason; `std::errc::result_out_of_range` for a time that is too far away.
    static Result<Timestamp> Parse(std::string_view text);

    /// Reads the date of a mail (RFC 5322), its obsolete forms and what mails have besides: comments and line
    /// breaks, no name of the day or a wrong one, no seconds, years of two or three digits. Without a zone,
    /// and with a name of one that the RFC does not know or trust, as those of one letter, it is UTC. It
    /// fails as `Parse` does.
    static Result<Timestamp> ParseMail(std::string_view text);

    /// The time by RFC 3339, "2026-03-02T09:05:09.250Z", with as few groups of three digits after the second
    /// as hold all of it. A local time has its offset in place of the "Z"; where that is no whole number of
    /// minutes, as it was long ago, the text has the nearest one, and the time that belongs to it.
    std::string ToRfc3339(Zone zone = Zone::Utc) const;
    /// The same with that many digits after the second, 0 to 9; the others are cut off.
    std::string ToRfc3339(Zone zone, int digits) const;

    /// What a calendar and a clock in the local zone show.
    Fields LocalFields() const noexcept;
    /// What a calendar and a clock in UTC show.
    Fields UtcFields() const noexcept;

    /// The local date and time in the words, numbers and calendar of the user's locale, which LC_ALL, LC_TIME
    /// or LANG names, as ICU writes them, in UTF-8. The first call loads ICU; where that fails, the text is
    /// the local time by RFC 3339, in whole seconds, and the next call tries it again.
    std::string Format(Style style) const;
    /// The same for a locale with a name like "de_DE", "de-DE" or "de_DE.UTF-8". A language that ICU does not
    /// know has the texts of the locale "C", a country or script that it does not know those of the language.
    std::string Format(Style style, std::string_view locale) const;

    /// The moment of a classic value, which has whole seconds.
    /// `std::errc::invalid_argument` for an invalid value, `std::errc::result_out_of_range` for one that is
    /// too far away.
    static Result<Timestamp> FromDateTime(const DateTime& time);
    /// The classic value of this moment, without the fraction of its second.
    DateTime ToDateTime() const;

    friend bool operator==(const Timestamp& left, const Timestamp& right) noexcept
    {
        return left.m_time == right.m_time;
    }
    friend bool operator!=(const Timestamp& left, const Timestamp& right) noexcept
    {
        return !(left == right);
    }
    friend bool operator<(const Timestamp& left, const Timestamp& right) noexcept
    {
        return left.m_time < right.m_time;
    }
    friend bool operator<=(const Timestamp& left, const Timestamp& right) noexcept { return !(right < left); }
    friend bool operator>(const Timestamp& left, const Timestamp& right) noexcept { return right < left; }
    friend bool operator>=(const Timestamp& left, const Timestamp& right) noexcept { return !(left < right); }

private:
    TimePoint m_time;
};

} // namespace Toolkit

#endif
