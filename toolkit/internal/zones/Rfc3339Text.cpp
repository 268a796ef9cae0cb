// SPDX-License-Identifier: MIT
#include "toolkit/internal/zones/Rfc3339Text.h"

#include "toolkit/internal/text/DecimalDigits.h"
#include "toolkit/internal/zones/CalendarDay.h"

namespace Toolkit
{

namespace
{

const std::int64_t s_nSecondsPerDay = 86400;
const std::int64_t s_nLeapSecond = 60;

// Takes one piece of the text after the other; a piece that is not there leaves it where it stood.
class Cursor
{
public:
    explicit Cursor(std::string_view text) : m_pText(text.data()), m_pEnd(text.data() + text.size()) {}

    bool IsAtEnd() const { return m_pText == m_pEnd; }

    // A number of exactly so many digits.
    bool TakeNumber(int digits, std::int64_t& value)
    {
        if (m_pEnd - m_pText < digits)
            return false;
        std::int64_t number = 0;
        for (int i = 0; i < digits; ++i)
        {
            const auto digit = static_cast<unsigned char>(m_pText[i] - '0');
            if (digit > 9)
                return false;
            number = number * 10 + digit;
        }
        m_pText += digits;
        value = number;
        return true;
    }

    bool TakeTwo(std::int64_t least, std::int64_t most, std::int64_t& value)
    {
        return TakeNumber(2, value) && value >= least && value <= most;
    }

    bool Take(char character)
    {
        if (IsAtEnd() || *m_pText != character)
            return false;
        ++m_pText;
        return true;
    }

    bool TakeEither(char one, char other) { return Take(one) || Take(other); }

    // One to nine digits after a point, as nanoseconds.
    bool TakeFraction(std::int64_t& nanoseconds)
    {
        int digits = 0;
        std::int64_t value = 0;
        for (; m_pText != m_pEnd && *m_pText >= '0' && *m_pText <= '9'; ++m_pText)
        {
            if (++digits > Rfc3339Text::s_iMostDigits)
                return false;
            value = value * 10 + (*m_pText - '0');
        }
        for (int i = digits; i < Rfc3339Text::s_iMostDigits; ++i)
            value *= 10;
        nanoseconds = value;
        return digits > 0;
    }

