// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <cwchar>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/DateTimes.h"
#include "tests/support/InChild.h"
#include "tests/support/LocalZone.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/datetime/Timestamp.h"

// Zones and their changes: what values show, and what they are made of, where the clocks are moved.

using Toolkit::DateTime;
using Toolkit::Timestamp;
using Toolkit::TString;
using ToolkitTest::At;
using ToolkitTest::Iso;
using ToolkitTest::LocalZone;
using ToolkitTest::Parsed;

namespace
{

// A text like "2009-03-07T14:05:09", and its parts.
struct Clock
{
    explicit Clock(const std::string& what) : text(what), wide(what.begin(), what.end())
    {
        wide[10] = L' ';
        char separator = 0;
        std::istringstream stream(what);
        stream >> year >> separator >> month >> separator >> day >> separator;
        stream >> hour >> separator >> minute >> separator >> second;
        EXPECT_TRUE(stream && stream.eof()) << what;
    }

    DateTime Value() const { return DateTime(year, month, day, hour, minute, second); }

    std::string text;
    std::wstring wide;
    unsigned int year = 0;
    unsigned int month = 0;
    unsigned int day = 0;
    unsigned int hour = 0;
    unsigned int minute = 0;
    unsigned int second = 0;
};

// Asks the C library for other times first, as its own answer for a time that comes twice depends on that.
void AskForSummerOrWinter(int month)
{
    std::tm time = {};
    time.tm_year = 109;
    time.tm_mon = month;
    time.tm_mday = 1;
    time.tm_isdst = -1;
    EXPECT_NE(std::mktime(&time), -1);
}

// The C library knows a file again by its inode.
void SetSystemsZone(const std::string& zone)
{
    ToolkitTest::WriteBytes("/etc/zone", ToolkitTest::ReadBytes("/usr/share/zoneinfo/" + zone));
    std::filesystem::rename("/etc/zone", "/etc/localtime");
}

// What the operation answers when the C library has looked at another zone since the system's one was
// followed.
template <class Operation>
auto AfterALookAt(const char* zone, Operation operation)
{
    DateTime().GetHour();
    {
        const LocalZone other(zone);
    }
    return operation();
}

// Without TZ the zone is looked at once in a tick of the system's clock.
unsigned int HourAfterATick(const DateTime& time)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return time.GetHour();
}

// The lines of the oracle for one instant and for one local time that is left out.
class OracleLines
{
public:
    void CheckInstant(std::istream& line)
    {
        std::int64_t instant = 0;
        std::int64_t first = 0;
        std::int64_t asUtc = 0;
        std::int64_t ahead = 0;
        std::string text;
        line >> instant >> text >> first >> asUtc >> ahead;
        const Clock clock(text);
        const DateTime time = At(instant);
        CheckShows(time, clock);
        Check(Parsed(Iso(time, true)) == time, "the text in UTC is read back");
        Check(Parsed(clock.wide) == At(first), "the local text is read");
        Check(clock.Value() == At(first), "the local fields are taken");
        Check(Iso(time, true) == UtcText(instant), "the text in UTC");
        DateTime shifted(time);
        Check(shifted.MakeToUTC() == At(asUtc), "MakeToUTC");
        shifted = time;
        Check(shifted.MakeFromUTC() == At(instant + ahead), "MakeFromUTC");
        CheckTimestamp(instant, clock, ahead);
        ++m_uInstants;
    }

    void CheckLeftOut(std::istream& line)
    {
        std::string text;
        std::int64_t instant = 0;
        line >> text >> instant;
        const Clock clock(text);
        Check(clock.Value() == At(instant), "fields that are left out");
        Check(Parsed(clock.wide) == At(instant), "a text that is left out");
        ++m_uLeftOut;
    }

