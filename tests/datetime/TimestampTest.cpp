// SPDX-License-Identifier: MIT
#include "toolkit/datetime/Timestamp.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <system_error>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/DateTimes.h"
#include "tests/support/LocalZone.h"
#include "toolkit/datetime/DateTime.h"

using std::chrono::nanoseconds;
using std::chrono::seconds;
using Toolkit::DateTime;
using Toolkit::Errc;
using Toolkit::Result;
using Toolkit::Timestamp;
using ToolkitTest::At;
using ToolkitTest::LocalZone;

namespace
{

using TimePoint = std::chrono::system_clock::time_point;

Timestamp FromNanoseconds(std::int64_t count)
{
    return TimePoint(std::chrono::duration_cast<TimePoint::duration>(nanoseconds(count)));
}

std::int64_t ToNanoseconds(TimePoint time)
{
    return nanoseconds(time.time_since_epoch()).count();
}

Timestamp FromSeconds(std::int64_t count)
{
    return std::chrono::system_clock::from_time_t(count);
}

const std::int64_t s_nFirst = std::numeric_limits<std::int64_t>::min();
const std::int64_t s_nLast = std::numeric_limits<std::int64_t>::max();

} // namespace

TEST(Timestamp, ConvertsToAndFromTimePointsByItself)
{
    static_assert(std::is_convertible_v<TimePoint, Timestamp>);
    static_assert(std::is_convertible_v<Timestamp, TimePoint>);
    static_assert(std::is_trivially_copyable_v<Timestamp>);
    const TimePoint now = std::chrono::system_clock::now();
    const Timestamp stamp = now;
    const TimePoint again = stamp;
    EXPECT_TRUE(again == now);
    EXPECT_TRUE(stamp == now);
    EXPECT_TRUE(now == stamp);
    EXPECT_TRUE(Timestamp() == TimePoint());
}

TEST(Timestamp, ComparesByTheMoment)
{
    const Timestamp earlier = FromNanoseconds(-1);
    const Timestamp later = FromNanoseconds(1);
    EXPECT_TRUE(earlier < later && earlier <= later && later > earlier && later >= earlier);
    EXPECT_TRUE(earlier != later && earlier == earlier && earlier <= earlier && earlier >= earlier);
    EXPECT_FALSE(later < earlier || later <= earlier || earlier > later || earlier >= later);
    EXPECT_FALSE(earlier == later || earlier != earlier || earlier < earlier || earlier > earlier);
}

TEST(Timestamp, ReadsWhatRfc3339Has)
{
    const struct
    {
        const char* text;
        const char* utc;
    } rows[] = {
        {"1985-04-12T23:20:50.52Z", "1985-04-12T23:20:50.520Z"},
        {"1996-12-19T16:39:57-08:00", "1996-12-20T00:39:57Z"},
        {"1990-12-31T23:59:60Z", "1991-01-01T00:00:00Z"},
        {"1990-12-31T15:59:60-08:00", "1991-01-01T00:00:00Z"},
        {"1937-01-01T12:00:27.87+00:20", "1937-01-01T11:40:27.870Z"},
        {"2026-03-02T14:05:09.250+05:00", "2026-03-02T09:05:09.250Z"},
        {"2026-03-02t14:05:09z", "2026-03-02T14:05:09Z"},
        {"2026-03-02T14:05:09-00:00", "2026-03-02T14:05:09Z"},
        {"2026-03-02T14:05:09+00:00", "2026-03-02T14:05:09Z"},
        {"2026-03-02T14:05:09+23:59", "2026-03-01T14:06:09Z"},
        {"2026-03-02T14:05:09-23:59", "2026-03-03T14:04:09Z"},
        {"2026-03-02T00:00:00Z", "2026-03-02T00:00:00Z"},
        {"2026-03-02T23:59:59.999999999Z", "2026-03-02T23:59:59.999999999Z"},
        {"2024-02-29T12:00:00Z", "2024-02-29T12:00:00Z"},
        {"2000-02-29T12:00:00Z", "2000-02-29T12:00:00Z"},
        {"1969-12-31T23:59:59.9Z", "1969-12-31T23:59:59.900Z"},
        {"2016-12-31T23:59:60.5Z", "2017-01-01T00:00:00.500Z"},
        {"2017-01-01T05:29:60+05:30", "2017-01-01T00:00:00Z"},
        {"1969-12-31T23:59:60Z", "1970-01-01T00:00:00Z"},
        {"1968-06-30T23:59:60Z", "1968-07-01T00:00:00Z"},
    };
    for (const auto& row : rows)
    {
        const Result<Timestamp> read = Timestamp::Parse(row.text);
        ASSERT_TRUE(read) << row.text << ": " << read.error().Message();
        EXPECT_EQ(read->ToRfc3339(), row.utc) << row.text;
    }
}

