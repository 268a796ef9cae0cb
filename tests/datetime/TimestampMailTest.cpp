// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "toolkit/datetime/Timestamp.h"

// The dates of mails.

using Toolkit::Errc;
using Toolkit::Result;
using Toolkit::Timestamp;

TEST(TimestampMail, ReadsWhatMailsHave)
{
    const struct
    {
        const char* text;
        const char* utc;
    } rows[] = {
        {"Mon, 2 Mar 2026 14:05:09 +0100", "2026-03-02T13:05:09Z"},
        {"Mon, 02 Mar 2026 14:05:09 -0530", "2026-03-02T19:35:09Z"},
        {"Mon, 2 Mar 2026 14:05:09 -0000", "2026-03-02T14:05:09Z"},
        {"2 Mar 2026 14:05:09 +0000", "2026-03-02T14:05:09Z"},
        {"2 Mar 2026 14:05 +0000", "2026-03-02T14:05:00Z"},
        {"Mon, 2 Mar 2026 4:05 +0000", "2026-03-02T04:05:00Z"},
        // The RFC's own examples, of its obsolete forms too.
        {"Fri, 21 Nov 1997 09:55:06 -0600", "1997-11-21T15:55:06Z"},
        {"Thu, 13 Feb 1969 23:32:54 -0330", "1969-02-14T03:02:54Z"},
        {"Thu,\r\n      13\r\n        Feb\r\n          1969\r\n      23:32\r\n               -0330 "
         "(Newfoundland "
         "Time)",
         "1969-02-14T03:02:00Z"},
        {"21 Nov 97 09:55:06 GMT", "1997-11-21T09:55:06Z"},
        {"Fri, 21 Nov 1997 09(comment):   55  :  06 -0600", "1997-11-21T15:55:06Z"},
        // Names: short, written out, of any case, wrong ones of a day.
        {"mon, 2 mar 2026 14:05:09 gmt", "2026-03-02T14:05:09Z"},
        {"MONDAY, 2 MARCH 2026 14:05:09 GMT", "2026-03-02T14:05:09Z"},
        {"Tues, 2 Sept 2025 14:05:09 GMT", "2025-09-02T14:05:09Z"},
        {"Fri, 2 Mar 2026 14:05:09 GMT", "2026-03-02T14:05:09Z"},
        {"Mon 2 Mar 2026 14:05:09 GMT", "2026-03-02T14:05:09Z"},
        {"Mon., 2 Mar. 2026 14:05:09 GMT", "2026-03-02T14:05:09Z"},
        {"Mon,2 Mar 2026 14:05:09 GMT", "2026-03-02T14:05:09Z"},
        {"Monday, 02-Mar-26 14:05:09 GMT", "2026-03-02T14:05:09Z"},
        // Numbers with points, as some programs write them.
        {"Mon, 2 Mar 2026 14.05.09 +0100", "2026-03-02T13:05:09Z"},
        {"Mon, 2 Mar 2026 14:05:09+0100", "2026-03-02T13:05:09Z"},
        {"Mon, 2 Mar 2026 14:05:09-0100", "2026-03-02T15:05:09Z"},
        {"Mon, 2 Mar 2026 14:05:09 +01:00", "2026-03-02T13:05:09Z"},
        // Years of two and three digits.
        {"2 Mar 00 14:05 Z", "2000-03-02T14:05:00Z"},
        {"2 Mar 49 14:05 Z", "2049-03-02T14:05:00Z"},
        {"2 Mar 50 14:05 Z", "1950-03-02T14:05:00Z"},
        {"2 Mar 99 14:05 Z", "1999-03-02T14:05:00Z"},
        {"2 Mar 126 14:05 Z", "2026-03-02T14:05:00Z"},
        {"29 Feb 00 14:05 Z", "2000-02-29T14:05:00Z"},
        // Zones with names.
        {"2 Mar 2026 14:05:09 UT", "2026-03-02T14:05:09Z"},
        {"2 Mar 2026 14:05:09 UTC", "2026-03-02T14:05:09Z"},
        {"2 Mar 2026 14:05:09 EST", "2026-03-02T19:05:09Z"},
        {"2 Mar 2026 14:05:09 EDT", "2026-03-02T18:05:09Z"},
        {"2 Mar 2026 14:05:09 CST", "2026-03-02T20:05:09Z"},
        {"2 Mar 2026 14:05:09 CDT", "2026-03-02T19:05:09Z"},
        {"2 Mar 2026 14:05:09 MST", "2026-03-02T21:05:09Z"},
        {"2 Mar 2026 14:05:09 MDT", "2026-03-02T20:05:09Z"},
        {"2 Mar 2026 14:05:09 PST", "2026-03-02T22:05:09Z"},
        {"2 Mar 2026 14:05:09 pdt", "2026-03-02T21:05:09Z"},
        {"2 Mar 2026 14:05:09 A", "2026-03-02T14:05:09Z"},
        {"2 Mar 2026 14:05:09 z", "2026-03-02T14:05:09Z"},
        {"2 Mar 2026 14:05:09 CEST", "2026-03-02T14:05:09Z"},
        {"2 Mar 2026 14:05:09 EST (nobody's +0100)", "2026-03-02T19:05:09Z"},
        {"2 Mar 2026 14:05:09 +0100 CET", "2026-03-02T13:05:09Z"},
        {"2 Mar 2026 14:05:09 +9959", "2026-02-26T10:06:09Z"},
        // No zone at all.
        {"Mon, 2 Mar 2026 14:05:09", "2026-03-02T14:05:09Z"},
        {"2 Mar 2026 14:05 (UTC, or so)", "2026-03-02T14:05:00Z"},
        // Comments within comments, and what they may hold.
        {"(a (b) \\) \\( c)Mon(,),(d)2(e)Mar(f)2026(g)14(h):(i)05(j):(k)09(l)+0100(m)",
         "2026-03-02T13:05:09Z"},
        {"  Mon, 2 Mar 2026 14:05:09 +0100 (CET)\r\n", "2026-03-02T13:05:09Z"},
        {"\tMon,\t2\tMar\t2026\t14:05:09\t+0100", "2026-03-02T13:05:09Z"},
        // Leap seconds.
        {"Sat, 31 Dec 2016 23:59:60 +0000", "2017-01-01T00:00:00Z"},
    };
    for (const auto& row : rows)
    {
        const Result<Timestamp> read = Timestamp::ParseMail(row.text);
        ASSERT_TRUE(read) << row.text << ": " << read.error().Message();
        EXPECT_EQ(read->ToRfc3339(), row.utc) << row.text;
    }
}