    std::string m_strLine;
    std::string m_strZone;
    std::size_t m_uInstants = 0;
    std::size_t m_uLeftOut = 0;
    std::size_t m_uFailed = 0;

private:
    void CheckShows(const DateTime& time, const Clock& clock)
    {
        TString<wchar_t> sortable;
        time.GetSortableString(sortable);
        std::wstring digits;
        for (const wchar_t character : clock.wide)
            if (character >= L'0' && character <= L'9')
                digits += character;
        Check(Iso(time) == clock.wide, "the local text");
        Check(sortable == digits, "the sortable text");
        Check(time.GetYear() == static_cast<int>(clock.year), "the year");
        Check(time.GetMonth() == static_cast<int>(clock.month), "the month");
        Check(time.GetDay() == clock.day, "the day");
        Check(time.GetHour() == clock.hour, "the hour");
        Check(time.GetMinute() == clock.minute, "the minute");
        Check(time.GetSecond() == clock.second, "the second");
    }

    void CheckTimestamp(std::int64_t instant, const Clock& clock, std::int64_t ahead)
    {
        const Timestamp time = std::chrono::system_clock::from_time_t(instant);
        const Timestamp::Fields fields = time.LocalFields();
        Check(fields.year == static_cast<int>(clock.year), "the timestamp's year");
        Check(fields.month == static_cast<int>(clock.month), "the timestamp's month");
        Check(fields.day == static_cast<int>(clock.day), "the timestamp's day");
        Check(fields.hour == static_cast<int>(clock.hour), "the timestamp's hour");
        Check(fields.minute == static_cast<int>(clock.minute), "the timestamp's minute");
        Check(fields.second == static_cast<int>(clock.second), "the timestamp's second");
        Check(fields.offset == std::chrono::seconds(ahead), "the timestamp's offset");
        const std::string text = time.ToRfc3339(Timestamp::Zone::Local);
        if (ahead % 60 == 0)
            Check(text.substr(0, 19) == clock.text, "the timestamp's local text");
        const auto read = Timestamp::Parse(text);
        Check(read && *read == time, "the timestamp's local text is read back");
        Check(time.ToDateTime() == At(instant), "the timestamp as a DateTime");
    }

    // By the calendar's rule, and by no zone's.
    static std::wstring UtcText(std::int64_t instant)
    {
        // Days since 1600-03-01, from which on leap days end their four years.
        const std::int64_t seconds = instant + 135080LL * 86400;
        std::int64_t day = seconds / 86400;
        std::int64_t year = 1600 + day / 146097 * 400;
        day %= 146097;
        const auto length = [](std::int64_t y)
        { return ((y + 1) % 4 == 0 && (y + 1) % 100 != 0) || (y + 1) % 400 == 0 ? 366 : 365; };
        for (; day >= length(year); ++year)
            day -= length(year);
        static const int months[] = {31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 31, 29};
        int month = 0;
        for (; day >= months[month]; ++month)
            day -= months[month];
        wchar_t text[64];
        const int second = static_cast<int>(seconds % 86400);
        std::swprintf(text, 64, L"%04d-%02d-%02d %02d:%02d:%02d Z", static_cast<int>(year) + (month > 9),
                      (month + 2) % 12 + 1, static_cast<int>(day) + 1, second / 3600, second / 60 % 60,
                      second % 60);
        return text;
    }

    void Check(bool right, const char* what)
    {
        if (right)
            return;
        if (++m_uFailed <= 20)
            ADD_FAILURE() << what << " in " << m_strZone << ": " << m_strLine;
    }
};

// TZ was changed without a word to the C library: each test's first operation with a zone has to follow.
class ZonesOfTZ : public testing::Test
{
protected:
    const LocalZone m_before = LocalZone("Asia/Tokyo");
    const DateTime m_time = DateTime(2009, 7, 7, 12, 0, 0, 0);
    const ToolkitTest::ScopedEnvironment m_after = {"TZ", "Europe/Berlin"};
};

// In the zones of the folder "right" UTC counts the leap seconds too.
class ZonesOfTZWithLeapSeconds : public testing::Test
{
protected:
    void SetUp() override
    {
        if (access("/usr/share/zoneinfo/right/UTC", R_OK) != 0)
            GTEST_SKIP() << "the system has no zones with leap seconds";
    }