TEST(Timestamp, ReadsOneToNineDigitsOfASecond)
{
    const std::string digits = "123456789";
    std::int64_t nanosecond = 0;
    for (int count = 1; count <= 9; ++count)
    {
        std::int64_t unit = 1;
        for (int i = count; i < 9; ++i)
            unit *= 10;
        nanosecond += (digits[static_cast<std::size_t>(count) - 1] - '0') * unit;
        const auto read = Timestamp::Parse("1970-01-01T00:00:01." +
                                           digits.substr(0, static_cast<std::size_t>(count)) + "Z");
        ASSERT_TRUE(read);
        EXPECT_EQ(ToNanoseconds(*read), 1000000000 + nanosecond) << count;
    }
}

TEST(Timestamp, RefusesEachMalformedFormWithItsReason)
{
    const struct
    {
        const char* text;
        const char* reason;
    } rows[] = {
        {"", "year"},
        {" 2026-03-02T14:05:09Z", "year"},
        {"26-03-02T14:05:09Z", "year"},
        {"+2026-03-02T14:05:09Z", "year"},
        {"-026-03-02T14:05:09Z", "year"},
        {"12026-03-02T14:05:09Z", "year"},
        {"2026/03/02T14:05:09Z", "year"},
        {"20260302T140509Z", "year"},
        {"2026", "year"},
        {"2026-3-02T14:05:09Z", "month"},
        {"2026-00-02T14:05:09Z", "month"},
        {"2026-13-02T14:05:09Z", "month"},
        {"2026-Mar-02T14:05:09Z", "month"},
        {"2026-03", "month"},
        {"2026-03-2T14:05:09Z", "day"},
        {"2026-03-00T14:05:09Z", "day"},
        {"2026-03-32T14:05:09Z", "day"},
        {"2026-04-31T14:05:09Z", "day"},
        {"2026-02-29T14:05:09Z", "day"},
        {"1900-02-29T14:05:09Z", "day"},
        {"2024-02-30T14:05:09Z", "day"},
        {"2026-03-02", "\"T\""},
        {"2026-03-02 14:05:09Z", "\"T\""},
        {"2026-03-02_14:05:09Z", "\"T\""},
        {"2026-03-02T", "hour"},
        {"2026-03-02T4:05:09Z", "hour"},
        {"2026-03-02T24:00:00Z", "hour"},
        {"2026-03-02T14.05.09Z", "hour"},
        {"2026-03-02T14Z", "hour"},
        {"2026-03-02T-1:05:09Z", "hour"},
        {"2026-03-02T14:60:09Z", "minute"},
        {"2026-03-02T14:5:09Z", "minute"},
        {"2026-03-02T14:05Z", "minute"},
        {"2026-03-02T14:05:61Z", "second"},
        {"2026-03-02T14:05:9Z", "second"},
        {"2026-03-02T14:05:", "second"},
        {"2026-03-02T14:05:60Z", "60"},
        {"2026-03-02T23:59:60Z", "60"},
        {"2016-12-31T23:58:60Z", "60"},
        {"2016-12-31T23:59:60+01:00", "60"},
        {"2026-03-02T14:05:09.Z", "fraction"},
        {"2026-03-02T14:05:09.", "fraction"},
        {"2026-03-02T14:05:09.1234567890Z", "fraction"},
        {"2026-03-02T14:05:09,5Z", "offset"},
        {"2026-03-02T14:05:09", "offset"},
        {"2026-03-02T14:05:09.5", "offset"},
        {"2026-03-02T14:05:09 Z", "offset"},
        {"2026-03-02T14:05:09+01", "offset"},
        {"2026-03-02T14:05:09+0100", "offset"},
        {"2026-03-02T14:05:09+1:00", "offset"},
        {"2026-03-02T14:05:09+24:00", "offset"},
        {"2026-03-02T14:05:09+01:60", "offset"},
        {"2026-03-02T14:05:09+", "offset"},
        {"2026-03-02T14:05:09UTC", "offset"},
        {"2026-03-02T14:05:09Zulu", "follows"},
        {"2026-03-02T14:05:09Z ", "follows"},
        {"2026-03-02T14:05:09+01:00Z", "follows"},
        {"\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA6-03-02T14:05:09Z", "year"},
    };
    for (const auto& row : rows)
    {
        const Result<Timestamp> read = Timestamp::Parse(row.text);
        ASSERT_FALSE(read) << row.text;
        EXPECT_EQ(read.error().Code(), Errc::Malformed) << row.text;
        EXPECT_NE(read.error().Message().find(row.reason), std::string::npos)
            << row.text << ": " << read.error().Message();
    }
}

