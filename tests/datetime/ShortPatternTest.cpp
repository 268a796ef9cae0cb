// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/ShortPattern.h"

#include <gtest/gtest.h>

namespace ShortPattern = Toolkit::ShortPattern;

namespace
{

struct Row
{
    const wchar_t* m_strPattern;
    const wchar_t* m_strResult;
};

void ExpectDates(std::initializer_list<Row> rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(ShortPattern::Date(row.m_strPattern), row.m_strResult)
            << testing::PrintToString(std::wstring(row.m_strPattern));
}

void ExpectTimes(std::initializer_list<Row> rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(ShortPattern::Time(row.m_strPattern), row.m_strResult)
            << testing::PrintToString(std::wstring(row.m_strPattern));
}

} // namespace

TEST(ShortPattern, KeepsADateThatIsRight)
{
    ExpectDates({{L"dd/MM/yyyy", L"dd/MM/yyyy"},
                 {L"M/d/yy", L"M/d/yy"},
                 {L"yyyy-MM-dd", L"yyyy-MM-dd"},
                 {L"dd.MM.yy", L"dd.MM.yy"}});
}

TEST(ShortPattern, WritesYearsThatAreNotOfTwoDigitsWithFour)
{
    ExpectDates({{L"d/M/y", L"d/M/yyyy"},
                 {L"d/M/yyy", L"d/M/yyyy"},
                 {L"d/M/yyyyy", L"d/M/yyyy"},
                 {L"d/M/u", L"d/M/yyyy"},
                 {L"d/M/uuuu", L"d/M/yyyy"},
                 {L"d/M/yy", L"d/M/yy"}});
}

TEST(ShortPattern, WritesEveryMonthAsANumber)
{
    ExpectDates({{L"d/L/y", L"d/M/yyyy"},
                 {L"d/LL/y", L"d/MM/yyyy"},
                 {L"d/MMM/y", L"d/MM/yyyy"},
                 {L"d/MMMM/y", L"d/MM/yyyy"},
                 {L"ddd/M/y", L"dd/M/yyyy"}});
}

TEST(ShortPattern, LeavesNoSpaceInADate)
{
    ExpectDates({{L"d. M. y", L"d.M.yyyy"},
                 {L"dd. MM. y.", L"dd.MM.yyyy."},
                 {L" d/M/y ", L"d/M/yyyy"},
                 {L"d.\u00A0M.\u202Fy", L"d.M.yyyy"},
                 {L"d.\u3000M.\ty", L"d.M.yyyy"}});
}

TEST(ShortPattern, NeverJoinsTheNumbersOfADate)
{
    ExpectDates({{L"dd/MM y", L"dd/MM/yyyy"},
                 {L"y M-d", L"yyyy-M-d"},
                 {L"d M y", L"d/M/yyyy"},
                 {L"dMy", L"d/M/yyyy"},
                 {L"y\u5E74M\u6708d\u65E5", L"yyyy/M/d"},
                 {L"d 'de' M 'de' y", L"d/M/yyyy"}});
}

TEST(ShortPattern, LeavesOutWordsAndWhatBelongsToThem)
{
    ExpectDates({{L"d.MM.yy '\u0433'.", L"d.MM.yy"},
                 {L"'le' d/M/y", L"d/M/yyyy"},
                 {L"\u043E\u0442 d.M.y", L"d.M.yyyy"},
                 {L"d''M/y", L"d/M/yyyy"},
                 {L"d/M/y'd M y", L"d/M/yyyy"},
                 {L"d/M/y'", L"d/M/yyyy"},
                 {L"d/'M'M/y", L"d/M/yyyy"},
                 {L"d7/M1/y9", L"d/M/yyyy"},
                 {L"%d/%M/%y", L"d/M/yyyy"}});
}

TEST(ShortPattern, LeavesOutOtherFieldsOfADate)
{
    ExpectDates({{L"d/M/y G", L"d/M/yyyy"},
                 {L"G y/M/d", L"yyyy/M/d"},
                 {L"d.M.y GGGGG.", L"d.M.yyyy"},
                 {L"E, d/M/y", L"d/M/yyyy"},
                 {L"d, E, M/y", L"d,M/yyyy"},
                 {L"dE, M/y", L"d,M/yyyy"},
                 {L"y-M-d-D", L"yyyy-M-d"},
                 {L"d/M/y/d", L"d/M/yyyy"},
                 {L"L/M/d/y", L"M/d/yyyy"},
                 {L"d/M/y HH:mm", L"d/M/yyyy"}});
}

