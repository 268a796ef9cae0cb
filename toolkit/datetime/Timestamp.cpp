// SPDX-License-Identifier: MIT
#include "toolkit/datetime/Timestamp.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <system_error>

#include <wx/datetime.h>

#include "toolkit/datetime/DateTime.h"
#include "toolkit/internal/icu/LocaleName.h"
#include "toolkit/internal/locale/LocaleTexts.h"
#include "toolkit/internal/zones/CalendarDay.h"
#include "toolkit/internal/zones/CivilTime.h"
#include "toolkit/internal/zones/MailDate.h"
#include "toolkit/internal/zones/Rfc3339Text.h"
#include "toolkit/internal/zones/ZoneName.h"

namespace Toolkit
{

namespace
{

using std::chrono::nanoseconds;
using std::chrono::seconds;

const std::int64_t s_nNanoseconds = 1000000000;
const std::int64_t s_nMilliseconds = 1000;
const std::int64_t s_nSecondsPerDay = 86400;

// What a message shows of a text that was given.
const std::size_t s_uMostShown = 60;

// A moment taken apart: seconds since 1970, and the nanoseconds of that second.
struct Parts
{
    explicit Parts(Timestamp::TimePoint time)
    {
        // std::chrono::floor overflows in the first second, whose begin nanoseconds cannot count.
        const std::int64_t count = nanoseconds(time.time_since_epoch()).count();
        const std::int64_t rest = count % s_nNanoseconds;
        second = CalendarDay::FloorDivide(count, s_nNanoseconds);
        nanosecond = rest < 0 ? rest + s_nNanoseconds : rest;
    }

