// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/uversion.h>

#include "tests/support/LocalZone.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/datetime/Timestamp.h"
#include "toolkit/encoding/Text.h"

// The texts of Timestamp in the words of a locale.

using Toolkit::Timestamp;
using ToolkitTest::LocalZone;
using ToolkitTest::ScopedEnvironment;

namespace
{

const Timestamp::Style s_styles[] = {Timestamp::Style::Short, Timestamp::Style::Medium,
                                     Timestamp::Style::Long, Timestamp::Style::Full};

// In winter and in summer, in the morning and in the afternoon, before 1970 and long after.
const std::int64_t s_instants[] = {1772460309, 1751458271, -1000000000, 4102444800};

// What ICU itself writes.
std::string Directly(Timestamp::Style style, const char* locale, std::int64_t instant, const char16_t* zone)
{
    static const UDateFormatStyle styles[] = {UDAT_SHORT, UDAT_MEDIUM, UDAT_LONG, UDAT_FULL};
    const UDateFormatStyle icu = styles[static_cast<unsigned int>(style)];
    UErrorCode status = U_ZERO_ERROR;
    UDateFormat* const format = udat_open(icu, icu, locale, zone, -1, nullptr, 0, &status);
    UChar text[500];
    const int32_t length =
        udat_format(format, static_cast<double>(instant) * 1000, text, 500, nullptr, &status);
    udat_close(format);
    EXPECT_EQ(status, U_ZERO_ERROR) << locale;
    const auto utf16 =
        std::string_view(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length) * 2);
    return Toolkit::Text::FromCharset(utf16, "utf-16le").value();
}

Timestamp At(std::int64_t instant)
{
    return std::chrono::system_clock::from_time_t(instant);
}

} // namespace

// Every locale with TOOLKIT_ALL_LOCALES in the environment, every twentieth one without.
TEST(TimestampLocale, WritesWhatIcuWritesInEveryLocale)
{
    const LocalZone zone("Europe/Berlin");
    const int count = uloc_countAvailable();
    EXPECT_GE(count, 800);
    const int step = std::getenv("TOOLKIT_ALL_LOCALES") != nullptr ? 1 : 20;
    for (int i = 0; i < count; i += step)
    {
        const char* const locale = uloc_getAvailable(i);
        for (const std::int64_t instant : s_instants)
            for (const Timestamp::Style style : s_styles)
                EXPECT_EQ(At(instant).Format(style, locale),
                          Directly(style, locale, instant, u"Europe/Berlin"))
                    << locale;
    }
}

TEST(TimestampLocale, WritesTheLocalesOwnWords)
{
    const LocalZone zone("Europe/Berlin");
    const Timestamp time = At(1772460309);
    EXPECT_EQ(time.Format(Timestamp::Style::Short, "de_DE"), "02.03.26, 15:05");
    EXPECT_EQ(time.Format(Timestamp::Style::Medium, "de_DE"), "02.03.2026, 15:05:09");
    EXPECT_EQ(time.Format(Timestamp::Style::Long, "de_DE"), "2. M\u00e4rz 2026 um 15:05:09 MEZ");
    EXPECT_EQ(time.Format(Timestamp::Style::Full, "de_DE"),
              "Montag, 2. M\u00e4rz 2026 um 15:05:09 Mitteleurop\u00e4ische Normalzeit");
}

TEST(TimestampLocale, TakesNamesInAllTheirForms)
{
    const LocalZone zone("Europe/Berlin");
    const Timestamp time = At(1772460309);
    for (const char* const name : {"de-DE", "de_DE.UTF-8", "de_DE@euro", "de-DE.utf-8", "de", "de_XX"})
        EXPECT_EQ(time.Format(Timestamp::Style::Full, name), time.Format(Timestamp::Style::Full, "de_DE"))
            << name;
    EXPECT_EQ(time.Format(Timestamp::Style::Long, "zh-Hant-TW"),
              time.Format(Timestamp::Style::Long, "zh_TW"));
}