TEST(Timestamp, RefusesEveryTextThatIsCutShortOrHasOneByteChanged)
{
    const std::string good = "2026-03-02T14:05:09.250+05:00";
    for (std::size_t length = 0; length < good.size(); ++length)
        EXPECT_FALSE(Timestamp::Parse(good.substr(0, length))) << length;
    for (std::size_t i = 0; i < good.size(); ++i)
        for (const char bad : {'\0', ' ', 'x', '/', '\xFF'})
        {
            std::string text = good;
            text[i] = bad;
            EXPECT_FALSE(Timestamp::Parse(text)) << i;
        }
    EXPECT_FALSE(Timestamp::Parse(good + std::string(1, '\0')));
}

TEST(Timestamp, SaysWhatItWasGivenInAsciiAndNotAllOfIt)
{
    EXPECT_EQ(Timestamp::Parse("gr\xC3\xBC\xC3\x9F"
                               "e\n")
                  .error()
                  .Message(),
              "cannot read the timestamp \"gr????e?\": the year is not four digits with a \"-\" after them");
    const std::string message = Timestamp::Parse(std::string(1000000, 'x')).error().Message();
    EXPECT_EQ(message.substr(0, 90), "cannot read the timestamp \"" + std::string(60, 'x') + "...");
    EXPECT_EQ(Timestamp::ParseMail("today").error().Message(),
              "cannot read the date of a mail \"today\": it begins with a name that is none of a day");
}

TEST(Timestamp, ReadsAndWritesEveryMomentOfTheClock)
{
    const struct
    {
        std::int64_t count;
        const char* text;
    } rows[] = {
        {s_nFirst, "1677-09-21T00:12:43.145224192Z"}, {s_nFirst + 1, "1677-09-21T00:12:43.145224193Z"},
        {-1, "1969-12-31T23:59:59.999999999Z"},       {0, "1970-01-01T00:00:00Z"},
        {1, "1970-01-01T00:00:00.000000001Z"},        {s_nLast, "2262-04-11T23:47:16.854775807Z"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(FromNanoseconds(row.count).ToRfc3339(), row.text);
        const auto read = Timestamp::Parse(row.text);
        ASSERT_TRUE(read) << read.error().Message();
        EXPECT_EQ(ToNanoseconds(*read), row.count);
    }
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i)
    {
        const auto count = static_cast<std::int64_t>(random());
        const auto read = Timestamp::Parse(FromNanoseconds(count).ToRfc3339());
        ASSERT_TRUE(read && ToNanoseconds(*read) == count) << count;
    }
}

TEST(Timestamp, WritesTheCLibrarysUtcOfEveryDay)
{
    for (std::int64_t day = -106750; day <= 106750; ++day)
    {
        const std::time_t second = day * 86400 + (day * 7919) % 43200;
        std::tm utc = {};
        gmtime_r(&second, &utc);
        char text[32];
        std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &utc);
        const Timestamp time = FromSeconds(second);
        ASSERT_EQ(time.ToRfc3339(), text);
        ASSERT_EQ(time.UtcFields().weekday, utc.tm_wday) << text;
        ASSERT_TRUE(*Timestamp::Parse(text) == time) << text;
    }
}

