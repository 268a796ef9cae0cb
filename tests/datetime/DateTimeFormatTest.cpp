// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/DateTimeFormat.h"

#include <random>

#include <gtest/gtest.h>

#include "tests/reference/PlainDatePattern.h"

namespace
{

using Toolkit::CivilTime;
namespace DateTimeFormat = Toolkit::DateTimeFormat;
using Text = std::wstring;

const CivilTime s_march = {2009, 3, 7, 14, 5, 9};

CivilTime At(std::int64_t hour, std::int64_t minute)
{
    return {2009, 3, 7, hour, minute, 59};
}

Text Date(const Text& pattern, const CivilTime& time = s_march)
{
    return DateTimeFormat::Date(pattern, time);
}

Text Time(const Text& pattern, const CivilTime& time = s_march, const Text& marker = L"PM")
{
    return DateTimeFormat::Time(pattern, time, marker);
}

} // namespace

TEST(DateTimeFormat, FillsInTheTokensOfADate)
{
    const struct
    {
        const wchar_t* pattern;
        const wchar_t* march;
        const wchar_t* december;
    } rows[] = {
        {L"dd", L"07", L"25"},
        {L"%d", L"07", L"25"},
        {L"d", L"7", L"25"},
        {L"MM", L"03", L"12"},
        {L"%m", L"03", L"12"},
        {L"M", L"03", L"12"},
        {L"yyyy", L"2009", L"1987"},
        {L"%Y", L"2009", L"1987"},
        {L"yy", L"09", L"87"},
        {L"y", L"y", L"y"},
        {L"m", L"m", L"m"},
        {L"Y", L"Y", L"Y"},
        {L"D %", L"D", L"D"},
        {L"", L"", L""},
        {L"%y", L"%y", L"%y"},
        {L"%M", L"%03", L"%12"},
        {L"%%d%%m", L"%07%03", L"%25%12"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Date(row.pattern), row.march) << testing::PrintToString(Text(row.pattern));
        EXPECT_EQ(Date(row.pattern, {1987, 12, 25, 0, 0, 0}), row.december)
            << testing::PrintToString(Text(row.pattern));
    }
}

TEST(DateTimeFormat, FillsInEveryOccurrenceOfADateToken)
{
    EXPECT_EQ(Date(L"dd-dd-d-d-MM-M-MM-yyyy-yy-yyyy"), L"07-07-7-7-03-03-03-2009-09-2009");
    EXPECT_EQ(Date(L"%d%d%m%m%Y%Y"), L"0707030320092009");
}

