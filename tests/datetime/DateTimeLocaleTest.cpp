// SPDX-License-Identifier: MIT
#include <clocale>
#include <cstdlib>
#include <functional>

#include <gtest/gtest.h>

#include "tests/support/InChild.h"
#include "tests/support/LocalZone.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/encoding/UTF8.h"

// The texts of DateTime in the user's locale.

namespace
{

using Toolkit::DateTime;
using Text = Toolkit::TString<wchar_t>;
using ToolkitTest::CapturedOutput;
using ToolkitTest::ChildAnswer;
using ToolkitTest::InChild;
using ToolkitTest::LocalZone;
using ToolkitTest::Quoted;
using ToolkitTest::RunInShell;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TemporaryFolder;

const char* const s_zones[] = {
    "UTC",
    "Europe/Berlin",
    "Europe/Dublin",
    "America/New_York",
    "America/St_Johns",
    "Asia/Kolkata",
    "Asia/Kathmandu",
    "Pacific/Apia",
    "Pacific/Honolulu",
    "Australia/Lord_Howe",
    "Pacific/Kiritimati",
    "Asia/Tokyo",
};

struct Texts
{
    explicit Texts(const DateTime& value)
    {
        value.GetDate(m_strDate);
        value.GetTime(m_strTime);
        value.GetString(m_strBoth);
        value.GetRelativeStringFromNow(m_strRelative);
    }

    Text m_strDate = L"old";
    Text m_strTime = L"old";
    Text m_strBoth = L"old";
    Text m_strRelative = L"old";
};

void InEveryZone(const char* locale, const std::function<void()>& work)
{
    const ScopedEnvironment environment("LC_ALL", locale);
    for (const char* const zone : s_zones)
    {
        SCOPED_TRACE(zone);
        const LocalZone local(zone);
        work();
    }
}

// Runs `work` with the date of today; again when the day ended meanwhile.
void OnOneDay(const std::function<bool(const DateTime& now)>& holds)
{
    for (int tries = 0; tries < 3; ++tries)
    {
        const DateTime before;
        const bool right = holds(before);
        if (right || DateTime().GetDay() == before.GetDay())
        {
            EXPECT_TRUE(right);
            return;
        }
    }
    FAIL() << "the day never stayed the same";
}

bool IsShownAsTime(const DateTime& value)
{
    const Texts texts(value);
    return texts.m_strRelative == texts.m_strTime && texts.m_strRelative != texts.m_strDate;
}

bool IsShownAsDate(const DateTime& value)
{
    const Texts texts(value);
    return texts.m_strRelative == texts.m_strDate && texts.m_strRelative != texts.m_strTime;
}

DateTime Earlier(DateTime value, unsigned int years, unsigned int months, unsigned int days)
{
    value.Remove(years, months, 0, days);
    return value;
}

DateTime Later(DateTime value, unsigned int years, unsigned int months, unsigned int days)
{
    value.Add(years, months, 0, days);
    return value;
}

// A locale of the C library, compiled from one of the system's with other texts for AM and PM.
class CompiledLocale
{
public:
    CompiledLocale(const std::string& name, const std::string& markers, const std::string& charset = "UTF-8")
        : m_strName(name)
    {
        std::string source = ToolkitTest::ReadBytes("/usr/share/i18n/locales/en_US");
        const std::size_t start = source.find("am_pm");
        const std::size_t end = source.find('\n', start);
        if (start != source.npos)
            source.replace(start, end - start, "am_pm " + markers);
        ToolkitTest::WriteBytes(m_folder.Path("source"), source);
        m_bMade = RunInShell("localedef -c -i " + Quoted(m_folder.Path("source")) + " -f " + charset + " " +
                             Quoted(m_folder.Path(name)))
                          .m_iExitCode != -1 &&
                  RunInShell("test -f " + Quoted(m_folder.Path(name + "/LC_TIME"))).m_iExitCode == 0;
    }

    bool IsMade() const { return m_bMade; }

    // Makes it the C library's locale of this process.
    bool Use() const
    {
        return setenv("LOCPATH", m_folder.Path().c_str(), 1) == 0 &&
               setenv("LC_ALL", m_strName.c_str(), 1) == 0 && std::setlocale(LC_ALL, "") != nullptr;
    }

private:
    const TemporaryFolder m_folder;
    const std::string m_strName;
    bool m_bMade = false;
};

// The texts of 14:05 and 00:30 in a process that uses the locale, without a word on the standard error
// output.
ChildAnswer ShowsTimes(const CompiledLocale& locale, const Text& afternoon, const Text& night)
{
    CapturedOutput output(2);
    if (!locale.Use())
        return "the locale cannot be used";
    const Texts late(DateTime(2009, 3, 7, 14, 5, 9));
    const Texts early(DateTime(2009, 3, 7, 0, 30, 0));
    const std::string said = output.Stop();
    if (!said.empty())
        return "said: " + said;
    if (late.m_strTime != afternoon || early.m_strTime != night)
        return Toolkit::UTF8::ToUTF8(late.m_strTime + L"|" + early.m_strTime);
    return true;
}

} // namespace