    const LocalZone m_before = LocalZone("UTC");
    const DateTime m_time = At(1496275200 + 27);
    const ToolkitTest::ScopedEnvironment m_after = {"TZ", "right/UTC"};
};

} // namespace

TEST(Zones, AgreeWithAnOracleAtEveryChangeOfEveryZone)
{
    const auto oracle = ToolkitTest::RunInShell("PYTHONTZPATH=/usr/share/zoneinfo python3 " +
                                                ToolkitTest::Quoted(TOOLKIT_ZONE_ORACLE));
    ASSERT_EQ(oracle.m_iExitCode, 0) << oracle.m_strOutput.substr(0, 2000);
    OracleLines lines;
    std::vector<std::string> zones;
    std::size_t allZones = 0;
    std::vector<std::string> block;
    const auto checkBlock = [&]
    {
        for (const std::string& zone : zones)
        {
            const LocalZone local(zone);
            lines.m_strZone = zone;
            for (const std::string& line : block)
            {
                std::istringstream stream(line.substr(1));
                lines.m_strLine = line;
                line[0] == 'I' ? lines.CheckInstant(stream) : lines.CheckLeftOut(stream);
            }
        }
        allZones += zones.size();
        zones.clear();
        block.clear();
    };
    std::istringstream output(oracle.m_strOutput);
    for (std::string line; std::getline(output, line);)
    {
        if (line[0] != 'Z')
        {
            block.push_back(line);
            continue;
        }
        checkBlock();
        std::istringstream names(line.substr(1));
        for (std::string name; names >> name;)
            zones.push_back(name);
    }
    checkBlock();
    EXPECT_EQ(lines.m_uFailed, 0U);
    // The database never shrinks.
    EXPECT_GE(allZones, 500U);
    EXPECT_GE(lines.m_uInstants, 150000U);
    EXPECT_GE(lines.m_uLeftOut, 50000U);
}

TEST(Zones, TimeThatComesTwiceIsTheFirst)
{
    const LocalZone zone("Europe/Berlin");
    for (const int month : {0, 6})
    {
        AskForSummerOrWinter(month);
        const DateTime time(2009, 10, 25, 2, 30, 0);
        EXPECT_EQ(time, DateTime(2009, 10, 25, 0, 30, 0, 0));
        EXPECT_EQ(Parsed(L"2009-10-25 02:30:00"), time);
        DateTime moved(2009, 10, 24, 2, 30, 0);
        moved.Add(0, 0, 0, 1);
        EXPECT_EQ(moved, time);
    }
}

TEST(Zones, SecondOfTwoEqualTimesIsReadBackAsTheFirst)
{
    const LocalZone zone("Europe/Berlin");
    const DateTime first(2009, 10, 25, 0, 30, 0, 0);
    const DateTime second(2009, 10, 25, 1, 30, 0, 0);
    EXPECT_EQ(Iso(second), L"2009-10-25 02:30:00");
    EXPECT_EQ(Parsed(Iso(second)), first);
    EXPECT_EQ(Parsed(Iso(second, true)), second);
    EXPECT_NE(first, second);
}

TEST(Zones, EmptySpanLeavesTheSecondOfTwoEqualTimes)
{
    const LocalZone zone("Europe/Berlin");
    const DateTime second(2009, 10, 25, 1, 30, 0, 0);
    DateTime moved(second);
    moved.Add(0, 0, 0, 0);
    moved.Remove(0, 0, 0, 0);
    EXPECT_EQ(moved, second);
}

