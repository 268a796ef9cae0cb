// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/LocalePatterns.h"

#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/uclean.h>
#include <unicode/udat.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/datetime/Locales.h"

namespace
{

using Toolkit::DateTime;
namespace LocalePatterns = Toolkit::LocalePatterns;
using Toolkit::Locales;
using Text = Toolkit::TString<wchar_t>;
using ToolkitTest::ScopedEnvironment;

using Numbers = std::vector<long>;

const std::size_t s_uNumbersOfDate = 3;
const std::size_t s_uNumbersOfTime = 2;

struct Moment
{
    unsigned int m_uYear, m_uMonth, m_uDay, m_uHour, m_uMinute;
    // Milliseconds since 1970, UTC.
    double m_nInstant;
};

const Moment s_moments[] = {
    {2009, 3, 7, 14, 5, 1236434700000.0},  {2031, 11, 25, 0, 30, 1953333000000.0},
    {1999, 12, 31, 12, 0, 946641600000.0}, {2000, 1, 1, 11, 59, 946727940000.0},
    {2008, 2, 29, 23, 7, 1204326420000.0},
};

template <class String>
Numbers NumbersOf(const String& text)
{
    Numbers numbers;
    bool within = false;
    for (const auto c : text)
    {
        const bool digit = c >= '0' && c <= '9';
        if (digit && !within)
            numbers.push_back(0);
        if (digit)
            numbers.back() = numbers.back() * 10 + static_cast<long>(c - '0');
        within = digit;
    }
    return numbers;
}

// What ICU itself makes of short dates and times: another way to the same numbers.
class Oracle
{
public:
    Oracle(const std::string& locale, UDateFormatStyle date, UDateFormatStyle time)
    {
        const std::string id = locale + "@calendar=gregorian;numbers=latn";
        UErrorCode status = U_ZERO_ERROR;
        m_pFormat = udat_open(time, date, id.c_str(), u"UTC", -1, nullptr, 0, &status);
    }
    ~Oracle() { udat_close(m_pFormat); }

    Oracle(const Oracle&) = delete;
    Oracle& operator=(const Oracle&) = delete;

    std::u16string Format(const Moment& moment) const
    {
        char16_t text[256];
        UErrorCode status = U_ZERO_ERROR;
        const int length = udat_format(m_pFormat, moment.m_nInstant, text, 256, nullptr, &status);
        return U_SUCCESS(status) ? std::u16string(text, text + length) : std::u16string();
    }

    // Whether the hours are those of half a day.
    bool IsHalfDay() const
    {
        Moment night = s_moments[0];
        night.m_nInstant = 1236384000000.0 + 30 * 60000.0;
        return NumbersOf(Format(night)) == Numbers{12, 30};
    }

private:
    UDateFormat* m_pFormat;
};

// What ICU takes its memory from, and how often that refuses to give any.
int s_iRefusals = 0;

bool IsRefused()
{
    return s_iRefusals > 0 && s_iRefusals-- > 0;
}

void* Allocate(const void* /*context*/, std::size_t size)
{
    return IsRefused() ? nullptr : std::malloc(size);
}

void* Reallocate(const void* /*context*/, void* memory, std::size_t size)
{
    return IsRefused() ? nullptr : std::realloc(memory, size);
}

void Free(const void* /*context*/, void* memory)
{
    std::free(memory);
}

// Why the text is not what a user expects of a short date with these numbers; empty when it is.
std::string WrongDate(const Text& text, const Numbers& expected)
{
    if (expected.size() != s_uNumbersOfDate || NumbersOf(text) != expected)
        return "other numbers";
    if (text.find_first_not_of(L"0123456789./-") != Text::npos)
        return "more than numbers";
    return std::wcschr(L"0123456789", text.front()) == nullptr ? "begins with no number" : "";
}

std::string WrongTime(Text text, const Numbers& expected, const wchar_t* marker)
{
    if (expected.size() != s_uNumbersOfTime || NumbersOf(text) != expected)
        return "other numbers";
    const std::size_t found = text.find(marker);
    if (found == Text::npos)
        return "no marker";
    text.erase(found, std::wcslen(marker));
    const std::size_t first = text.find_first_not_of(L' ');
    text = text.substr(first, text.find_last_not_of(L' ') + 1 - first);
    return text.find_first_not_of(L"0123456789.:") != Text::npos ? "more than numbers" : "";
}

// What is wrong with the locale; empty when nothing is.
std::string Wrong(const std::string& locale)
{
    const ScopedEnvironment environment("LC_ALL", locale.c_str());
    const Oracle dates(locale, UDAT_SHORT, UDAT_NONE);
    const Oracle times(locale, UDAT_NONE, UDAT_SHORT);
    const bool halfDay = times.IsHalfDay();
    for (const Moment& moment : s_moments)
    {
        const DateTime value(moment.m_uYear, moment.m_uMonth, moment.m_uDay, moment.m_uHour, moment.m_uMinute,
                             59);
        Text date;
        value.GetDate(date);
        Text time;
        value.GetTime(time);
        const wchar_t* const marker = !halfDay ? L"" : moment.m_uHour < 12 ? L"AM" : L"PM";
        const std::string wrongDate = WrongDate(date, NumbersOf(dates.Format(moment)));
        const std::string wrongTime = WrongTime(time, NumbersOf(times.Format(moment)), marker);
        if (!wrongDate.empty() || !wrongTime.empty())
            return "date: " + wrongDate + ", time: " + wrongTime + " in " +
                   testing::PrintToString(std::wstring(date + L" " + time));
    }
    return std::string();
}

} // namespace

