// SPDX-License-Identifier: MIT
#include "toolkit/datetime/DateTime.h"

#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/DateTimes.h"
#include "tests/support/GroupedDigits.h"
#include "tests/support/LocalZone.h"

namespace
{

using Toolkit::DateTime;
using Toolkit::smart_ptr;
using Toolkit::TString;
using ToolkitTest::At;
using ToolkitTest::Iso;
using ToolkitTest::Parsed;

const unsigned int s_uLargest = std::numeric_limits<unsigned int>::max();
const unsigned int s_uHoursOfADay = 24;

static_assert(std::is_same_v<decltype(std::declval<const DateTime&>().GetYear()), int>);
static_assert(std::is_same_v<decltype(std::declval<const DateTime&>().GetMonth()), int>);
static_assert(std::is_same_v<decltype(std::declval<const DateTime&>().GetDay()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<const DateTime&>().GetHour()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<const DateTime&>().GetMinute()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<const DateTime&>().GetSecond()), unsigned int>);
static_assert(std::is_same_v<decltype(std::declval<DateTime&>().MakeToUTC()), DateTime&>);
static_assert(std::is_same_v<decltype(std::declval<DateTime&>().MakeFromUTC()), DateTime&>);

// Every test runs in a number of zones, and nothing may be said on the standard error output.
class DateTimeTest : public testing::TestWithParam<const char*>
{
protected:
    DateTimeTest() : m_zone(GetParam()), m_errors(2) {}
    void TearDown() override { EXPECT_EQ(m_errors.Stop(), ""); }

private:
    const ToolkitTest::LocalZone m_zone;
    ToolkitTest::CapturedOutput m_errors;
};

// A zone with the whole hour, with parts of it, with summer time of an hour and of half of one, at both ends
// of the world, with a day left out, with a winter time instead of a summer time, with midnights left out,
// and by a rule.
INSTANTIATE_TEST_SUITE_P(Zones, DateTimeTest,
                         testing::Values("UTC", "Europe/Berlin", "America/New_York", "Asia/Kolkata",
                                         "Asia/Kathmandu", "Australia/Lord_Howe", "America/St_Johns",
                                         "Pacific/Kiritimati", "Etc/GMT+12", "Pacific/Apia", "Europe/Dublin",
                                         "America/Sao_Paulo", "XST4:30XDT,M3.2.0,M11.1.0"),
                         [](const testing::TestParamInfo<const char*>& zone)
                         {
                             std::string name(zone.param);
                             for (char& character : name)
                                 if (std::isalnum(static_cast<unsigned char>(character)) == 0)
                                     character = '_';
                             return name;
                         });

DateTime Invalid()
{
    return DateTime(2009, 0, 0, 0, 0, 0);
}

smart_ptr<DateTime> Shared(const DateTime& time)
{
    return smart_ptr<DateTime>(new DateTime(time));
}

// Years, months, weeks and days.
using Span = std::array<unsigned int, 4>;

struct SpanRow
{
    DateTime from;
    Span span;
    const wchar_t* to;
};

DateTime Later(DateTime time, const Span& span)
{
    time.Add(span[0], span[1], span[2], span[3]);
    return time;
}

DateTime Earlier(DateTime time, const Span& span)
{
    time.Remove(span[0], span[1], span[2], span[3]);
    return time;
}

void ExpectAllZero(const DateTime& time)
{
    EXPECT_FALSE(time.IsValid());
    EXPECT_EQ(time.GetYear(), 0);
    EXPECT_EQ(time.GetMonth(), 0);
    EXPECT_EQ(time.GetDay(), 0U);
    EXPECT_EQ(time.GetHour(), 0U);
    EXPECT_EQ(time.GetMinute(), 0U);
    EXPECT_EQ(time.GetSecond(), 0U);
}

} // namespace

TEST_P(DateTimeTest, IsTheCurrentTimeAtFirst)
{
    const DateTime before = At(std::time(nullptr));
    const DateTime now;
    const DateTime after = At(std::time(nullptr));
    EXPECT_TRUE(before <= now && now <= after) << Iso(now);
}

TEST_P(DateTimeTest, IsTheSameWhenMadeTwiceWithinOneSecond)
{
    for (int tries = 0; tries < 100; ++tries)
    {
        const std::time_t second = std::time(nullptr);
        const DateTime one;
        const DateTime other;
        if (std::time(nullptr) != second)
            continue;
        EXPECT_EQ(one, other);
        return;
    }
    FAIL() << "no second was long enough";
}

TEST_P(DateTimeTest, NowReplacesTheValue)
{
    for (DateTime time : {DateTime(1999, 1, 1, 0, 0, 0), Invalid()})
    {
        const DateTime before;
        time.Now();
        EXPECT_TRUE(before <= time && time <= DateTime());
    }
}

TEST_P(DateTimeTest, ShowsItsLocalFields)
{
    const DateTime time(2009, 3, 7, 14, 5, 9);
    EXPECT_TRUE(time.IsValid());
    EXPECT_EQ(time.GetYear(), 2009);
    EXPECT_EQ(time.GetMonth(), 3);
    EXPECT_EQ(time.GetDay(), 7U);
    EXPECT_EQ(time.GetHour(), 14U);
    EXPECT_EQ(time.GetMinute(), 5U);
    EXPECT_EQ(time.GetSecond(), 9U);
}