TEST(Zones, TimeThatIsLeftOutCountsOn)
{
    const struct
    {
        const char* zone;
        DateTime time;
        const wchar_t* shown;
    } rows[] = {
        {"Europe/Berlin", DateTime(2009, 3, 29, 1, 30, 0, 0), L"2009-03-29 03:30:00"},
        {"Australia/Lord_Howe", DateTime(2009, 10, 3, 15, 40, 0, 0), L"2009-10-04 02:40:00"},
        {"Pacific/Apia", DateTime(2011, 12, 30, 22, 30, 0, 0), L"2011-12-31 12:30:00"},
    };
    const char* const texts[] = {"2009-03-29T02:30:00", "2009-10-04T02:10:00", "2011-12-30T12:30:00"};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const LocalZone zone(rows[i].zone);
        for (const int month : {0, 6})
        {
            AskForSummerOrWinter(month);
            const Clock clock(texts[i]);
            EXPECT_EQ(clock.Value(), rows[i].time) << rows[i].zone;
            EXPECT_EQ(Iso(clock.Value()), rows[i].shown);
            EXPECT_EQ(Parsed(clock.wide), rows[i].time) << rows[i].zone;
        }
    }
}

TEST(Zones, MidnightThatIsLeftOutNormalizesToTheFirstTimeOfTheDay)
{
    const LocalZone zone("America/Sao_Paulo");
    EXPECT_EQ(Iso(DateTime::CreateNormalizedDateTime(2009, 10, 18)), L"2009-10-18 01:00:00");
}

TEST(Zones, CalendarSpanIntoATimeThatIsLeftOutCountsOn)
{
    const LocalZone zone("Europe/Berlin");
    DateTime time(2009, 2, 28, 2, 30, 0);
    time.Add(0, 1, 0, 1);
    EXPECT_EQ(Iso(time), L"2009-03-29 03:30:00");
    time.Remove(0, 0, 0, 1);
    EXPECT_EQ(Iso(time), L"2009-03-28 03:30:00");
}

TEST(Zones, CalendarSpansKeepTheTimeOfTheDayAndMovesKeepTheirLength)
{
    const LocalZone zone("Europe/Berlin");
    DateTime byCalendar(2009, 3, 28, 14, 5, 9);
    DateTime byClock(byCalendar);
    byCalendar.Add(0, 0, 0, 1);
    byClock.Add(24, 0, 0);
    EXPECT_EQ(Iso(byCalendar), L"2009-03-29 14:05:09");
    EXPECT_EQ(Iso(byClock), L"2009-03-29 15:05:09");
}

TEST(Zones, MakeToUTCDoesNotComeBackWhereItsTimeIsLeftOut)
{
    const LocalZone zone("Europe/Berlin");
    const DateTime time(2009, 3, 29, 2, 30, 0, 0);
    DateTime shifted(time);
    EXPECT_EQ(Iso(shifted.MakeToUTC()), L"2009-03-29 03:30:00");
    EXPECT_EQ(Iso(shifted.MakeFromUTC(), true), L"2009-03-29 03:30:00 Z");
    // The text needs no such time.
    EXPECT_EQ(Iso(time, true), L"2009-03-29 02:30:00 Z");
    EXPECT_EQ(Parsed(Iso(time, true)), time);
}

TEST(Zones, FixedZonesKnowNoSummerTime)
{
    const LocalZone zone("Europe/Berlin");
    EXPECT_EQ(DateTime(2009, 3, 29, 2, 30, 0, 1), At(1238290200));
    EXPECT_EQ(DateTime(2009, 7, 7, 14, 5, 9, 1), DateTime(2009, 7, 7, 15, 5, 9));
}

TEST(Zones, FollowsTZ)
{
    const DateTime time(2009, 7, 7, 12, 0, 0, 0);
    const struct
    {
        const char* zone;
        const wchar_t* text;
    } rows[] = {
        {"Europe/Berlin", L"2009-07-07 14:00:00"},
        {"America/New_York", L"2009-07-07 08:00:00"},
        {":Asia/Tokyo", L"2009-07-07 21:00:00"},
        {"XST4:30", L"2009-07-07 07:30:00"},
        {"", L"2009-07-07 12:00:00"},
        {"No/Such_Zone", L"2009-07-07 12:00:00"},
        {"\xFF\xFE", L"2009-07-07 12:00:00"},
    };
    for (const auto& row : rows)
    {
        const LocalZone zone(row.zone);
        EXPECT_EQ(Iso(time), row.text) << row.zone;
        EXPECT_EQ(Parsed(row.text), time) << row.zone;
    }
    const LocalZone longName(std::string(100000, 'x'));
    EXPECT_EQ(Iso(time), L"2009-07-07 12:00:00");
}