TEST(DateTimeFormat, TakesTheLongerTokensOfADateFirst)
{
    const struct
    {
        const wchar_t* pattern;
        const wchar_t* text;
    } rows[] = {
        {L"ddd", L"077"},     {L"dddd", L"0707"},   {L"MMM", L"0303"},      {L"MMMM", L"0303"},
        {L"yyy", L"09y"},     {L"yyyyy", L"2009y"}, {L"yyyyyy", L"200909"}, {L"yyyyyyyy", L"20092009"},
        {L"%dd", L"%07"},     {L"%ddd", L"%077"},   {L"%mm", L"03m"},       {L"%YY", L"2009Y"},
        {L"%d%dd", L"07%07"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Date(row.pattern), row.text) << testing::PrintToString(Text(row.pattern));
}

TEST(DateTimeFormat, WritesASingleMonthWithAZeroAndASingleDayWithout)
{
    EXPECT_EQ(Date(L"M/d/yy h:mm a"), L"03/7/09");
    EXPECT_EQ(Date(L"M/d/yy", {2009, 11, 25, 0, 0, 0}), L"11/25/09");
}

TEST(DateTimeFormat, WritesYearsOfAnyLength)
{
    const struct
    {
        std::int64_t year;
        const wchar_t* four;
        const wchar_t* two;
    } rows[] = {
        {2009, L"2009", L"09"}, {2000, L"2000", L"00"},   {1999, L"1999", L"99"},
        {987, L"0987", L"87"},  {5, L"0005", L"05"},      {0, L"0000", L"00"},
        {-5, L"00-5", L"-5"},   {12345, L"12345", L"45"}, {292278994, L"292278994", L"94"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Date(L"yyyy", {row.year, 1, 1, 0, 0, 0}), row.four);
        EXPECT_EQ(Date(L"%Y", {row.year, 1, 1, 0, 0, 0}), row.four);
        EXPECT_EQ(Date(L"yy", {row.year, 1, 1, 0, 0, 0}), row.two);
    }
}

TEST(DateTimeFormat, KeepsWhatStandsBeforeTheFirstSpaceForTheDate)
{
    EXPECT_EQ(Date(L"dd/MM/yyyy HH:mm"), L"07/03/2009");
    EXPECT_EQ(Date(L"dd/MM/yyyy"), L"07/03/2009");
    EXPECT_EQ(Date(L"dd. MM. yyyy HH:mm"), L"07.");
    EXPECT_EQ(Date(L" HH:mm"), L"");
    EXPECT_EQ(Date(L" "), L"");
}

TEST(DateTimeFormat, FillsInTheTokensOfATime)
{
    const struct
    {
        const wchar_t* pattern;
        const wchar_t* at1405;
        const wchar_t* at0930;
    } rows[] = {
        {L"HH", L"14", L"09"},
        {L"H", L"14", L"9"},
        {L"hh", L"02", L"09"},
        {L"h", L"2", L"9"},
        {L"mm", L"05", L"30"},
        {L"m", L"5", L"30"},
        {L":ss", L"", L""},
        {L".ss", L"", L""},
        {L"a", L"", L""},
        {L"tt", L"PM", L"PM"},
        {L"%T", L"14:05", L"09:30"},
        {L"%R", L"14:05", L"09:30"},
        {L"%r", L"14:05", L"09:30"},
        {L"HH:mm:ss", L"14:05", L"09:30"},
        {L"HH.mm.ss", L"14.05", L"09.30"},
        {L"H:m", L"14:5", L"9:30"},
        {L"s", L"s", L"s"},
        {L"ss", L"ss", L"ss"},
        {L"t", L"t", L"t"},
        {L"S", L"S", L"S"},
        {L"%", L"%", L"%"},
        {L"", L"", L""},
        {L"%H:%M", L"%14:%M", L"%9:%M"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Time(row.pattern, At(14, 5)), row.at1405) << testing::PrintToString(Text(row.pattern));
        EXPECT_EQ(Time(row.pattern, At(9, 30)), row.at0930) << testing::PrintToString(Text(row.pattern));
    }
}

TEST(DateTimeFormat, FillsInEveryOccurrenceOfATimeToken)
{
    EXPECT_EQ(Time(L"x HH H HH H mm m mm"), L"14 14 14 14 05 5 05");
}

TEST(DateTimeFormat, NeverShowsSeconds)
{
    EXPECT_EQ(Time(L"HH:mm:ss"), L"14:05");
    EXPECT_EQ(Time(L"HH.mm.ss"), L"14.05");
    EXPECT_EQ(Time(L"h:mm:ss a", s_march, L"PM").find(L"s"), Text::npos);
    EXPECT_EQ(Time(L"dd/MM/yyyy %T"), L"14:05");
}

TEST(DateTimeFormat, ShowsNoMarkerForTheWholeTimeTokens)
{
    EXPECT_EQ(Time(L"dd/MM/yyyy %r"), L"14:05");
    EXPECT_EQ(Time(L"dd/MM/yyyy %R"), L"14:05");
    EXPECT_EQ(Time(L"x %T %R %r", At(0, 7)), L"00:07 00:07 00:07");
    EXPECT_EQ(Time(L"x h %r", At(0, 7)), L"12 12:07");
}

TEST(DateTimeFormat, CountsTheHoursOfHalfADayFromTwelve)
{
    const struct
    {
        int hour;
        const wchar_t* one;
        const wchar_t* two;
    } rows[] = {
        {0, L"12", L"12"},  {1, L"1", L"01"},  {9, L"9", L"09"},   {11, L"11", L"11"},
        {12, L"12", L"12"}, {13, L"1", L"01"}, {22, L"10", L"10"}, {23, L"11", L"11"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Time(L"x h", At(row.hour, 0)), row.one);
        EXPECT_EQ(Time(L"x hh", At(row.hour, 0)), row.two);
        // An hour of the whole day takes part once anything shows half days.
        EXPECT_EQ(Time(L"x H tt", At(row.hour, 0), L"M"), Text(row.one) + L" M");
        EXPECT_EQ(Time(L"x HH h", At(row.hour, 0)), Text(row.two) + L" " + row.one);
    }
}

TEST(DateTimeFormat, CountsTheHoursOfTheWholeDayFromZero)
{
    for (int hour = 0; hour < 24; ++hour)
    {
        EXPECT_EQ(Time(L"x H:mm", At(hour, 0)), std::to_wstring(hour) + L":00");
        EXPECT_EQ(Time(L"x HH:mm", At(hour, 59)), (hour < 10 ? L"0" : L"") + std::to_wstring(hour) + L":59");
    }
}

TEST(DateTimeFormat, PutsTheMarkerWhereThePatternHasIt)
{
    const struct
    {
        const wchar_t* pattern;
        const wchar_t* text;
    } rows[] = {
        {L"M/d/yy h:mm a", L"2:05 PM"},
        {L"M/d/yy a h:mm", L"PM 2:05"},
        {L"M/d/yy ah:mm", L"PM2:05"},
        {L"M/d/yy h:mm tt", L"2:05 PM"},
        {L"M/d/yy tt h:mm", L"PM 2:05"},
        {L"M/d/yy h:mm aa", L"2:05 PMPM"},
        {L"M/d/yy h:mm tttt", L"2:05 PMPM"},
        {L"M/d/yy h:mm ttt", L"2:05 PMt"},
        // With an "a" in it, "tt" is no marker.
        {L"M/d/yy h:mm a tt", L"2:05 PM "},
        {L"a h:mm tt", L"2:05 "},
        {L"M/d/yy H:mm tt", L"2:05 PM"},
        // Without hours of half a day there is none.
        {L"M/d/yy H:mm a", L"14:05 "},
        {L"M/d/yy h:mm", L"2:05"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Time(row.pattern), row.text) << testing::PrintToString(Text(row.pattern));
}

TEST(DateTimeFormat, LeavesAMarkerWhole)
{
    const wchar_t* const markers[] = {L"am",   L"a",     L"aaa",          L"am/pm",  L"tt",
                                      L"h:mm", L"HH mm", L"vorm.",        L":ss",    L"%T",
                                      L" ",    L"a m",   L"\uC624\uD6C4", L"\uE000", L"\uE001a"};
    for (const wchar_t* const marker : markers)
    {
        EXPECT_EQ(Time(L"M/d/yy h:mm a", s_march, marker), L"2:05 " + Text(marker));
        EXPECT_EQ(Time(L"M/d/yy a h:mm", s_march, marker), Text(marker) + L" 2:05");
        EXPECT_EQ(Time(L"M/d/yy tt h:mm", s_march, marker), Text(marker) + L" 2:05");
        EXPECT_EQ(Time(L"a/d h:mm", s_march, marker), L"2:05");
    }
    EXPECT_EQ(Time(L"x h\uE000a", s_march, L"PM"), L"2\uE000PM");
}

TEST(DateTimeFormat, KeepsWhatStandsAfterTheFirstSpaceForTheTime)
{
    EXPECT_EQ(Time(L"dd/MM/yyyy HH:mm"), L"14:05");
    EXPECT_EQ(Time(L"HH:mm"), L"14:05");
    EXPECT_EQ(Time(L"dd/MM/yyyy HH : mm"), L"14 : 05");
    EXPECT_EQ(Time(L"dd. MM. yyyy HH:mm"), L"MM. yyyy 14:05");
    EXPECT_EQ(Time(L"dd/MM/yyyy "), L"");
    EXPECT_EQ(Time(L" "), L"");
    EXPECT_EQ(Time(L"dd/MM/yyyy h:mm a", At(14, 5), L"PM x"), L"2:05 PM x");
}

TEST(DateTimeFormat, KnowsThePatternsOfHalfDays)
{
    for (const wchar_t* const pattern : {L"h", L"hh", L"x h:mm a", L"tt", L"H tt", L"h HH"})
        EXPECT_TRUE(DateTimeFormat::IsHalfDay(Text(pattern)));
    for (const wchar_t* const pattern : {L"", L"H", L"HH:mm", L"a", L"t", L"t t", L"%r", L"K:mm"})
        EXPECT_FALSE(DateTimeFormat::IsHalfDay(Text(pattern)));
}

TEST(DateTimeFormat, FillsZeroesIntoAnInvalidTime)
{
    EXPECT_EQ(Date(L"dd/MM/yyyy HH:mm", CivilTime()), L"00/00/0000");
    EXPECT_EQ(Date(L"M/d/yy h:mm a", CivilTime()), L"00/0/00");
    EXPECT_EQ(Time(L"dd/MM/yyyy HH:mm", CivilTime()), L"00:00");
    EXPECT_EQ(Time(L"M/d/yy h:mm a", CivilTime(), L"AM"), L"12:00 AM");
}

TEST(DateTimeFormat, AgreesWithThePlainFormOnEveryShortPattern)
{
    const Text letters = L"dMmyY%Hhsta:.T ";
    for (std::size_t number = 0; number < 15 * 15 * 15 * 15; ++number)
    {
        Text pattern;
        for (std::size_t rest = number; rest > 0; rest /= 15)
            pattern += letters[rest % 15];
        ASSERT_EQ(Date(pattern), ToolkitTest::PlainDatePattern::Date(pattern, s_march))
            << testing::PrintToString(pattern);
        ASSERT_EQ(Time(pattern), ToolkitTest::PlainDatePattern::Time(pattern, s_march, L"PM"))
            << testing::PrintToString(pattern);
    }
}

TEST(DateTimeFormat, AgreesWithThePlainFormOnRandomPatterns)
{
    const Text letters = L"ddMMmmyyyyY%%HHhhssssttttaa::..TRr  x\u00E4\uE000";
    std::mt19937 random(865);
    for (int i = 0; i < 50000; ++i)
    {
        Text pattern;
        for (auto count = random() % 24; count > 0; --count)
            pattern += letters[random() % letters.size()];
        const CivilTime time = {
            static_cast<std::int64_t>(random() % 12000) - 1000, static_cast<std::int64_t>(random() % 12) + 1,
            static_cast<std::int64_t>(random() % 31) + 1,       static_cast<std::int64_t>(random() % 24),
            static_cast<std::int64_t>(random() % 60),           0};
        ASSERT_EQ(Date(pattern, time), ToolkitTest::PlainDatePattern::Date(pattern, time))
            << testing::PrintToString(pattern);
        ASSERT_EQ(Time(pattern, time), ToolkitTest::PlainDatePattern::Time(pattern, time, L"PM"))
            << testing::PrintToString(pattern);
    }
}

TEST(DateTimeFormat, EndsOnLongPatterns)
{
    const std::size_t size = 100000;
    for (const wchar_t c : Text(L"dMyHhmsat%: x"))
    {
        // No letters but spaces vanish from a date, and none grows.
        EXPECT_EQ(Date(Text(size, c)).size(), c == L' ' ? 0 : size) << c;
        EXPECT_LE(Time(Text(size, c)).size(), 2 * size);
    }
    Text nested;
    for (std::size_t i = 0; i < size; ++i)
        nested.insert(i, 1, L':').append(L"ss");
    EXPECT_EQ(Time(L"x " + nested), L"");
}