    std::int64_t second;
    std::int64_t nanosecond;
};

// False for what lies further away than nanoseconds count.
bool Join(std::int64_t second, std::int64_t nanosecond, Timestamp& time)
{
    // The first second is one that nanoseconds count in part.
    const bool before = second < 0;
    std::int64_t count = 0;
    if (__builtin_mul_overflow(before ? second + 1 : second, s_nNanoseconds, &count) ||
        __builtin_add_overflow(count, before ? nanosecond - s_nNanoseconds : nanosecond, &count))
        return false;
    time =
        Timestamp::TimePoint(std::chrono::duration_cast<Timestamp::TimePoint::duration>(nanoseconds(count)));
    return true;
}

// The text as a message shows it: in ASCII, and not too much of it.
std::string Shown(std::string_view text)
{
    std::string shown(text.substr(0, s_uMostShown));
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return "\"" + shown + (text.size() > s_uMostShown ? "...\"" : "\"");
}

Failure TooFar(const std::string& what)
{
    return Failure(std::make_error_code(std::errc::result_out_of_range),
                   what + ": it is more than 292 years before or after 1970");
}

Result<Timestamp> ToResult(const ReadInstant& read, const char* what, std::string_view text)
{
    Timestamp time;
    if (read.problem == nullptr && Join(read.second, read.nanosecond, time))
        return time;
    const std::string message = std::string("cannot read the ") + what + " " + Shown(text);
    if (read.problem == nullptr)
        return TooFar(message);
    return Failure(Errc::Malformed, message + ": " + read.problem);
}

// The nearest whole number of minutes.
std::int64_t MinutesOf(std::int64_t offset)
{
    return CalendarDay::FloorDivide(offset + 30, 60);
}

std::string Text(const Parts& parts, Timestamp::Zone zone, int digits)
{
    char text[Rfc3339Text::s_uMost];
    if (zone == Timestamp::Zone::Utc)
        return std::string(text, Rfc3339Text::WriteUtc(text, parts.second, parts.nanosecond, digits));
    const std::int64_t minutes = MinutesOf(CivilTime::LocalOffset(parts.second));
    return std::string(text,
                       Rfc3339Text::WriteAtOffset(text, parts.second, parts.nanosecond, digits, minutes));
}

Timestamp::Fields ToFields(const CivilTime& time, std::int64_t nanosecond, std::int64_t offset)
{
    Timestamp::Fields fields;
    fields.year = static_cast<int>(time.year);
    fields.month = static_cast<int>(time.month);
    fields.day = static_cast<int>(time.day);
    fields.hour = static_cast<int>(time.hour);
    fields.minute = static_cast<int>(time.minute);
    fields.second = static_cast<int>(time.second);
    fields.nanosecond = static_cast<int>(nanosecond);
    fields.weekday =
        static_cast<int>(CalendarDay::Weekday(CalendarDay{time.year, time.month, time.day}.Number()));
    fields.offset = seconds(offset);
    return fields;
}

LocaleTexts::Style ToStyle(Timestamp::Style style)
{
    switch (style)
    {
    case Timestamp::Style::Medium:
        return LocaleTexts::Style::Medium;
    case Timestamp::Style::Long:
        return LocaleTexts::Style::Long;
    case Timestamp::Style::Full:
        return LocaleTexts::Style::Full;
    default:
        return LocaleTexts::Style::Short;
    }
}

} // namespace

Result<Timestamp> Timestamp::Parse(std::string_view text)
{
    return ToResult(Rfc3339Text::Read(text), "timestamp", text);
}

Result<Timestamp> Timestamp::ParseMail(std::string_view text)
{
    return ToResult(MailDate::Read(text), "date of a mail", text);
}

std::string Timestamp::ToRfc3339(Zone zone) const
{
    const Parts parts(m_time);
    return Text(parts, zone, Rfc3339Text::DigitsOf(parts.nanosecond));
}

std::string Timestamp::ToRfc3339(Zone zone, int digits) const
{
    return Text(Parts(m_time), zone, std::clamp(digits, 0, Rfc3339Text::s_iMostDigits));
}

Timestamp::Fields Timestamp::LocalFields() const noexcept
{
    const Parts parts(m_time);
    return ToFields(CivilTime::Local(parts.second), parts.nanosecond, CivilTime::LocalOffset(parts.second));
}

Timestamp::Fields Timestamp::UtcFields() const noexcept
{
    const Parts parts(m_time);
    const std::int64_t number = CalendarDay::FloorDivide(parts.second, s_nSecondsPerDay);
    const CalendarDay day = CalendarDay::Of(number);
    const std::int64_t time = parts.second - number * s_nSecondsPerDay;
    CivilTime civil;
    civil.year = day.year;
    civil.month = day.month;
    civil.day = day.day;
    civil.hour = time / 3600;
    civil.minute = time / 60 % 60;
    civil.second = time % 60;
    return ToFields(civil, parts.nanosecond, 0);
}

std::string Timestamp::Format(Style style) const
{
    return Format(style, LocaleName::OfUser());
}

std::string Timestamp::Format(Style style, std::string_view locale) const
{
    const Parts parts(m_time);
    LocaleTexts::Moment moment;
    moment.milliseconds =
        parts.second * s_nMilliseconds + parts.nanosecond / (s_nNanoseconds / s_nMilliseconds);
    moment.offset = CivilTime::LocalOffset(parts.second);
    moment.zone = ZoneName::Local();
    const Result<std::string> text = LocaleTexts::DateAndTime(std::string(locale), ToStyle(style), moment);
    return text ? *text : ToRfc3339(Zone::Local, 0);
}

Result<Timestamp> Timestamp::FromDateTime(const DateTime& time)
{
    const char* const what = "cannot convert a DateTime to a timestamp";
    if (!time.IsValid())
        return Failure(std::make_error_code(std::errc::invalid_argument),
                       std::string(what) + ": it is invalid");
    const std::int64_t milliseconds = time.m_pDateTime->GetValue().GetValue();
    Timestamp result;
    if (!Join(CalendarDay::FloorDivide(milliseconds, s_nMilliseconds), 0, result))
        return TooFar(what);
    return result;
}

DateTime Timestamp::ToDateTime() const
{
    DateTime result;
    *result.m_pDateTime = wxDateTime(wxLongLong(Parts(m_time).second * s_nMilliseconds));
    return result;
}

} // namespace Toolkit
