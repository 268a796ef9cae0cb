// SPDX-License-Identifier: MIT
#include "toolkit/internal/zones/MailDate.h"

#include <cstddef>
#include <cstdint>

#include "toolkit/internal/zones/CalendarDay.h"

namespace Toolkit
{

namespace
{

using View = std::string_view;

const View s_days[] = {"sunday", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday"};
const View s_months[] = {"january", "february", "march",     "april",   "may",      "june",
                         "july",    "august",   "september", "october", "november", "december"};

const std::size_t s_uShortName = 3;
const std::size_t s_uNone = View::npos;
// Enough for every year that has an instant.
const std::size_t s_uMostYearDigits = 9;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// True for the first letters of the name, small or great ones.
bool Begins(View name, View letters)
{
    if (letters.size() > name.size())
        return false;
    for (std::size_t i = 0; i < letters.size(); ++i)
        if ((letters[i] | 0x20) != name[i])
            return false;
    return true;
}

// The place of a name that is written out, or cut to three letters or more.
template <std::size_t count>
std::size_t PlaceOf(View word, const View (&names)[count])
{
    for (std::size_t i = 0; i < count; ++i)
        if (word.size() >= s_uShortName && Begins(names[i], word))
            return i;
    return s_uNone;
}

// The hours of the zones whose names the RFC knows; 0 for all others, the letters of the military included,
// which were used with either sign.
std::int64_t HoursOf(View zone)
{
    static const struct
    {
        View name;
        std::int64_t hours;
    } rows[] = {{"est", -5}, {"edt", -4}, {"cst", -6}, {"cdt", -5},
                {"mst", -7}, {"mdt", -6}, {"pst", -8}, {"pdt", -7}};
    for (const auto& row : rows)
        if (row.name.size() == zone.size() && Begins(row.name, zone))
            return row.hours;
    return 0;
}

std::int64_t FullYear(std::int64_t year, std::size_t digits)
{
    if (digits == 2)
        return year < 50 ? 2000 + year : 1900 + year;
    return digits == 3 ? 1900 + year : year;
}

class Reader
{
public:
    explicit Reader(View text) : m_rest(text) {}

    ReadInstant Read()
    {
        if (!SkipSpace() || !ReadDate() || !ReadTime() || !ReadZone())
            return ReadInstant::Problem(m_pProblem);
        if (!m_rest.empty())
            return ReadInstant::Problem("something follows the date");
        ReadInstant instant;
        instant.second = m_date.Number() * 86400 + m_nTime - m_nOffset;
        return instant;
    }

private:
    bool Fail(const char* problem)
    {
        m_pProblem = problem;
        return false;
    }

    bool IsNext(bool (*kind)(char)) const { return !m_rest.empty() && kind(m_rest.front()); }

    View TakeAll(bool (*kind)(char))
    {
        std::size_t length = 0;
        while (length < m_rest.size() && kind(m_rest[length]))
            ++length;
        const View taken = m_rest.substr(0, length);
        m_rest.remove_prefix(length);
        return taken;
    }

    bool TakeEither(char one, char other)
    {
        if (m_rest.empty() || (m_rest.front() != one && m_rest.front() != other))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    // White space and comments, which may hold others. False for a comment without an end.
    bool SkipSpace()
    {
        std::size_t depth = 0;
        std::size_t i = 0;
        for (; i < m_rest.size() && (depth > 0 || m_rest[i] == '(' || IsSpace(m_rest[i])); ++i)
        {
            if (m_rest[i] == '\\')
                ++i;
            else if (m_rest[i] == '(')
                ++depth;
            else if (m_rest[i] == ')')
                --depth;
        }
        if (depth > 0)
            return Fail("a comment has no end");
        m_rest.remove_prefix(i);
        return true;
    }

    // False without a number of so many digits.
    bool TakeNumber(std::size_t least, std::size_t most, std::int64_t& value)
    {
        const View digits = TakeAll(IsDigit);
        if (digits.size() < least || digits.size() > most)
            return false;
        value = 0;
        for (const char digit : digits)
            value = value * 10 + (digit - '0');
        return true;
    }

    bool ReadDate()
    {
        if (IsNext(IsLetter))
        {
            if (PlaceOf(TakeAll(IsLetter), s_days) == s_uNone)
                return Fail("it begins with a name that is none of a day");
            TakeEither('.', '.');
            if (!SkipSpace() || (TakeEither(',', ',') && !SkipSpace()))
                return false;
        }
        if (!TakeNumber(1, 2, m_date.day) || !SkipDash())
            return m_pProblem == nullptr ? Fail("the day is not one or two digits") : false;
        const std::size_t month = PlaceOf(TakeAll(IsLetter), s_months);
        if (month == s_uNone)
            return Fail("after the day comes no name of a month");
        m_date.month = static_cast<std::int64_t>(month) + 1;
        TakeEither('.', '.');
        if (!SkipDash())
            return false;
        const std::size_t before = m_rest.size();
        if (!TakeNumber(2, s_uMostYearDigits, m_date.year))
            return Fail("the year is not two to nine digits");
        m_date.year = FullYear(m_date.year, before - m_rest.size());
        if (m_date.day < 1 || m_date.day > CalendarDay::DaysOfMonth(m_date.year, m_date.month))
            return Fail("the month has no such day");
        return SkipSpace();
    }

    bool SkipDash() { return SkipSpace() && (!TakeEither('-', '-') || SkipSpace()); }

    // The colon or point, with space around it, before the next number of the time.
    bool SkipColon(bool& found)
    {
        if (!SkipSpace())
            return false;
        found = TakeEither(':', '.');
        return !found || SkipSpace();
    }

    bool ReadTime()
    {
        std::int64_t hour = 0;
        std::int64_t minute = 0;
        std::int64_t second = 0;
        bool found = false;
        if (!TakeNumber(1, 2, hour) || hour > 23)
            return Fail("the hour is not 0 to 23");
        if (!SkipColon(found))
            return false;
        if (!found || !TakeNumber(1, 2, minute) || minute > 59)
            return Fail("the minute is not 0 to 59 after a \":\"");
        if (!SkipColon(found))
            return false;
        if (found && (!TakeNumber(1, 2, second) || second > 60))
            return Fail("the second is not 0 to 60");
        m_nTime = (hour * 60 + minute) * 60 + second;
        return SkipSpace();
    }

    bool ReadZone()
    {
        if (IsNext(IsLetter))
        {
            const View name = TakeAll(IsLetter);
            if (name.size() == 1 && (name.front() | 0x20) == 'j')
                return Fail("\"J\" is no zone");
            m_nOffset = HoursOf(name) * 3600;
            return SkipSpace();
        }
        if (m_rest.empty())
            return true;
        const bool behind = m_rest.front() == '-';
        if (!TakeEither('+', '-'))
            return Fail("after the time comes no zone");
        if (!ReadOffset())
            return Fail("the offset is not two digits of hours and 00 to 59 minutes");
        m_nOffset = behind ? -m_nOffset : m_nOffset;
        if (!SkipSpace())
            return false;
        TakeAll(IsLetter);
        return SkipSpace();
    }

    bool ReadOffset()
    {
        const View digits = TakeAll(IsDigit);
        View minutes = digits.substr(digits.size() < 2 ? 0 : 2);
        if (minutes.empty() && TakeEither(':', ':'))
            minutes = TakeAll(IsDigit);
        if (digits.size() < 2 || minutes.size() != 2 || minutes.front() > '5')
            return false;
        m_nOffset = ((digits[0] - '0') * 10 + digits[1] - '0') * std::int64_t{3600} +
                    ((minutes[0] - '0') * 10 + minutes[1] - '0') * std::int64_t{60};
        return true;
    }

    View m_rest;
    const char* m_pProblem = nullptr;
    CalendarDay m_date;
    std::int64_t m_nTime = 0;
    std::int64_t m_nOffset = 0;
};

} // namespace

ReadInstant MailDate::Read(std::string_view text)
{
    return Reader(text).Read();
}

} // namespace Toolkit