TEST_F(ZonesOfTZ, AreThoseOfTheFields)
{
    EXPECT_EQ(m_time.GetHour(), 14U);
}

TEST_F(ZonesOfTZ, AreThoseOfFieldsThatAreTaken)
{
    EXPECT_EQ(DateTime(2009, 7, 7, 14, 0, 0), m_time);
}

TEST_F(ZonesOfTZ, AreThoseOfALocalTextThatIsRead)
{
    EXPECT_EQ(Parsed(L"2009-07-07 14:00:00"), m_time);
}

TEST_F(ZonesOfTZWithLeapSeconds, CountInATextOfUtc)
{
    EXPECT_EQ(Iso(m_time, true), L"2017-06-01 00:00:00 Z");
}

TEST_F(ZonesOfTZWithLeapSeconds, CountInATextOfUtcThatIsRead)
{
    EXPECT_EQ(Parsed(L"2017-06-01 00:00:00 Z"), m_time);
}

TEST_F(ZonesOfTZWithLeapSeconds, CountInFieldsOfAFixedZone)
{
    EXPECT_EQ(DateTime(2017, 6, 1, 0, 0, 0, 0), m_time);
}

TEST_F(ZonesOfTZWithLeapSeconds, CountBetweenAFixedZoneAndUtc)
{
    EXPECT_EQ(Iso(DateTime(2017, 1, 1, 0, 0, 0, 1), true), L"2016-12-31 23:00:00 Z");
    EXPECT_EQ(Iso(DateTime(2017, 1, 1, 0, 59, 60, 1), true), L"2016-12-31 23:59:60 Z");
    EXPECT_EQ(Iso(DateTime(2012, 7, 1, 5, 0, 0, 8), true), L"2012-06-30 21:00:00 Z");
    EXPECT_EQ(Iso(DateTime(2016, 12, 31, 18, 59, 60, -5), true), L"2016-12-31 23:59:60 Z");
    EXPECT_EQ(Iso(DateTime(2016, 12, 31, 20, 0, 0, -5), true), L"2017-01-01 01:00:00 Z");
}

TEST(Zones, WithoutTZTheSystemsZoneCounts)
{
    DateTime time(2009, 7, 7, 12, 0, 0, 0);
    std::wstring shown;
    {
        const LocalZone zone(nullptr);
        shown = Iso(time);
        EXPECT_EQ(Parsed(shown), time);
    }
    const LocalZone zone(access("/etc/localtime", R_OK) == 0 ? ":/etc/localtime" : "UTC");
    EXPECT_EQ(Iso(time), shown);
}

// The host has the C library look at other zones meanwhile.
TEST(Zones, WithoutTZTheSystemsZoneCountsWhateverTheCLibraryLookedAt)
{
    const char* const system = access("/etc/localtime", R_OK) == 0 ? ":/etc/localtime" : "UTC";
    for (const char* const zone : {"Asia/Tokyo", "America/New_York", "right/UTC"})
        for (int month = 1; month <= 12; ++month)
        {
            const std::wstring text = L"2009-" + std::to_wstring(month) + L"-07 12:00:00";
            const LocalZone before(system);
            const DateTime local = Parsed(text);
            const DateTime utc = Parsed(text + L" Z");
            const std::wstring utcText = Iso(utc, true);
            const LocalZone none(nullptr);
            for (int round = 0; round < 2; ++round)
            {
                EXPECT_EQ(AfterALookAt(zone, [&] { return Parsed(text); }), local) << zone;
                EXPECT_EQ(AfterALookAt(zone, [&] { return local.GetHour(); }), 12U) << zone;
                EXPECT_EQ(AfterALookAt(zone, [&] { return Parsed(text + L" Z"); }), utc) << zone;
                EXPECT_EQ(AfterALookAt(zone, [&] { return Iso(utc, true); }), utcText) << zone;
            }
        }
}