TEST_P(DateTimeTest, TakesTheFirstAndTheLastOfEachField)
{
    EXPECT_EQ(Iso(DateTime(2009, 1, 1, 0, 0, 0)), L"2009-01-01 00:00:00");
    EXPECT_EQ(Iso(DateTime(2008, 12, 31, 23, 59, 59)), L"2008-12-31 23:59:59");
    EXPECT_EQ(Iso(DateTime(2008, 2, 29, 23, 59, 59)), L"2008-02-29 23:59:59");
}

TEST_P(DateTimeTest, TakesDayHourMinuteAndSecondModulo65536)
{
    const DateTime time(2009, 3, 7, 14, 5, 9);
    EXPECT_EQ(DateTime(2009, 3, 65536 + 7, 65536 * 2 + 14, 65536 * 3 + 5, 65536 * 65535U + 9), time);
    EXPECT_EQ(DateTime(2009, 3, 65536 + 7, 65536 * 2 + 14, 65536 * 3 + 5, 65536 * 65535U + 9, 3),
              DateTime(2009, 3, 7, 14, 5, 9, 3));
    EXPECT_FALSE(DateTime(2009, 3, 65536, 14, 5, 9).IsValid());
    EXPECT_FALSE(DateTime(2009, 65536 + 3, 7, 14, 5, 9).IsValid());
    EXPECT_FALSE(DateTime(65536U * 65535 + 2009, 3, 7, 14, 5, 9).IsValid());
}

TEST_P(DateTimeTest, IsInvalidForFieldsThatDoNotExist)
{
    const unsigned int rows[][6] = {
        {2009, 0, 7, 14, 5, 9},          {2009, 13, 7, 14, 5, 9},
        {2009, 3, 0, 14, 5, 9},          {2009, 3, 32, 14, 5, 9},
        {2009, 2, 29, 14, 5, 9},         {2100, 2, 29, 14, 5, 9},
        {2008, 2, 30, 14, 5, 9},         {2009, 4, 31, 14, 5, 9},
        {2009, 6, 31, 14, 5, 9},         {2009, 9, 31, 14, 5, 9},
        {2009, 11, 31, 14, 5, 9},        {2009, 3, 7, 24, 5, 9},
        {2009, 3, 7, 14, 60, 9},         {2009, 3, 7, 14, 5, 62},
        {s_uLargest, 3, 7, 14, 5, 9},    {292278995, 1, 2, 0, 0, 0},
        {2009, s_uLargest, 7, 14, 5, 9}, {2009, 3, s_uLargest, 14, 5, 9},
        {2009, 3, 7, s_uLargest, 5, 9},  {2009, 3, 7, 14, s_uLargest, 9},
        {2009, 3, 7, 14, 5, s_uLargest}, {0, 0, 0, 0, 0, 0},
        {2147483648U, 3, 7, 14, 5, 9},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row));
        ExpectAllZero(DateTime(row[0], row[1], row[2], row[3], row[4], row[5]));
        ExpectAllZero(DateTime(row[0], row[1], row[2], row[3], row[4], row[5], 0));
    }
}

TEST_P(DateTimeTest, LeapSecondsCountOnIntoTheNextMinute)
{
    EXPECT_EQ(DateTime(2008, 12, 31, 23, 59, 60), DateTime(2009, 1, 1, 0, 0, 0));
    EXPECT_EQ(DateTime(2008, 12, 31, 23, 59, 61), DateTime(2009, 1, 1, 0, 0, 1));
    EXPECT_EQ(DateTime(2008, 12, 31, 23, 59, 60, 0), DateTime(2009, 1, 1, 0, 0, 0, 0));
    EXPECT_EQ(Parsed(L"2008-12-31 23:59:60"), DateTime(2009, 1, 1, 0, 0, 0));
}

TEST_P(DateTimeTest, HasYearsFarFromOurs)
{
    for (const unsigned int year : {0U, 1U, 99U, 999U, 9999U, 10000U, 32767U, 32768U, 65536U, 292278993U})
    {
        const DateTime time(year, 2, 28, 23, 59, 59);
        ASSERT_TRUE(time.IsValid()) << year;
        EXPECT_EQ(time.GetYear(), static_cast<int>(year));
        EXPECT_EQ(time.GetMonth(), 2);
        EXPECT_EQ(time.GetDay(), 28U);
        EXPECT_EQ(time.GetHour(), 23U);
        EXPECT_EQ(time.GetMinute(), 59U);
        EXPECT_EQ(time.GetSecond(), 59U);
    }
}

TEST_P(DateTimeTest, TakesTheFieldsOfAFixedZone)
{
    for (int offset = -12; offset <= 13; ++offset)
    {
        DateTime expected(2009, 7, 7, 14, 5, 9, 0);
        if (offset < 0)
            expected.Add(static_cast<unsigned int>(-offset), 0, 0);
        else
            expected.Remove(static_cast<unsigned int>(offset), 0, 0);
        EXPECT_EQ(DateTime(2009, 7, 7, 14, 5, 9, offset), expected) << offset;
    }
    EXPECT_EQ(Iso(DateTime(2009, 3, 7, 14, 5, 9, 0), true), L"2009-03-07 14:05:09 Z");
    EXPECT_EQ(Iso(DateTime(2009, 1, 1, 0, 30, 0, 1), true), L"2008-12-31 23:30:00 Z");
    EXPECT_EQ(Iso(DateTime(2009, 12, 31, 12, 0, 0, -12), true), L"2010-01-01 00:00:00 Z");
}