TEST(LocalePatterns, KnowsTheFormsOfCommonLocales)
{
    const struct
    {
        const char* locale;
        const wchar_t* patterns;
    } rows[] = {
        {"en_US.UTF-8", L"M/d/yy h:mm a"},     {"en_GB.UTF-8", L"dd/MM/yyyy HH:mm"},
        {"de_AT.UTF-8", L"dd.MM.yy HH:mm"},    {"en_DK.UTF-8", L"dd/MM/yyyy HH.mm"},
        {"de_DE.UTF-8", L"dd.MM.yy HH:mm"},    {"de_DE@euro", L"dd.MM.yy HH:mm"},
        {"de_CH.UTF-8", L"dd.MM.yy HH:mm"},    {"fr_FR.UTF-8", L"dd/MM/yyyy HH:mm"},
        {"fr_CA.UTF-8", L"yyyy-MM-dd HH:mm"},  {"es_ES.UTF-8", L"d/M/yy H:mm"},
        {"it_IT.UTF-8", L"dd/MM/yy HH:mm"},    {"nl_NL.UTF-8", L"dd-MM-yyyy HH:mm"},
        {"pl_PL.UTF-8", L"d.MM.yyyy HH:mm"},   {"cs_CZ.UTF-8", L"dd.MM.yy H:mm"},
        {"hr_HR.UTF-8", L"dd.MM.yyyy. HH:mm"}, {"hu_HU.UTF-8", L"yyyy.MM.dd. H:mm"},
        {"bg_BG.UTF-8", L"d.MM.yy H:mm"},      {"sv_SE.UTF-8", L"yyyy-MM-dd HH:mm"},
        {"nb_NO.UTF-8", L"dd.MM.yyyy HH:mm"},  {"no_NO.UTF-8", L"dd.MM.yyyy HH:mm"},
        {"fi_FI.UTF-8", L"d.M.yyyy H.mm"},     {"ru_RU.UTF-8", L"dd.MM.yyyy HH:mm"},
        {"da_DK.UTF-8", L"dd.MM.yyyy HH.mm"},  {"tr_TR.UTF-8", L"d.MM.yyyy HH:mm"},
        {"el_GR.UTF-8", L"d/M/yy h:mm a"},     {"he_IL.UTF-8", L"d.M.yyyy H:mm"},
        {"tl_PH.UTF-8", L"M/d/yy h:mm a"},     {"in_ID.UTF-8", L"dd/MM/yy HH.mm"},
        {"iw_IL.UTF-8", L"d.M.yyyy H:mm"},     {"ar_EG.UTF-8", L"d/M/yyyy h:mm a"},
        {"fa_IR.UTF-8", L"yyyy/M/d H:mm"},     {"hi_IN.UTF-8", L"d/M/yy h:mm a"},
        {"th_TH.UTF-8", L"d/M/yy HH:mm"},      {"ja_JP.UTF-8", L"yyyy/MM/dd H:mm"},
        {"ko_KR.UTF-8", L"yy.M.d. a h:mm"},    {"zh_CN.UTF-8", L"yyyy/M/d HH:mm"},
        {"zh_TW.UTF-8", L"yyyy/M/d ah:mm"},    {"pt_BR.UTF-8", L"dd/MM/yyyy HH:mm"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(LocalePatterns::ShortPatternsOf(row.locale), row.patterns) << row.locale;

    // ICU's data of these two have changed since.
    const bool older = U_ICU_VERSION_MAJOR_NUM <= 72;
    EXPECT_EQ(LocalePatterns::ShortPatternsOf("en_CA.UTF-8"),
              older ? L"M/d/yy h:mm a" : L"yyyy-MM-dd h:mm a");
    EXPECT_EQ(LocalePatterns::ShortPatternsOf("sr_RS@latin"), older ? L"d.M.yy. HH:mm" : L"d.M.yyyy. HH:mm");
}

TEST(LocalePatterns, HasPatternsOfItsOwnForTheLocaleC)
{
    for (const char* const locale : {"C", "POSIX", "C.UTF-8", "C.utf8", "C@euro", ""})
        EXPECT_EQ(LocalePatterns::ShortPatternsOf(locale), L"MM/dd/yy HH:mm") << locale;
}

TEST(LocalePatterns, TakesWhatIsNoNameForTheLocaleC)
{
    const std::string names[] = {"de@=;",
                                 "@",
                                 "@@",
                                 "de-DE",
                                 "german",
                                 "a@b@c",
                                 "../de",
                                 "\xFF",
                                 std::string(300, 'x'),
                                 std::string(100000, '_')};
    for (const std::string& name : names)
        EXPECT_EQ(LocalePatterns::ShortPatternsOf(name), L"MM/dd/yy HH:mm") << name;
}

TEST(LocalePatterns, TakesAnUnknownLanguageForTheLocaleCWhateverTheDefaultLocale)
{
    const ScopedEnvironment environment("LANG", "de_DE.UTF-8");
    for (const char* const name : {"xx_XX", "qq", "zzz_DE.UTF-8", "xx_Latn_DE", "iu_Latn", "und"})
        EXPECT_EQ(LocalePatterns::ShortPatternsOf(name), L"MM/dd/yy HH:mm") << name;
}

TEST(LocalePatterns, TakesAnUnknownScriptForTheLanguageAloneWhateverTheDefaultLocale)
{
    const std::string before = uloc_getDefault();
    UErrorCode status = U_ZERO_ERROR;
    for (const char* const own : {"ja_JP", "ku_TR", "en_US_POSIX"})
    {
        uloc_setDefault(own, &status);
        EXPECT_EQ(LocalePatterns::ShortPatternsOf("be_BY@latin"), L"d.MM.yy HH:mm") << own;
        EXPECT_EQ(LocalePatterns::ShortPatternsOf("tt_RU@iqtelif"), L"dd.MM.yyyy H:mm") << own;
        EXPECT_EQ(LocalePatterns::ShortPatternsOf("de_Zzzz_DE"), L"dd.MM.yy HH:mm") << own;
    }
    uloc_setDefault(before.c_str(), &status);
    EXPECT_EQ(status, U_ZERO_ERROR);
    EXPECT_EQ(LocalePatterns::ShortPatternsOf("be_BY"), L"d.MM.yy HH:mm");
    EXPECT_EQ(LocalePatterns::ShortPatternsOf("tt_RU"), L"dd.MM.yyyy H:mm");
}

// "ht" has the data of a parent of another language, and "no_NO_NY" is an old name.
TEST(LocalePatterns, KnowsTheNamesThatIcuListsNowhere)
{
    const ScopedEnvironment environment("LANG", "en_US.UTF-8");
    const struct
    {
        const char* locale;
        const char* same;
    } rows[] = {
        {"ht_HT", "fr_HT"},        {"ht_HT.UTF-8", "fr_HT"},    {"ht", "fr_HT"},
        {"no_NO_NY", "nn_NO"},     {"no_NO_NY.UTF-8", "nn_NO"}, {"be_tarask", "be"},
        {"be_TARASK", "be"},       {"be_BY_tarask", "be_BY"},   {"be_BY@tarask", "be_BY"},
        {"be_tarask@latin", "be"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(LocalePatterns::ShortPatternsOf(row.locale), LocalePatterns::ShortPatternsOf(row.same))
            << row.locale;
        EXPECT_NE(LocalePatterns::ShortPatternsOf(row.locale), L"MM/dd/yy HH:mm") << row.locale;
    }
}

TEST(LocalePatterns, KeepsTheScriptsThatTheLanguageHas)
{
    for (const char* const name : {"ks_IN@devanagari", "ks_Deva_IN", "ks_deva_IN"})
        EXPECT_EQ(LocalePatterns::ShortPatternsOf(name), L"d/M/yy a h:mm") << name;
    EXPECT_EQ(LocalePatterns::ShortPatternsOf("ks_IN"), L"M/d/yy h:mm a");
}

TEST(LocalePatterns, TakesAnUnknownCountryForTheLanguageAlone)
{
    EXPECT_EQ(LocalePatterns::ShortPatternsOf("de_XX.UTF-8"), LocalePatterns::ShortPatternsOf("de"));
    EXPECT_EQ(LocalePatterns::ShortPatternsOf("fr_ZZ"), LocalePatterns::ShortPatternsOf("fr"));
}

TEST(LocalePatterns, AreAskedForAgainWhenThereWasNoMemory)
{
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, &Allocate, &Reallocate, &Free, &status);
    ASSERT_EQ(status, U_ZERO_ERROR);
    Text format;
    {
        const ScopedEnvironment other("LC_ALL", "C");
        Locales::GetCurrentDateFormat(format);
    }
    const ScopedEnvironment environment("LC_ALL", "fr_CA.UTF-8");
    // ICU remembers some refusals itself when it is asked first.
    ASSERT_EQ(LocalePatterns::ShortPatternsOf("fr_CA.UTF-8"), L"yyyy-MM-dd HH:mm");
    s_iRefusals = 1;
    Locales::GetCurrentDateFormat(format);
    EXPECT_EQ(s_iRefusals, 0);
    EXPECT_EQ(format, L"MM/dd/yy HH:mm");
    Locales::GetCurrentDateFormat(format);
    EXPECT_EQ(format, L"yyyy-MM-dd HH:mm");
}

TEST(LocalePatterns, UsesTheGregorianCalendarEverywhere)
{
    const ScopedEnvironment environment("LC_ALL", "th_TH.UTF-8");
    Text date;
    DateTime(2009, 3, 7, 14, 5, 9).GetDate(date);
    EXPECT_EQ(date, L"7/03/09");
}

// The locales whose short forms are not ICU's own: they have the months in Roman numerals, here they are
// decimal.
TEST(LocalePatterns, GivesTheRightNumbersInEveryLocale)
{
    const std::string roman = "date: other numbers, time:  in L\"7/03/09 2:05 PM\"";
    const std::map<std::string, std::string> known = {{"haw", roman}, {"haw_US", roman}};
    std::map<std::string, std::string> wrong;
    UErrorCode status = U_ZERO_ERROR;
    UEnumeration* const locales = uloc_openAvailableByType(ULOC_AVAILABLE_WITH_LEGACY_ALIASES, &status);
    const int count = uenum_count(locales, &status);
    while (const char* const locale = uenum_next(locales, nullptr, &status))
    {
        const std::string reason = Wrong(locale);
        if (!reason.empty())
            wrong[locale] = reason;
    }
    uenum_close(locales);
    EXPECT_EQ(status, U_ZERO_ERROR);
    EXPECT_GE(count, 850);
    EXPECT_EQ(wrong, known);
}