    // "Z", or "+01:00", as seconds.
    bool TakeOffset(std::int64_t& offset)
    {
        if (TakeEither('Z', 'z'))
            return true;
        const bool behind = Take('-');
        std::int64_t hours = 0;
        std::int64_t minutes = 0;
        if ((!behind && !Take('+')) || !TakeTwo(0, 23, hours) || !Take(':') || !TakeTwo(0, 59, minutes))
            return false;
        offset = (hours * 60 + minutes) * (behind ? -60 : 60);
        return true;
    }

private:
    const char* m_pText;
    const char* m_pEnd;
};

const char* ReadDate(Cursor& cursor, CalendarDay& date)
{
    if (!cursor.TakeNumber(4, date.year) || !cursor.Take('-'))
        return "the year is not four digits with a \"-\" after them";
    if (!cursor.TakeTwo(1, 12, date.month) || !cursor.Take('-'))
        return "the month is not 01 to 12 with a \"-\" after it";
    if (!cursor.TakeTwo(1, CalendarDay::DaysOfMonth(date.year, date.month), date.day))
        return "the day is not 01 to the last one of its month";
    return nullptr;
}

// The seconds of the day.
const char* ReadTime(Cursor& cursor, std::int64_t& time, bool& leap)
{
    std::int64_t hour = 0;
    std::int64_t minute = 0;
    std::int64_t second = 0;
    if (!cursor.TakeTwo(0, 23, hour) || !cursor.Take(':'))
        return "the hour is not 00 to 23 with a \":\" after it";
    if (!cursor.TakeTwo(0, 59, minute) || !cursor.Take(':'))
        return "the minute is not 00 to 59 with a \":\" after it";
    if (!cursor.TakeTwo(0, s_nLeapSecond, second))
        return "the second is not 00 to 60";
    time = (hour * 60 + minute) * 60 + second;
    leap = second == s_nLeapSecond;
    return nullptr;
}

// A second 60 is the first one of the next day in UTC by now.
bool IsEndOfMonth(std::int64_t second)
{
    return second % s_nSecondsPerDay == 0 && CalendarDay::Of(second / s_nSecondsPerDay).day == 1;
}

char* WriteClock(char* out, std::int64_t second)
{
    const std::int64_t number = CalendarDay::FloorDivide(second, s_nSecondsPerDay);
    const CalendarDay date = CalendarDay::Of(number);
    const auto year = static_cast<unsigned int>(date.year);
    const auto time = static_cast<unsigned int>(second - number * s_nSecondsPerDay);
    out = DecimalDigits::WriteTwo(DecimalDigits::WriteTwo(out, year / 100), year % 100);
    *out++ = '-';
    out = DecimalDigits::WriteTwo(out, static_cast<unsigned int>(date.month));
    *out++ = '-';
    out = DecimalDigits::WriteTwo(out, static_cast<unsigned int>(date.day));
    *out++ = 'T';
    out = DecimalDigits::WriteTwo(out, time / 3600);
    *out++ = ':';
    out = DecimalDigits::WriteTwo(out, time / 60 % 60);
    *out++ = ':';
    return DecimalDigits::WriteTwo(out, time % 60);
}

char* WriteFraction(char* out, std::int64_t nanosecond, int digits)
{
    if (digits == 0)
        return out;
    *out++ = '.';
    auto rest = static_cast<unsigned int>(nanosecond);
    for (int i = digits; i < Rfc3339Text::s_iMostDigits; ++i)
        rest /= 10;
    for (char* digit = out + digits; digit != out; rest /= 10)
        *--digit = static_cast<char>('0' + rest % 10);
    return out + digits;
}

} // namespace

ReadInstant Rfc3339Text::Read(std::string_view text)
{
    Cursor cursor(text);
    CalendarDay date;
    std::int64_t time = 0;
    bool leap = false;
    if (const char* const problem = ReadDate(cursor, date))
        return ReadInstant::Problem(problem);
    if (!cursor.TakeEither('T', 't'))
        return ReadInstant::Problem("there is no \"T\" between the date and the time");
    if (const char* const problem = ReadTime(cursor, time, leap))
        return ReadInstant::Problem(problem);
    ReadInstant instant;
    if (cursor.Take('.') && !cursor.TakeFraction(instant.nanosecond))
        return ReadInstant::Problem("the fraction of the second is not one to nine digits");
    std::int64_t offset = 0;
    if (!cursor.TakeOffset(offset))
        return ReadInstant::Problem("the time is not followed by \"Z\" or an offset like \"+01:00\"");
    if (!cursor.IsAtEnd())
        return ReadInstant::Problem("something follows the offset");
    instant.second = date.Number() * s_nSecondsPerDay + time - offset;
    if (leap && !IsEndOfMonth(instant.second))
        return ReadInstant::Problem("the second 60 is not at the end of a month in UTC");
    return instant;
}

char* Rfc3339Text::WriteUtc(char* out, std::int64_t second, std::int64_t nanosecond, int digits)
{
    out = WriteFraction(WriteClock(out, second), nanosecond, digits);
    *out++ = 'Z';
    return out;
}

char* Rfc3339Text::WriteAtOffset(char* out, std::int64_t second, std::int64_t nanosecond, int digits,
                                 std::int64_t offsetMinutes)
{
    out = WriteFraction(WriteClock(out, second + offsetMinutes * 60), nanosecond, digits);
    *out++ = offsetMinutes < 0 ? '-' : '+';
    const std::int64_t distance = offsetMinutes < 0 ? -offsetMinutes : offsetMinutes;
    out = DecimalDigits::WriteTwo(out, distance / 60);
    *out++ = ':';
    return DecimalDigits::WriteTwo(out, distance % 60);
}

int Rfc3339Text::DigitsOf(std::int64_t nanosecond)
{
    if (nanosecond == 0)
        return 0;
    return nanosecond % 1000000 == 0 ? 3 : nanosecond % 1000 == 0 ? 6 : 9;
}

} // namespace Toolkit