TEST_P(DateTimeTest, TakesTheLastInstantInEveryFixedZone)
{
    const DateTime last(292278994, 8, 17, 7, 12, 55, 0);
    ASSERT_TRUE(last.IsValid());
    EXPECT_EQ(DateTime(292278994, 8, 17, 8, 12, 55, 1), last);
    EXPECT_EQ(DateTime(292278994, 8, 17, 20, 12, 55, 13), last);
    EXPECT_EQ(DateTime(292278994, 8, 16, 19, 12, 55, -12), last);
    ExpectAllZero(DateTime(292278994, 8, 17, 7, 12, 56, 0));
    ExpectAllZero(DateTime(292278994, 8, 17, 20, 12, 56, 13));
    ExpectAllZero(DateTime(292278994, 8, 16, 19, 12, 56, -12));
}

TEST_P(DateTimeTest, IsInvalidForOffsetsThatNoZoneHas)
{
    for (const int offset :
         {-13, 14, 15, -14, 100, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        ExpectAllZero(DateTime(2009, 3, 7, 14, 5, 9, offset));
}

TEST_P(DateTimeTest, CopiesAreDeep)
{
    DateTime original(2009, 3, 7, 14, 5, 9);
    const DateTime copy(original);
    DateTime assigned;
    assigned = original;
    original.Add(0, 0, 1);
    EXPECT_EQ(copy, DateTime(2009, 3, 7, 14, 5, 9));
    EXPECT_EQ(assigned, DateTime(2009, 3, 7, 14, 5, 9));
    EXPECT_EQ(original, DateTime(2009, 3, 7, 14, 5, 10));
}

TEST_P(DateTimeTest, AssignsItselfAndInvalidValues)
{
    DateTime time(2009, 3, 7, 14, 5, 9);
    const DateTime& same = time;
    time = same;
    EXPECT_EQ(time, DateTime(2009, 3, 7, 14, 5, 9));
    time = Invalid();
    ExpectAllZero(time);
    ExpectAllZero(DateTime(time));
    time = DateTime(2009, 3, 7, 14, 5, 9);
    EXPECT_TRUE(time.IsValid());
}

TEST_P(DateTimeTest, ComparesByInstant)
{
    const std::vector<DateTime> ordered = {
        Invalid(),
        DateTime(0, 1, 1, 0, 0, 0),
        DateTime(1969, 12, 31, 23, 59, 59, 0),
        DateTime(1970, 1, 1, 0, 0, 0, 0),
        DateTime(2009, 3, 7, 14, 5, 9, 1),
        DateTime(2009, 3, 7, 14, 5, 9, 0),
        DateTime(2009, 3, 7, 14, 5, 10, 0),
        DateTime(292278993, 1, 1, 0, 0, 0),
    };
    for (std::size_t i = 0; i < ordered.size(); ++i)
        for (std::size_t j = 0; j < ordered.size(); ++j)
        {
            EXPECT_EQ(ordered[i] == ordered[j], i == j);
            EXPECT_EQ(ordered[i] != ordered[j], i != j);
            EXPECT_EQ(ordered[i] < ordered[j], i < j);
            EXPECT_EQ(ordered[i] <= ordered[j], i <= j);
            EXPECT_EQ(ordered[i] > ordered[j], i > j);
            EXPECT_EQ(ordered[i] >= ordered[j], i >= j);
        }
}

TEST_P(DateTimeTest, AddsCalendarSpans)
{
    const SpanRow rows[] = {
        {{2009, 1, 31, 14, 5, 9}, {0, 1, 0, 0}, L"2009-02-28 14:05:09"},
        {{2008, 1, 31, 14, 5, 9}, {0, 1, 0, 0}, L"2008-02-29 14:05:09"},
        {{2009, 3, 31, 14, 5, 9}, {0, 1, 0, 0}, L"2009-04-30 14:05:09"},
        {{2008, 2, 29, 14, 5, 9}, {1, 0, 0, 0}, L"2009-02-28 14:05:09"},
        {{2008, 2, 29, 14, 5, 9}, {4, 0, 0, 0}, L"2012-02-29 14:05:09"},
        {{2009, 3, 7, 14, 5, 9}, {1, 2, 3, 4}, L"2010-06-01 14:05:09"},
        {{2009, 12, 31, 14, 5, 9}, {0, 0, 0, 1}, L"2010-01-01 14:05:09"},
        {{2009, 12, 7, 14, 5, 9}, {0, 1, 0, 0}, L"2010-01-07 14:05:09"},
        {{2009, 3, 7, 14, 5, 9}, {0, 26, 0, 0}, L"2011-05-07 14:05:09"},
        {{2009, 3, 7, 14, 5, 9}, {0, 0, 52, 0}, L"2010-03-06 14:05:09"},
        {{2009, 3, 7, 14, 5, 9}, {0, 0, 0, 0}, L"2009-03-07 14:05:09"},
        // The day is cut to the month before the days are added.
        {{2009, 1, 31, 14, 5, 9}, {0, 1, 0, 1}, L"2009-03-01 14:05:09"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Iso(Later(row.from, row.span)), row.to);
}

TEST_P(DateTimeTest, RemovesCalendarSpans)
{
    const SpanRow rows[] = {
        {{2009, 3, 31, 14, 5, 9}, {0, 1, 0, 0}, L"2009-02-28 14:05:09"},
        {{2008, 2, 29, 14, 5, 9}, {1, 0, 0, 0}, L"2007-02-28 14:05:09"},
        {{2010, 6, 1, 14, 5, 9}, {1, 2, 3, 4}, L"2009-03-07 14:05:09"},
        {{2009, 1, 1, 14, 5, 9}, {0, 0, 0, 1}, L"2008-12-31 14:05:09"},
        {{2009, 1, 7, 14, 5, 9}, {0, 1, 0, 0}, L"2008-12-07 14:05:09"},
        {{2009, 1, 7, 14, 5, 9}, {0, 25, 0, 0}, L"2006-12-07 14:05:09"},
        {{2009, 3, 7, 14, 5, 9}, {2010, 0, 0, 0}, L"-1-03-07 14:05:09"},
        // The months go first here too.
        {{2009, 3, 31, 14, 5, 9}, {0, 1, 0, 27}, L"2009-02-01 14:05:09"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Iso(Earlier(row.from, row.span)), row.to);
}

TEST_P(DateTimeTest, SurvivesTheLargestSpans)
{
    const DateTime time(2009, 3, 7, 14, 5, 9);
    const Span spans[] = {{s_uLargest, 0, 0, 0},
                          {0, s_uLargest, 0, 0},
                          {292300000, 0, 0, 0},
                          {s_uLargest, s_uLargest, s_uLargest, s_uLargest}};
    for (const Span& span : spans)
    {
        ExpectAllZero(Later(time, span));
        ExpectAllZero(Earlier(time, span));
    }
    const DateTime there = Later(time, {0, 0, s_uLargest, s_uLargest});
    EXPECT_TRUE(there > time);
    EXPECT_EQ(Earlier(there, {0, 0, s_uLargest, s_uLargest}), time);
}

TEST_P(DateTimeTest, MovesTheInstantExactly)
{
    const DateTime time(2009, 3, 7, 14, 5, 9);
    DateTime moved(time);
    moved.Add(0, 0, 90);
    EXPECT_EQ(moved.GetTotalSecondes(Shared(time)), 90);
    moved.Add(1, 2, 3);
    EXPECT_EQ(moved.GetTotalSecondes(Shared(time)), 90 + 3723);
    moved.Remove(1, 2, 3);
    moved.Remove(0, 0, 90);
    EXPECT_EQ(moved, time);
    moved.Remove(s_uHoursOfADay * 365, 0, 0);
    EXPECT_EQ(moved.GetTotalHours(Shared(time)), -24 * 365);
}

TEST_P(DateTimeTest, ComputesMovesIn64Bits)
{
    DateTime moved(1970, 1, 1, 0, 0, 0, 0);
    moved.Add(s_uLargest, s_uLargest, s_uLargest);
    EXPECT_EQ(Iso(moved, true), L"500239-10-10 01:43:15 Z");
    moved.Remove(s_uLargest, s_uLargest, s_uLargest);
    EXPECT_EQ(moved, At(0));
}

TEST_P(DateTimeTest, IsInvalidWhenItMovesTooFar)
{
    DateTime later(2009, 3, 7, 14, 5, 9, 0);
    DateTime earlier(later);
    int steps = 0;
    for (; later.IsValid() && earlier.IsValid() && steps < 1000; ++steps)
    {
        EXPECT_EQ(Parsed(Iso(later, true)), later);
        EXPECT_EQ(Parsed(Iso(later)), later);
        EXPECT_EQ(Parsed(Iso(earlier, true)), earlier);
        EXPECT_EQ(Parsed(Iso(earlier)), earlier);
        later.Add(s_uLargest, 0, 0);
        earlier.Remove(s_uLargest, 0, 0);
    }
    EXPECT_EQ(steps, 597);
    later.Add(s_uLargest, 0, 0);
    earlier.Remove(s_uLargest, 0, 0);
    ExpectAllZero(later);
    ExpectAllZero(earlier);
}

TEST_P(DateTimeTest, DifferencesAreTruncatedTowardZero)
{
    const DateTime time(2009, 3, 7, 14, 5, 9);
    const struct
    {
        unsigned int distance;
        int seconds;
        int minutes;
        int hours;
    } rows[] = {
        {0, 0, 0, 0},         {1, 1, 0, 0},         {59, 59, 0, 0},      {60, 60, 1, 0},
        {119, 119, 1, 0},     {120, 120, 2, 0},     {3599, 3599, 59, 0}, {3600, 3600, 60, 1},
        {7199, 7199, 119, 1}, {7200, 7200, 120, 2},
    };
    for (const auto& row : rows)
    {
        DateTime later(time);
        later.Add(0, 0, row.distance);
        EXPECT_EQ(later.GetTotalSecondes(Shared(time)), row.seconds);
        EXPECT_EQ(later.GetTotalMinutes(Shared(time)), row.minutes);
        EXPECT_EQ(later.GetTotalHours(Shared(time)), row.hours);
        EXPECT_EQ(time.GetTotalSecondes(Shared(later)), -row.seconds);
        EXPECT_EQ(time.GetTotalMinutes(Shared(later)), -row.minutes);
        EXPECT_EQ(time.GetTotalHours(Shared(later)), -row.hours);
    }
}

TEST_P(DateTimeTest, DifferencesAreCutTo32Bits)
{
    const int smallest = std::numeric_limits<int>::min();
    EXPECT_EQ(At(2147483647).GetTotalSecondes(Shared(At(0))), 2147483647);
    EXPECT_EQ(At(2147483648).GetTotalSecondes(Shared(At(0))), smallest);
    EXPECT_EQ(At(0).GetTotalSecondes(Shared(At(2147483648))), smallest);
    EXPECT_EQ(At(4294967296).GetTotalSecondes(Shared(At(0))), 0);
    EXPECT_EQ(At(4294967296 + 5).GetTotalSecondes(Shared(At(0))), 5);
    EXPECT_EQ(At(0).GetTotalSecondes(Shared(At(4294967296 + 5))), -5);
    // Cut after the division, not before.
    EXPECT_EQ(At(4294967296).GetTotalMinutes(Shared(At(0))), 71582788);
    EXPECT_EQ(At(4294967296).GetTotalHours(Shared(At(0))), 1193046);
    EXPECT_EQ(At(2147483648 * 60).GetTotalMinutes(Shared(At(0))), smallest);
    EXPECT_EQ(At(4294967296 * 3600).GetTotalHours(Shared(At(3600))), -1);
}

TEST_P(DateTimeTest, DifferenceOfTheFurthestInstantsIsExact)
{
    // Their distance in milliseconds takes more than 63 bits.
    const DateTime first(Parsed(L"-292275000-01-01 00:00:00 Z"));
    const DateTime last(Parsed(L"292278000-01-01 00:00:00 Z"));
    ASSERT_TRUE(first.IsValid() && last.IsValid());
    // The last 200 years of one period of 400 years, then 1461382 whole ones.
    const std::int64_t hours = (73048 + 1461382LL * 146097) * 24;
    EXPECT_EQ(last.GetTotalHours(Shared(first)), static_cast<int>(static_cast<std::uint32_t>(hours)));
    EXPECT_EQ(last.GetTotalHours(Shared(first)), -first.GetTotalHours(Shared(last)));
}

TEST_P(DateTimeTest, DifferencesToNothingAreZero)
{
    const DateTime time(2009, 3, 7, 14, 5, 9);
    for (const smart_ptr<DateTime>& nothing : {smart_ptr<DateTime>(), Shared(Invalid())})
        for (const DateTime& one : {time, Invalid()})
        {
            EXPECT_EQ(one.GetTotalSecondes(nothing), 0);
            EXPECT_EQ(one.GetTotalMinutes(nothing), 0);
            EXPECT_EQ(one.GetTotalHours(nothing), 0);
        }
    EXPECT_EQ(Invalid().GetTotalSecondes(Shared(time)), 0);
    EXPECT_EQ(Invalid().GetTotalMinutes(Shared(time)), 0);
    EXPECT_EQ(Invalid().GetTotalHours(Shared(time)), 0);
}

TEST_P(DateTimeTest, MakeToUTCShowsTheUtcClock)
{
    DateTime time(2009, 7, 7, 23, 5, 9, 0);
    EXPECT_EQ(&time.MakeToUTC(), &time);
    EXPECT_EQ(Iso(time), L"2009-07-07 23:05:09");
}

TEST_P(DateTimeTest, MakeFromUTCTakesTheLocalFieldsAsUtc)
{
    DateTime time(2009, 7, 7, 23, 5, 9);
    EXPECT_EQ(&time.MakeFromUTC(), &time);
    EXPECT_EQ(time, DateTime(2009, 7, 7, 23, 5, 9, 0));
    EXPECT_EQ(time.MakeToUTC(), DateTime(2009, 7, 7, 23, 5, 9));
}

TEST_P(DateTimeTest, StaysInvalidThroughEveryOperation)
{
    DateTime time = Invalid();
    time.Add(1, 2, 3, 4);
    time.Remove(1, 2, 3, 4);
    time.Add(0, 0, 0, 0);
    time.Add(1, 2, 3);
    time.Remove(1, 2, 3);
    time.Add(0, 0, 0);
    time.MakeToUTC().MakeFromUTC();
    DateTime copy;
    copy = DateTime(time);
    ExpectAllZero(copy);
    EXPECT_EQ(copy, Invalid());
    EXPECT_FALSE(copy < Invalid());
}

TEST_P(DateTimeTest, InvalidValueHasTextsOfZeros)
{
    const DateTime time = Invalid();
    TString<wchar_t> text(L"replaced");
    for (const bool utc : {false, true})
    {
        time.GetIsoDate(text, utc);
        EXPECT_EQ(text, L"00-00-00");
        time.GetIsoTime(text, utc);
        EXPECT_EQ(text, utc ? L"00:00:00 Z" : L"00:00:00");
        EXPECT_EQ(Iso(time, utc), utc ? L"00-00-00 00:00:00 Z" : L"00-00-00 00:00:00");
        EXPECT_FALSE(Parsed(Iso(time, utc)).IsValid());
    }
    time.GetSortableString(text);
    EXPECT_EQ(text, L"000000000000");
}

TEST_P(DateTimeTest, NormalizesDates)
{
    const struct
    {
        unsigned int wished[3];
        const wchar_t* real;
    } rows[] = {
        {{2009, 2, 29}, L"2009-03-01 00:00:00"},    {{2008, 2, 29}, L"2008-02-29 00:00:00"},
        {{2008, 2, 30}, L"2008-03-01 00:00:00"},    {{2009, 4, 31}, L"2009-05-01 00:00:00"},
        {{2009, 13, 5}, L"2010-01-05 00:00:00"},    {{2009, 12, 31}, L"2009-12-31 00:00:00"},
        {{2009, 2, 30}, L"2009-03-01 00:00:00"},    {{2009, 2, 31}, L"2009-03-01 00:00:00"},
        {{2008, 2, 31}, L"2008-03-01 00:00:00"},    {{2000, 2, 29}, L"2000-02-29 00:00:00"},
        {{2100, 2, 29}, L"2100-03-01 00:00:00"},    {{2009, 6, 31}, L"2009-07-01 00:00:00"},
        {{2009, 9, 31}, L"2009-10-01 00:00:00"},    {{2009, 11, 31}, L"2009-12-01 00:00:00"},
        {{2009, 4, 30}, L"2009-04-30 00:00:00"},    {{2009, 12, 30}, L"2009-12-30 00:00:00"},
        {{2009, 1, 31}, L"2009-01-31 00:00:00"},    {{2009, 3, 31}, L"2009-03-31 00:00:00"},
        {{2009, 5, 31}, L"2009-05-31 00:00:00"},    {{2009, 7, 31}, L"2009-07-31 00:00:00"},
        {{2009, 8, 31}, L"2009-08-31 00:00:00"},    {{2009, 10, 31}, L"2009-10-31 00:00:00"},
        {{2009, 1, 29}, L"2009-01-29 00:00:00"},    {{2009, 2, 28}, L"2009-02-28 00:00:00"},
        {{2009, 2, 1}, L"2009-02-01 00:00:00"},     {{2009, 14, 5}, L"2010-01-05 00:00:00"},
        {{2009, 13, 29}, L"2010-01-29 00:00:00"},   {{2009, 13, 30}, L"2010-01-30 00:00:00"},
        {{2009, 14, 31}, L"2010-01-31 00:00:00"},   {{2009, s_uLargest, 31}, L"2010-01-31 00:00:00"},
        {{2009, 1, 65537}, L"2009-01-01 00:00:00"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Iso(DateTime::CreateNormalizedDateTime(row.wished[0], row.wished[1], row.wished[2])),
                  row.real);
}

TEST_P(DateTimeTest, NormalizesNoImpossibleDates)
{
    const unsigned int rows[][3] = {{2009, 0, 1},          {2009, 0, 29},      {2009, 0, 30},
                                    {2009, 0, 31},         {2009, 1, 0},       {2009, 1, 32},
                                    {2009, 2, 32},         {2009, 13, 0},      {2009, 13, 32},
                                    {2009, 1, s_uLargest}, {s_uLargest, 1, 1}, {s_uLargest, 13, 1}};
    for (const auto& row : rows)
        ExpectAllZero(DateTime::CreateNormalizedDateTime(row[0], row[1], row[2]));
}

TEST_P(DateTimeTest, WritesTextsInFixedForms)
{
    const DateTime time(2009, 3, 7, 14, 5, 9);
    TString<wchar_t> text(L"replaced");
    time.GetIsoDate(text, false);
    EXPECT_EQ(text, L"2009-03-07");
    time.GetIsoTime(text, false);
    EXPECT_EQ(text, L"14:05:09");
    time.GetIsoString(text, false);
    EXPECT_EQ(text, L"2009-03-07 14:05:09");
    DateTime(2009, 3, 5, 8, 7, 6).GetSortableString(text);
    EXPECT_EQ(text, L"20090305080706");
    DateTime(2009, 12, 31, 23, 59, 58).GetSortableString(text);
    EXPECT_EQ(text, L"20091231235958");
    TString<char> bytes("replaced");
    time.GetIsoString(bytes, false);
    EXPECT_EQ(bytes, "2009-03-07 14:05:09");
}

TEST_P(DateTimeTest, WritesTextsOfUtc)
{
    const DateTime time(2009, 3, 7, 13, 5, 9, 0);
    TString<wchar_t> text(L"replaced");
    time.GetIsoDate(text, true);
    EXPECT_EQ(text, L"2009-03-07");
    time.GetIsoTime(text, true);
    EXPECT_EQ(text, L"13:05:09 Z");
    time.GetIsoString(text, true);
    EXPECT_EQ(text, L"2009-03-07 13:05:09 Z");
    TString<char> bytes("replaced");
    time.GetIsoString(bytes, true);
    EXPECT_EQ(bytes, "2009-03-07 13:05:09 Z");
}

TEST_P(DateTimeTest, UtcTextIsThatOfACopyMadeToUtc)
{
    for (int month = 1; month <= 12; ++month)
    {
        const DateTime time(2009, static_cast<unsigned int>(month), 7, 23, 5, 9, 0);
        DateTime shifted(time);
        EXPECT_EQ(Iso(time, true), Iso(shifted.MakeToUTC(), false) + L" Z");
    }
}

TEST_P(DateTimeTest, WritesYearsWithAtLeastTwoDigits)
{
    const struct
    {
        unsigned int year;
        const wchar_t* iso;
        const wchar_t* sortable;
    } rows[] = {
        {0, L"00-03-07 14:05:09", L"000307140509"},
        {7, L"07-03-07 14:05:09", L"070307140509"},
        {99, L"99-03-07 14:05:09", L"990307140509"},
        {100, L"100-03-07 14:05:09", L"1000307140509"},
        {999, L"999-03-07 14:05:09", L"9990307140509"},
        {1000, L"1000-03-07 14:05:09", L"10000307140509"},
        {9999, L"9999-03-07 14:05:09", L"99990307140509"},
        {10000, L"10000-03-07 14:05:09", L"100000307140509"},
        {292278993, L"292278993-03-07 14:05:09", L"2922789930307140509"},
    };
    for (const auto& row : rows)
    {
        const DateTime time(row.year, 3, 7, 14, 5, 9);
        EXPECT_EQ(Iso(time), row.iso);
        EXPECT_EQ(Parsed(row.iso), time);
        TString<wchar_t> text;
        time.GetSortableString(text);
        EXPECT_EQ(text, row.sortable);
    }
    EXPECT_EQ(Iso(Earlier(DateTime(2009, 3, 7, 14, 5, 9), {2014, 0, 0, 0})), L"-5-03-07 14:05:09");
    EXPECT_EQ(Iso(Parsed(L"-5-03-07 14:05:09")), L"-5-03-07 14:05:09");
    EXPECT_EQ(Iso(Parsed(L"-2500-03-07 14:05:09")), L"-2500-03-07 14:05:09");
}

TEST_P(DateTimeTest, WritesAndReadsNumbersInTheClassicLocale)
{
    const ToolkitTest::GroupedDigits grouped;
    const DateTime time(12009, 3, 7, 14, 5, 9);
    EXPECT_EQ(Iso(time), L"12009-03-07 14:05:09");
    EXPECT_EQ(Parsed(L"12009-03-07 14:05:09"), time);
    // The comma is what stands between two numbers.
    EXPECT_EQ(Parsed(L"12,009-03-07 14:05:09"), DateTime(12, 9, 3, 7, 14, 5));
    EXPECT_EQ(time.IntToUString(1234567, 9), L"001234567");
}

TEST_P(DateTimeTest, WritesNumbersFilledWithZeros)
{
    const struct
    {
        int value;
        int width;
        const wchar_t* text;
    } rows[] = {
        {5, 2, L"05"},
        {15, 2, L"15"},
        {115, 2, L"115"},
        {5, 1, L"5"},
        {0, 0, L"0"},
        {0, 3, L"000"},
        {5, -3, L"5"},
        {-5, 4, L"00-5"},
        {-5, 2, L"-5"},
        {-5, 1, L"-5"},
        {2009, 8, L"00002009"},
        {std::numeric_limits<int>::min(), 13, L"00-2147483648"},
        {std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), L"2147483647"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Invalid().IntToUString(row.value, row.width), row.text);
    EXPECT_EQ(Invalid().IntToUString(7, 100000), std::wstring(99999, L'0') + L"7");
}

TEST_P(DateTimeTest, ReadsWhatItWrites)
{
    std::mt19937_64 random(20090307);
    // 1900 to 2100.
    std::uniform_int_distribution<std::int64_t> instants(-2208988800, 4102444800);
    for (int i = 0; i < 2000; ++i)
    {
        const DateTime time = At(instants(random));
        EXPECT_EQ(Parsed(Iso(time, true)), time);
        // Of two instants with the same local time the first is read.
        const DateTime local = Parsed(Iso(time));
        EXPECT_EQ(Iso(local), Iso(time));
        EXPECT_TRUE(local <= time);
        TString<char> bytes;
        time.GetIsoString(bytes, true);
        DateTime fromBytes;
        EXPECT_TRUE(fromBytes.ParseIsoString(bytes));
        EXPECT_EQ(fromBytes, time);
    }
}

TEST_P(DateTimeTest, ReadsIsoTexts)
{
    const DateTime local(2009, 3, 7, 14, 5, 9);
    const DateTime utc(2009, 3, 7, 14, 5, 9, 0);
    const struct
    {
        const wchar_t* text;
        DateTime time;
    } rows[] = {
        {L"2009-03-07 14:05:09", local},
        {L"2009-03-07 14:05:09 Z", utc},
        // What stands between the numbers does not matter.
        {L"2009/03/07T14.05.09", local},
        {L"2009x03x07x14x05x09xZ", utc},
        {L"2009 03 07 14 05 09 Z", utc},
        {L"2009-3-7 14:5:9", local},
        {L"002009-0003-007 014:005:0009", local},
        // White space in front of a number, and of the zone.
        {L" \t\n\v\f\r2009- 03-\t07  14: 05:\n09", local},
        {L"2009-03-07 14:05:09   Z", utc},
        {L"2009-03-07 14:05:09x\tZ", utc},
        // Signs.
        {L"+2009-+03-+7 +14:+5:+9", local},
        // What is behind the time, or another zone, changes nothing.
        {L"2009-03-07 14:05:09 Zulu", utc},
        {L"2009-03-07 14:05:09 z", local},
        {L"2009-03-07 14:05:09 +01:00", local},
        {L"2009-03-07 14:05:09.123", local},
        {L"2009-03-07 14:05:09 x Z", local},
        {L"2009-03-07 14:05:09 ", local},
        {L"2009-03-07 14:05:09Z", local},
        {L"2009-03-07T14:05:09Z", local},
        {L"2009-03-07 14:05:09ZZ", utc},
        // Seconds that begin with no number.
        {L"2009-03-07 14:05:x9", DateTime(2009, 3, 7, 14, 5, 0)},
        {L"2009-03-07 14:05:-Z Z", DateTime(2009, 3, 7, 14, 5, 0)},
        {L"2009-03-07 14:05:-0", DateTime(2009, 3, 7, 14, 5, 0)},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Parsed(row.text), row.time) << testing::PrintToString(row.text);
        DateTime fromBytes = Invalid();
        const std::wstring text(row.text);
        EXPECT_TRUE(fromBytes.ParseIsoString(TString<char>(std::string(text.begin(), text.end()))));
        EXPECT_EQ(fromBytes, row.time) << testing::PrintToString(row.text);
    }
}

TEST_P(DateTimeTest, ReadsLocalTimeWhereTheZFollowsTheSecondsAtOnce)
{
    EXPECT_EQ(Parsed(L"2009-03-07 12:00:00Z"), DateTime(2009, 3, 7, 12, 0, 0));
}

TEST_P(DateTimeTest, ReadsSecondsWithoutANumberAsZero)
{
    EXPECT_EQ(Parsed(L"2009-03-07 14:05:x"), DateTime(2009, 3, 7, 14, 5, 0));
    EXPECT_EQ(Parsed(L"2009-03-07 14:05:"), Invalid());
}

TEST_P(DateTimeTest, IsInvalidAfterATextWithoutATime)
{
    const wchar_t* const texts[] = {
        L"",
        L" ",
        L"Z",
        L"x",
        L"2009-03-07",
        L"2009-03-07 ",
        L"2009-03-07 14",
        L"2009-03-07 14:05",
        L"2009-03-07 14:05:",
        L"2009-03-07 14:05: ",
        L"2009--03-07 14:05:09",
        L"-2009-03-07",
        L"x009-03-07 14:05:09",
        L"2009-x-07 14:05:09",
        L"2009-03-07 14:xx:09",
        L"2009-00-07 14:05:09",
        L"2009-13-07 14:05:09",
        L"2009-02-29 14:05:09",
        L"2009-03-00 14:05:09",
        L"2009-03-32 14:05:09",
        L"2009-03-65543 14:05:09",
        L"2009-03-07 24:05:09",
        L"2009-03-07 65550:05:09",
        L"2009-03-07 -1:05:09",
        L"2009-03-07 14:60:09",
        L"2009-03-07 14:-5:09",
        L"2009-03-07 14:05:62",
        L"2009-03-07 14:05:-9",
        L"2009-03-07 14:05:99999999999999999999",
        L"99999999999-03-07 14:05:09",
        L"-99999999999-03-07 14:05:09",
        L"2147483647-03-07 14:05:09",
        L"-2147483648-03-07 14:05:09",
        L"2009-99999999999-07 14:05:09",
        L"20090307140509",
        L"\u0662009-03-07 14:05:09",
        L"\u00A02009-03-07 14:05:09",
    };
    for (const wchar_t* const text : texts)
    {
        DateTime time(2009, 3, 7, 14, 5, 9);
        EXPECT_FALSE(time.ParseIsoString(TString<wchar_t>(text))) << testing::PrintToString(text);
        ExpectAllZero(time);
    }
}

TEST_P(DateTimeTest, ReadsTextsWithZerosAndBrokenBytes)
{
    const std::wstring zero(1, L'\0');
    EXPECT_EQ(Parsed(L"2009" + zero + L"03" + zero + L"07 14:05:09"), DateTime(2009, 3, 7, 14, 5, 9));
    EXPECT_EQ(Parsed(L"2009-03-07 14:05:" + zero), DateTime(2009, 3, 7, 14, 5, 0));
    DateTime time;
    // The conversion from UTF-8 ends at a zero, and gives nothing for what is no UTF-8.
    EXPECT_TRUE(time.ParseIsoString(TString<char>(std::string("2009-03-07 14:05:09\0 Z", 22))));
    EXPECT_EQ(time, DateTime(2009, 3, 7, 14, 5, 9));
    EXPECT_FALSE(time.ParseIsoString(TString<char>("2009-03-07\xFF"
                                                   "14:05:09")));
    ExpectAllZero(time);
    EXPECT_TRUE(time.ParseIsoString(TString<char>("2009-03-07\xC2\xA0"
                                                  "14:05:09")));
    EXPECT_EQ(time, DateTime(2009, 3, 7, 14, 5, 9));
}