TEST(TimestampMail, RefusesWhatIsNoDate)
{
    const struct
    {
        const char* text;
        const char* reason;
    } rows[] = {
        {"", "day"},
        {"()", "day"},
        {"yesterday", "none of a day"},
        {"Mo, 2 Mar 2026 14:05:09 +0100", "none of a day"},
        {"Mondays, 2 Mar 2026 14:05:09 +0100", "none of a day"},
        {"Mon,, 2 Mar 2026 14:05:09 +0100", "one or two digits"},
        {"2026-03-02T14:05:09Z", "one or two digits"},
        {"002 Mar 2026 14:05:09 +0100", "one or two digits"},
        {"2 Foo 2026 14:05:09 +0100", "month"},
        {"2 Ma 2026 14:05:09 +0100", "month"},
        {"2 03 2026 14:05:09 +0100", "month"},
        {"2", "month"},
        {"2 Mar 6 14:05:09 +0100", "year"},
        {"2 Mar 1234567890 14:05:09 +0100", "year"},
        {"2 Mar", "year"},
        {"0 Mar 2026 14:05:09 +0100", "no such day"},
        {"32 Mar 2026 14:05:09 +0100", "no such day"},
        {"29 Feb 2026 14:05:09 +0100", "no such day"},
        {"2 Mar 2026", "hour"},
        {"2 Mar 2026 24:05:09 +0100", "hour"},
        {"2 Mar 2026 014:05:09 +0100", "hour"},
        {"2 Mar 2026 14 +0100", "minute"},
        {"2 Mar 2026 14:60:09 +0100", "minute"},
        {"2 Mar 2026 14:", "minute"},
        {"2 Mar 2026 14:05: +0100", "second"},
        {"2 Mar 2026 14:05:61 +0100", "second"},
        {"2 Mar 2026 14:05:009 +0100", "second"},
        {"2 Mar 2026 14:05:09 J", "\"J\""},
        {"2 Mar 2026 14:05:09 =0100", "no zone"},
        {"2 Mar 2026 14:05:09 0100", "no zone"},
        {"2 Mar 2026 14:05:09 +010", "offset"},
        {"2 Mar 2026 14:05:09 +01", "offset"},
        {"2 Mar 2026 14:05:09 +1:00", "offset"},
        {"2 Mar 2026 14:05:09 +0160", "offset"},
        {"2 Mar 2026 14:05:09 +01000", "offset"},
        {"2 Mar 2026 14:05:09 +", "offset"},
        {"2 Mar 2026 14:05:09 +0100 5", "follows"},
        {"2 Mar 2026 14:05:09 GMT, or so", "follows"},
        {"2 Mar 2026 14:05:09 +0100 )", "follows"},
        {"2 Mar 2026 14:05:09 +0100 (CET", "comment"},
        {"2 Mar 2026 14:05:09 +0100 (CET\\)", "comment"},
        {"2 Mar 2026 14:05:09 +0100 (CET\\", "comment"},
        {"(", "comment"},
        {"2 (Mar 2026 14:05:09 +0100", "comment"},
        {"2 Mar (2026 14:05:09 +0100", "comment"},
        {"2 Mar 2026 (14:05:09 +0100", "comment"},
        {"2 Mar 2026 14 (:05:09 +0100", "comment"},
        {"2 Mar 2026 14:05 (:09 +0100", "comment"},
        {"Mon (, 2 Mar 2026 14:05:09 +0100", "comment"},
        {"Mon, (2 Mar 2026 14:05:09 +0100", "comment"},
    };
    for (const auto& row : rows)
    {
        const Result<Timestamp> read = Timestamp::ParseMail(row.text);
        ASSERT_FALSE(read) << row.text;
        EXPECT_EQ(read.error().Code(), Errc::Malformed) << row.text;
        EXPECT_NE(read.error().Message().find(row.reason), std::string::npos)
            << row.text << ": " << read.error().Message();
    }
}

TEST(TimestampMail, TakesNulForNothingThatBelongsToADate)
{
    const std::string good = "Mon, 2 Mar 2026 14:05:09 +0100";
    for (std::size_t i = 0; i <= good.size(); ++i)
        EXPECT_FALSE(Timestamp::ParseMail(std::string(good).insert(i, 1, '\0'))) << i;
}

TEST(TimestampMail, EndsWithCommentsOfAnyDepthAndLength)
{
    const std::string good = "Mon, 2 Mar 2026 14:05:09 +0100 ";
    const std::size_t deep = 1000000;
    EXPECT_TRUE(Timestamp::ParseMail(good + std::string(deep, '(') + std::string(deep, ')')));
    EXPECT_FALSE(Timestamp::ParseMail(good + std::string(deep, '(')));
    EXPECT_TRUE(Timestamp::ParseMail(std::string(deep, ' ') + good));
}