TEST(ShortPattern, LeavesOutDirectionMarks)
{
    ExpectDates(
        {{L"d\u200F/M\u200F/y", L"d/M/yyyy"}, {L"\u202Ad\u200E-\u061CM-\u2066y\u2069\u202C", L"d-M-yyyy"}});
    ExpectTimes({{L"h:mm\u200F a", L"h:mm a"}, {L"\u200Fh:mm a", L"h:mm a"}});
}

TEST(ShortPattern, HasNoDateWithoutDayMonthAndYear)
{
    ExpectDates({{L"", L""},
                 {L"d/M", L""},
                 {L"M/y", L""},
                 {L"d/y", L""},
                 {L"'d/M/y'", L""},
                 {L"HH:mm", L""},
                 {L"'", L""},
                 {L"''", L""},
                 {L"---", L""},
                 {L"\U0001F600", L""}});
}

TEST(ShortPattern, KeepsATimeThatIsRight)
{
    ExpectTimes({{L"HH:mm", L"HH:mm"},
                 {L"H:mm", L"H:mm"},
                 {L"H:m", L"H:m"},
                 {L"HH.mm", L"HH.mm"},
                 {L"h:mm a", L"h:mm a"},
                 {L"hh:mm a", L"hh:mm a"},
                 {L"a h:mm", L"a h:mm"},
                 {L"ah:mm", L"ah:mm"},
                 {L"a h.mm", L"a h.mm"}});
}

TEST(ShortPattern, WritesEverySpaceInATimeAsOne)
{
    ExpectTimes({{L"h:mm\u202Fa", L"h:mm a"},
                 {L"h:mm\u00A0a", L"h:mm a"},
                 {L"h:mm \u2009 a", L"h:mm a"},
                 {L"a\u1680h:mm", L"a h:mm"},
                 {L"a\u2000h\u200A:mm", L"a h:mm"},
                 {L"a\u205Fh:mm", L"a h:mm"},
                 {L" HH:mm ", L"HH:mm"},
                 {L"HH : mm", L"HH:mm"}});
}

TEST(ShortPattern, NeverJoinsTheNumbersOfATime)
{
    ExpectTimes({{L"HH 'h' mm", L"HH:mm"},
                 {L"HH'h'mm", L"HH:mm"},
                 {L"HH mm", L"HH:mm"},
                 {L"Hmm", L"H:mm"},
                 {L"H\u6642mm\u5206", L"H:mm"},
                 {L"\u0F46 h \u0F66 mm a", L"h:mm a"}});
}

TEST(ShortPattern, LeavesOutTheWordsOfATime)
{
    ExpectTimes({{L"H:mm '\u0447'.", L"H:mm"},
                 {L"H:mm 'hod\u017A'.", L"H:mm"},
                 {L"a 'ga' h:mm", L"a h:mm"},
                 {L"a \u0928\u093F h:mm", L"a h:mm"},
                 {L"'a'h:mm'a'a", L"h:mm a"}});
}

TEST(ShortPattern, KnowsOneMarkerForEveryPartOfTheDay)
{
    ExpectTimes(
        {{L"h:mm B", L"h:mm a"}, {L"Bh:mm", L"ah:mm"}, {L"h:mm b", L"h:mm a"}, {L"h:mm aaaa", L"h:mm a"}});
}

TEST(ShortPattern, HasAMarkerWithTheHoursOfHalfADayAndOnlyThen)
{
    ExpectTimes({{L"h:mm", L"h:mm a"},
                 {L"K:mm", L"h:mm a"},
                 {L"HH:mm a", L"HH:mm"},
                 {L"a HH:mm", L"HH:mm"},
                 {L"kk:mm", L"HH:mm"}});
}

TEST(ShortPattern, LeavesOutOtherFieldsOfATime)
{
    ExpectTimes({{L"HH:mm:ss", L"HH:mm"},
                 {L"h:mm:ss a", L"h:mm a"},
                 {L"H.mm.ss,SSS", L"H.mm"},
                 {L"HH:mm z", L"HH:mm"},
                 {L"HH:mm:HH", L"HH:mm"},
                 {L"d HH:mm", L"HH:mm"}});
}

TEST(ShortPattern, HasNoTimeWithoutHoursAndMinutes)
{
    ExpectTimes({{L"", L""}, {L"HH", L""}, {L"mm", L""}, {L"a", L""}, {L"d/M/y", L""}, {L"'HH:mm'", L""}});
}