TEST(Timestamp, RefusesWhatIsTooFarAway)
{
    for (const char* const text :
         {"0000-01-01T00:00:00Z", "0001-01-01T00:00:00Z", "1600-01-01T00:00:00Z", "9999-12-31T23:59:59Z",
          "1677-09-21T00:12:43.145224191Z", "1677-09-21T00:12:42Z", "2262-04-11T23:47:16.854775808Z",
          "2262-04-11T23:47:17Z", "2262-04-12T00:47:16.854775807+00:59"})
    {
        const Result<Timestamp> read = Timestamp::Parse(text);
        ASSERT_FALSE(read) << text;
        EXPECT_EQ(read.error().Code(), std::errc::result_out_of_range) << text;
    }
    EXPECT_EQ(Timestamp::ParseMail("1 Jan 999999999 00:00 Z").error().Code(), std::errc::result_out_of_range);
    EXPECT_EQ(Timestamp::ParseMail("1 Jan 1600 00:00 Z").error().Code(), std::errc::result_out_of_range);
}

TEST(Timestamp, WritesAsManyDigitsOfASecondAsAreAskedFor)
{
    const Timestamp time = *Timestamp::Parse("2026-03-02T14:05:09.987654321Z");
    const char* const fractions[] = {"",       ".9",      ".98",      ".987",      ".9876",
                                     ".98765", ".987654", ".9876543", ".98765432", ".987654321"};
    for (int digits = 0; digits < 10; ++digits)
        EXPECT_EQ(time.ToRfc3339(Timestamp::Zone::Utc, digits),
                  std::string("2026-03-02T14:05:09") + fractions[digits] + "Z");
    EXPECT_EQ(time.ToRfc3339(Timestamp::Zone::Utc, -1), "2026-03-02T14:05:09Z");
    EXPECT_EQ(time.ToRfc3339(Timestamp::Zone::Utc, 1000), "2026-03-02T14:05:09.987654321Z");
    EXPECT_EQ(FromNanoseconds(-1).ToRfc3339(Timestamp::Zone::Utc, 0), "1969-12-31T23:59:59Z");
    EXPECT_EQ(Timestamp().ToRfc3339(Timestamp::Zone::Utc, 3), "1970-01-01T00:00:00.000Z");
}

TEST(Timestamp, WritesAsFewGroupsOfThreeDigitsAsHoldTheSecond)
{
    EXPECT_EQ(FromNanoseconds(2000000000).ToRfc3339(), "1970-01-01T00:00:02Z");
    EXPECT_EQ(FromNanoseconds(500000000).ToRfc3339(), "1970-01-01T00:00:00.500Z");
    EXPECT_EQ(FromNanoseconds(1000000).ToRfc3339(), "1970-01-01T00:00:00.001Z");
    EXPECT_EQ(FromNanoseconds(1000).ToRfc3339(), "1970-01-01T00:00:00.000001Z");
    EXPECT_EQ(FromNanoseconds(10).ToRfc3339(), "1970-01-01T00:00:00.000000010Z");
}

TEST(Timestamp, WritesTheLocalTimeWithItsOffset)
{
    const Timestamp time = *Timestamp::Parse("2026-07-02T14:05:09.250Z");
    const struct
    {
        const char* zone;
        const char* text;
    } rows[] = {
        {"UTC", "2026-07-02T14:05:09.250+00:00"},
        {"Europe/Berlin", "2026-07-02T16:05:09.250+02:00"},
        {"America/St_Johns", "2026-07-02T11:35:09.250-02:30"},
        {"Asia/Kathmandu", "2026-07-02T19:50:09.250+05:45"},
        {"Pacific/Kiritimati", "2026-07-03T04:05:09.250+14:00"},
    };
    for (const auto& row : rows)
    {
        const LocalZone zone(row.zone);
        EXPECT_EQ(time.ToRfc3339(Timestamp::Zone::Local), row.text);
        EXPECT_EQ(time.ToRfc3339(Timestamp::Zone::Local, 3), row.text);
        EXPECT_TRUE(*Timestamp::Parse(row.text) == time);
    }
}

// The example is the RFC's own: Dutch clocks were 19 minutes and 32 seconds ahead.
TEST(Timestamp, WritesAnOffsetOfSecondsAsTheNearestMinutesAndTheTimeThatBelongsToThem)
{
    const LocalZone zone("XNT-0:19:32");
    const Timestamp noon = *Timestamp::Parse("1937-01-01T11:40:28Z");
    EXPECT_EQ(noon.ToRfc3339(Timestamp::Zone::Local), "1937-01-01T12:00:28+00:20");
    EXPECT_EQ(noon.LocalFields().hour, 12);
    EXPECT_EQ(noon.LocalFields().minute, 0);
    EXPECT_EQ(noon.LocalFields().second, 0);
    EXPECT_EQ(noon.LocalFields().offset, seconds(19 * 60 + 32));
    const LocalZone behind("XMT+0:44:31");
    EXPECT_EQ(Timestamp().ToRfc3339(Timestamp::Zone::Local), "1969-12-31T23:15:00-00:45");
}