TEST(TimestampLocale, TakesWhatIsNoLocaleForTheLocaleC)
{
    const LocalZone zone("Europe/Berlin");
    const Timestamp time = At(1772460309);
    const std::string plain = Directly(Timestamp::Style::Full, "en_US_POSIX", 1772460309, u"Europe/Berlin");
    for (const std::string& name :
         {std::string("C"), std::string("POSIX"), std::string("C.UTF-8"), std::string(), std::string("xx_XX"),
          std::string("german"), std::string("../de"), std::string("de_DE@calendar=buddhist"),
          std::string("de\0DE", 5), std::string("\xFF"), std::string(100000, '_'), std::string(300, '-')})
        EXPECT_EQ(time.Format(Timestamp::Style::Full, name), plain) << name;
}

TEST(TimestampLocale, FollowsTheUsersLocale)
{
    const LocalZone zone("Europe/Berlin");
    const Timestamp time = At(1772460309);
    const ScopedEnvironment all("LC_ALL", nullptr);
    const ScopedEnvironment times("LC_TIME", "fr_FR.UTF-8");
    const ScopedEnvironment language("LANG", "de_DE.UTF-8");
    EXPECT_EQ(time.Format(Timestamp::Style::Full), time.Format(Timestamp::Style::Full, "fr_FR"));
    const ScopedEnvironment first("LC_ALL", "ja_JP.UTF-8");
    EXPECT_EQ(time.Format(Timestamp::Style::Full), time.Format(Timestamp::Style::Full, "ja_JP"));
    EXPECT_NE(time.Format(Timestamp::Style::Full), time.Format(Timestamp::Style::Full, "fr_FR"));
}

TEST(TimestampLocale, ShowsTheClocksOfTheCLibraryInEveryKindOfZone)
{
    const struct
    {
        const char* zone;
        const char16_t* icus;
    } rows[] = {
        {"America/New_York", u"America/New_York"},
        {":America/New_York", u"America/New_York"},
        {"/usr/share/zoneinfo/America/New_York", u"America/New_York"},
        {"posix/America/New_York", u"America/New_York"},
        {"UTC", u"UTC"},
        {"", u"UTC"},
        {"XST4:30", u"GMT-04:30"},
        {"XST-0:19:32", u"GMT+00:19:32"},
        // ICU takes it for three hours ahead of Greenwich, the C library for three hours behind.
        {"GMT+3", u"GMT-03:00"},
        {"No/Such_Zone", u"No/Such_Zone"},
    };
    // Debian 13 has no such folder.
    const bool hasPosix = std::filesystem::exists("/usr/share/zoneinfo/posix");
    for (const auto& row : rows)
    {
        if (!hasPosix && std::string_view(row.zone).substr(0, 6) == "posix/")
            continue;
        const LocalZone zone(row.zone);
        for (const Timestamp::Style style : s_styles)
            EXPECT_EQ(At(1772460309).Format(style, "en_US"), Directly(style, "en_US", 1772460309, row.icus))
                << row.zone;
    }
}

TEST(TimestampLocale, ShowsTheSystemsZoneWithoutTZ)
{
    const LocalZone zone(nullptr);
    const Timestamp time = At(1772460309);
    EXPECT_NE(time.Format(Timestamp::Style::Full, "en_US").find("2026"), std::string::npos);
}

TEST(TimestampLocale, CutsOffWhatIsLessThanASecondBefore1970Too)
{
    const LocalZone zone("UTC");
    const Timestamp time = *Timestamp::Parse("1969-12-31T23:59:59.999999999Z");
    EXPECT_EQ(time.Format(Timestamp::Style::Medium, "de_DE"), "31.12.1969, 23:59:59");
    const Timestamp first = *Timestamp::Parse("1677-09-21T00:12:43.145224192Z");
    EXPECT_EQ(first.Format(Timestamp::Style::Medium, "de_DE"), "21.09.1677, 00:12:43");
    const Timestamp last = *Timestamp::Parse("2262-04-11T23:47:16.854775807Z");
    EXPECT_EQ(last.Format(Timestamp::Style::Medium, "de_DE"), "11.04.2262, 23:47:16");
}