TEST(DateTimeLocale, WritesTheDateAndTheTimeInTheUsersForm)
{
    InEveryZone("en_GB.UTF-8",
                []
                {
                    const Texts texts(DateTime(2009, 3, 7, 14, 5, 9));
                    EXPECT_EQ(texts.m_strDate, L"07/03/2009");
                    EXPECT_EQ(texts.m_strTime, L"14:05");
                    EXPECT_EQ(texts.m_strBoth, L"07/03/2009 14:05");
                });
}

TEST(DateTimeLocale, WritesTheHoursOfHalfADay)
{
    InEveryZone("en_US.UTF-8",
                []
                {
                    const Texts texts(DateTime(2009, 3, 7, 14, 5, 9));
                    EXPECT_EQ(texts.m_strDate, L"03/7/09");
                    EXPECT_EQ(texts.m_strTime, L"2:05 PM");
                    EXPECT_EQ(texts.m_strBoth, L"03/7/09 2:05 PM");
                });
}

TEST(DateTimeLocale, WritesTheHourAfterMidnightAsTwelve)
{
    InEveryZone("en_US.UTF-8",
                []
                {
                    EXPECT_EQ(Texts(DateTime(2009, 3, 7, 0, 30, 0)).m_strTime, L"12:30 AM");
                    EXPECT_EQ(Texts(DateTime(2009, 3, 7, 12, 0, 0)).m_strTime, L"12:00 PM");
                    EXPECT_EQ(Texts(DateTime(2009, 3, 7, 11, 59, 59)).m_strTime, L"11:59 AM");
                    EXPECT_EQ(Texts(DateTime(2009, 3, 7, 23, 59, 59)).m_strTime, L"11:59 PM");
                });
}

TEST(DateTimeLocale, WritesHoursAndMinutesOnly)
{
    InEveryZone("de_DE.UTF-8",
                []
                {
                    EXPECT_EQ(Texts(DateTime(2009, 3, 7, 14, 5, 9)).m_strBoth, L"07.03.09 14:05");
                    EXPECT_EQ(Texts(DateTime(2009, 3, 7, 14, 5, 59)).m_strBoth, L"07.03.09 14:05");
                });
}

TEST(DateTimeLocale, WritesAnInstantByTheLocalClock)
{
    const struct
    {
        const char* zone;
        const wchar_t* text;
    } rows[] = {
        {"UTC", L"07/03/2009 23:30"},
        {"Europe/Berlin", L"08/03/2009 00:30"},
        {"America/New_York", L"07/03/2009 18:30"},
        {"America/St_Johns", L"07/03/2009 20:00"},
        {"Asia/Kolkata", L"08/03/2009 05:00"},
        {"Asia/Kathmandu", L"08/03/2009 05:15"},
        {"Pacific/Apia", L"07/03/2009 12:30"},
        {"Pacific/Honolulu", L"07/03/2009 13:30"},
        {"Australia/Lord_Howe", L"08/03/2009 10:30"},
        {"Pacific/Kiritimati", L"08/03/2009 13:30"},
    };
    const ScopedEnvironment environment("LC_ALL", "en_GB.UTF-8");
    const DateTime value(2009, 3, 7, 23, 30, 0, 0);
    for (const auto& row : rows)
    {
        const LocalZone zone(row.zone);
        EXPECT_EQ(Texts(value).m_strBoth, row.text) << row.zone;
    }
}

TEST(DateTimeLocale, WritesInstantsBefore1970AndFarAwayInTheirMinute)
{
    const LocalZone zone("UTC");
    const ScopedEnvironment environment("LC_ALL", "en_GB.UTF-8");
    EXPECT_EQ(Texts(DateTime(1969, 12, 31, 23, 59, 59)).m_strBoth, L"31/12/1969 23:59");
    EXPECT_EQ(Texts(DateTime(1601, 1, 1, 0, 0, 0)).m_strBoth, L"01/01/1601 00:00");
    EXPECT_EQ(Texts(DateTime(2400, 2, 29, 12, 0, 0)).m_strBoth, L"29/02/2400 12:00");
}

TEST(DateTimeLocale, WritesInTheLocaleOfTheMoment)
{
    const DateTime value(2009, 3, 7, 14, 5, 9);
    const struct
    {
        const char* locale;
        const wchar_t* text;
    } rows[] = {
        {"de_DE.UTF-8", L"07.03.09 14:05"},   {"en_US.UTF-8", L"03/7/09 2:05 PM"},
        {"fr_CA.UTF-8", L"2009-03-07 14:05"}, {"ja_JP.UTF-8", L"2009/03/07 14:05"},
        {"ko_KR.UTF-8", L"09.03.7. PM 2:05"}, {"C", L"03/07/09 14:05"},
        {"POSIX", L"03/07/09 14:05"},         {"no locale", L"03/07/09 14:05"},
    };
    for (const auto& row : rows)
    {
        const ScopedEnvironment environment("LC_ALL", row.locale);
        EXPECT_EQ(Texts(value).m_strBoth, row.text) << row.locale;
    }
}