TEST(Timestamp, HasTheFieldsOfUtcAndOfTheLocalZone)
{
    const LocalZone zone("America/New_York");
    const Timestamp time = *Timestamp::Parse("2026-03-02T02:05:09.000000250Z");
    const Timestamp::Fields utc = time.UtcFields();
    EXPECT_EQ(utc.year, 2026);
    EXPECT_EQ(utc.month, 3);
    EXPECT_EQ(utc.day, 2);
    EXPECT_EQ(utc.hour, 2);
    EXPECT_EQ(utc.minute, 5);
    EXPECT_EQ(utc.second, 9);
    EXPECT_EQ(utc.nanosecond, 250);
    EXPECT_EQ(utc.weekday, 1);
    EXPECT_EQ(utc.offset, seconds(0));
    const Timestamp::Fields local = time.LocalFields();
    EXPECT_EQ(local.year, 2026);
    EXPECT_EQ(local.month, 3);
    EXPECT_EQ(local.day, 1);
    EXPECT_EQ(local.hour, 21);
    EXPECT_EQ(local.minute, 5);
    EXPECT_EQ(local.second, 9);
    EXPECT_EQ(local.nanosecond, 250);
    EXPECT_EQ(local.weekday, 0);
    EXPECT_EQ(local.offset, seconds(-5 * 3600));
    const Timestamp::Fields epoch;
    EXPECT_EQ(Timestamp().UtcFields().weekday, epoch.weekday);
}

TEST(Timestamp, ConvertsToAndFromDateTime)
{
    for (const std::int64_t second : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1772460309},
                                      std::int64_t{-9223372036}, std::int64_t{9223372036}})
    {
        const auto time = Timestamp::FromDateTime(At(second));
        ASSERT_TRUE(time) << time.error().Message();
        EXPECT_TRUE(*time == FromSeconds(second));
        EXPECT_EQ(time->ToDateTime(), At(second));
    }
    EXPECT_EQ(FromNanoseconds(1999999999).ToDateTime(), At(1));
    EXPECT_EQ(FromNanoseconds(-1).ToDateTime(), At(-1));
    EXPECT_EQ(FromNanoseconds(s_nFirst).ToDateTime(), At(-9223372037));
    EXPECT_EQ(FromNanoseconds(s_nLast).ToDateTime(), At(9223372036));
}

TEST(Timestamp, RefusesADateTimeThatIsInvalidOrTooFarAway)
{
    const auto invalid = Timestamp::FromDateTime(DateTime(2026, 13, 1, 0, 0, 0));
    ASSERT_FALSE(invalid);
    EXPECT_EQ(invalid.error().Code(), std::errc::invalid_argument);
    for (const std::int64_t second :
         {std::int64_t{9223372037}, std::int64_t{-9223372037}, std::int64_t{9000000000000}})
    {
        const auto time = Timestamp::FromDateTime(At(second));
        ASSERT_FALSE(time) << second;
        EXPECT_EQ(time.error().Code(), std::errc::result_out_of_range);
    }
}

TEST(Timestamp, IsReadAndWrittenByManyThreadsAtOnce)
{
    const LocalZone zone("Europe/Berlin");
    const Timestamp time = *Timestamp::Parse("2026-07-02T14:05:09.250Z");
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (int& count : wrong)
        threads.emplace_back(
            [&time, &count]
            {
                for (int i = 0; i < 500; ++i)
                {
                    count += time.ToRfc3339(Timestamp::Zone::Local) != "2026-07-02T16:05:09.250+02:00";
                    count += time.LocalFields().hour != 16;
                    count += !(*Timestamp::ParseMail("Thu, 2 Jul 2026 16:05:09 +0200") < time);
                    count +=
                        i % 100 == 0 && time.Format(Timestamp::Style::Short, "de_DE") != "02.07.26, 16:05";
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}