// The system's zone is that of a disk of the child's own.
TEST(Zones, SystemsZoneThatWasChangedCounts)
{
    EXPECT_TRUE(ToolkitTest::OnSmallDisk("/etc", 64,
                                         []
                                         {
                                             const DateTime time(2009, 7, 7, 12, 0, 0, 0);
                                             const LocalZone zone(nullptr);
                                             SetSystemsZone("Europe/Berlin");
                                             const unsigned int before = HourAfterATick(time);
                                             SetSystemsZone("Asia/Tokyo");
                                             return before == 14 && HourAfterATick(time) == 21;
                                         }));
}

// Nothing that was kept of a zone's old rules moves a time by an hour.
TEST(Zones, RulesThatChangedUnderTheSameNameCount)
{
    const ToolkitTest::TemporaryFolder folder;
    const std::string file = folder.Path("zone");
    const struct
    {
        const char* before;
        const wchar_t* text;
    } rows[] = {
        {"Asia/Tokyo", L"2009-03-29 09:30:00"},
        {"America/New_York", L"2009-10-25 00:30:00"},
        {"America/New_York", L"2009-03-29 09:30:00"},
        {"Pacific/Apia", L"2009-07-07 12:00:00"},
    };
    for (const auto& row : rows)
    {
        for (const char* const name : {row.before, "Europe/Berlin"})
        {
            std::filesystem::remove(file);
            std::filesystem::copy_file(std::string("/usr/share/zoneinfo/") + name, file);
            const LocalZone zone(":" + file);
            EXPECT_EQ(Iso(Parsed(row.text)), row.text) << row.before << ", then " << name;
            // The C library reads the file again only after another zone.
            const LocalZone other("UTC");
            EXPECT_EQ(Iso(Parsed(row.text)), row.text);
        }
    }
}

// The zones of the folder "right", where it is installed, count the leap seconds too, in UTC as well.
TEST(Zones, ReadsBackEverySecondWhereLeapSecondsAreCounted)
{
    if (access("/usr/share/zoneinfo/right/UTC", R_OK) != 0)
        GTEST_SKIP() << "the system has no zones with leap seconds";
    for (const char* const name : {"right/UTC", "right/Europe/Berlin", "right/America/St_Johns"})
    {
        const LocalZone zone(name);
        std::size_t leaps = 0;
        // Leap seconds stand at the ends of June and December.
        for (int half = 0; half < 2 * (2018 - 1972); ++half)
        {
            DateTime time = Parsed(std::to_wstring(1972 + half / 2) +
                                   (half % 2 == 0 ? L"-01-01" : L"-07-01") + L" 00:00:00 Z");
            time.Remove(0, 0, 4);
            for (int second = 0; second < 8; ++second, time.Add(0, 0, 1))
            {
                EXPECT_EQ(Parsed(Iso(time, true)), time) << name << " " << testing::PrintToString(Iso(time));
                EXPECT_EQ(Parsed(Iso(time)), time) << name << " " << testing::PrintToString(Iso(time));
                EXPECT_EQ(time.GetSecond() == 60, Iso(time, true).find(L":60 Z") != std::wstring::npos);
                leaps += time.GetSecond() == 60;
            }
        }
        EXPECT_EQ(leaps, 27U) << name;
    }
}

TEST(Zones, ThreadsMakeTheirOwnValuesAtOnce)
{
    const char* const names[] = {"Europe/Berlin", nullptr};
    for (const char* const name : names)
    {
        const LocalZone zone(name);
        std::vector<std::thread> threads;
        for (unsigned int thread = 0; thread < 4; ++thread)
            threads.emplace_back(
                []
                {
                    for (unsigned int day = 0; day < 2000; ++day)
                    {
                        DateTime time(2000, 1, 1, 14, 5, 9);
                        time.Add(0, 0, 0, day);
                        EXPECT_EQ(Parsed(Iso(time)), time);
                        EXPECT_EQ(Parsed(Iso(time, true)), time);
                    }
                });
        for (std::thread& thread : threads)
            thread.join();
    }
}