TEST(DateTimeLocale, ShowsTodayAsATime)
{
    InEveryZone("en_GB.UTF-8",
                []
                {
                    OnOneDay([](const DateTime& now) { return IsShownAsTime(now); });
                    OnOneDay(
                        [](const DateTime& now)
                        {
                            const auto year = static_cast<unsigned int>(now.GetYear());
                            const auto month = static_cast<unsigned int>(now.GetMonth());
                            return IsShownAsTime(DateTime(year, month, now.GetDay(), 12, 0, 0)) &&
                                   IsShownAsTime(DateTime(year, month, now.GetDay(), 0, 0, 0)) &&
                                   IsShownAsTime(DateTime(year, month, now.GetDay(), 23, 59, 59));
                        });
                });
}

TEST(DateTimeLocale, ShowsEveryOtherDayAsADate)
{
    InEveryZone("en_GB.UTF-8",
                []
                {
                    OnOneDay(
                        [](const DateTime& now)
                        {
                            return IsShownAsDate(Earlier(now, 0, 0, 1)) &&
                                   IsShownAsDate(Later(now, 0, 0, 1)) &&
                                   IsShownAsDate(Earlier(now, 0, 1, 0)) &&
                                   IsShownAsDate(Later(now, 0, 1, 0)) &&
                                   IsShownAsDate(Earlier(now, 1, 0, 0)) && IsShownAsDate(Later(now, 1, 0, 0));
                        });
                });
}

TEST(DateTimeLocale, DecidesByTheLocalCalendarDay)
{
    InEveryZone("en_GB.UTF-8",
                []
                {
                    OnOneDay(
                        [](const DateTime& now)
                        {
                            DateTime last(static_cast<unsigned int>(now.GetYear()),
                                          static_cast<unsigned int>(now.GetMonth()), now.GetDay(), 23, 59,
                                          59);
                            const bool today = IsShownAsTime(last);
                            last.Add(0, 0, 1);
                            return today && IsShownAsDate(last);
                        });
                });
}

TEST(DateTimeLocale, WritesZeroesForAnInvalidValue)
{
    const DateTime invalid(2009, 13, 45, 0, 0, 0);
    ASSERT_FALSE(invalid.IsValid());
    CapturedOutput output(2);
    InEveryZone("en_GB.UTF-8",
                [&invalid]
                {
                    const Texts texts(invalid);
                    EXPECT_EQ(texts.m_strDate, L"00/00/0000");
                    EXPECT_EQ(texts.m_strTime, L"00:00");
                    EXPECT_EQ(texts.m_strBoth, L"00/00/0000 00:00");
                    EXPECT_EQ(texts.m_strRelative, L"00/00/0000");
                });
    EXPECT_EQ(output.Stop(), "");
    const ScopedEnvironment environment("LC_ALL", "en_US.UTF-8");
    EXPECT_EQ(Texts(invalid).m_strBoth, L"00/0/00 12:00 AM");
}

TEST(DateTimeLocale, WritesTheMarkersOfTheCLibrary)
{
    const CompiledLocale korean("ko_KR.UTF-8", "\"<UC624><UC804>\";\"<UC624><UD6C4>\"");
    ASSERT_TRUE(korean.IsMade());
    EXPECT_TRUE(
        InChild([&korean] { return ShowsTimes(korean, L"\uC624\uD6C4 2:05", L"\uC624\uC804 12:30"); }));
}

TEST(DateTimeLocale, WritesMarkersWholeWhateverLettersTheyHave)
{
    const CompiledLocale lowerCase("en_AU.UTF-8", "\"am\";\"pm\"");
    ASSERT_TRUE(lowerCase.IsMade());
    EXPECT_TRUE(InChild([&lowerCase] { return ShowsTimes(lowerCase, L"2:05 pm", L"12:30 am"); }));

    const CompiledLocale tokens("en_NZ.UTF-8", "\"a h:mm tt\";\"mahtt:ss %%T\"");
    ASSERT_TRUE(tokens.IsMade());
    EXPECT_TRUE(InChild([&tokens] { return ShowsTimes(tokens, L"2:05 mahtt:ss %%T", L"12:30 a h:mm tt"); }));
}

TEST(DateTimeLocale, WritesMarkersOfOtherCharacterSets)
{
    const CompiledLocale latin("es_CO.ISO-8859-1", "\"a<U00F1>\";\"d<U00ED>\"", "ISO-8859-1");
    ASSERT_TRUE(latin.IsMade());
    EXPECT_TRUE(InChild([&latin] { return ShowsTimes(latin, L"2:05 d\u00ED", L"12:30 a\u00F1"); }));
}

TEST(DateTimeLocale, TellsTheHalvesOfTheDayApartWithoutMarkers)
{
    const CompiledLocale unmarked("es_US.UTF-8", "\"\";\"\"");
    ASSERT_TRUE(unmarked.IsMade());
    EXPECT_TRUE(InChild([&unmarked] { return ShowsTimes(unmarked, L"2:05 PM", L"12:30 AM"); }));
}
