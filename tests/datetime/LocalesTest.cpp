// SPDX-License-Identifier: MIT
#include "toolkit/datetime/Locales.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"

namespace
{

using Toolkit::Locales;
using Text = Toolkit::TString<wchar_t>;
using ToolkitTest::CapturedOutput;
using ToolkitTest::ScopedEnvironment;

Text Format()
{
    Text format = L"old";
    EXPECT_TRUE(Locales::GetCurrentDateFormat(format));
    return format;
}

Text FormatWith(const char* all, const char* time, const char* lang)
{
    const ScopedEnvironment allVariable("LC_ALL", all);
    const ScopedEnvironment timeVariable("LC_TIME", time);
    const ScopedEnvironment langVariable("LANG", lang);
    return Format();
}

const wchar_t* const s_strGerman = L"dd.MM.yy HH:mm";
const wchar_t* const s_strAmerican = L"M/d/yy h:mm a";
const wchar_t* const s_strFrench = L"dd/MM/yyyy HH:mm";
const wchar_t* const s_strOfC = L"MM/dd/yy HH:mm";

} // namespace

TEST(Locales, JoinsTheShortDateAndTimePatternsByOneSpace)
{
    EXPECT_EQ(FormatWith("de_DE.UTF-8", nullptr, nullptr), s_strGerman);
    EXPECT_EQ(FormatWith("en_US.UTF-8", nullptr, nullptr), s_strAmerican);
    EXPECT_EQ(FormatWith("ko_KR.UTF-8", nullptr, nullptr), L"yy.M.d. a h:mm");
}

TEST(Locales, TakesTheFirstOfTheThreeVariablesThatIsNotEmpty)
{
    const struct
    {
        const char* all;
        const char* time;
        const char* lang;
        const wchar_t* format;
    } rows[] = {
        {"de_DE.UTF-8", "en_US.UTF-8", "fr_FR.UTF-8", s_strGerman},
        {nullptr, "en_US.UTF-8", "fr_FR.UTF-8", s_strAmerican},
        {nullptr, nullptr, "fr_FR.UTF-8", s_strFrench},
        {"", "en_US.UTF-8", "fr_FR.UTF-8", s_strAmerican},
        {"", "", "fr_FR.UTF-8", s_strFrench},
        {"de_DE.UTF-8", nullptr, nullptr, s_strGerman},
        {nullptr, nullptr, nullptr, s_strOfC},
        {"", "", "", s_strOfC},
        {"C", "en_US.UTF-8", "fr_FR.UTF-8", s_strOfC},
        {nullptr, "POSIX", "fr_FR.UTF-8", s_strOfC},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FormatWith(row.all, row.time, row.lang), row.format);
}

TEST(Locales, TakesAMalformedNameForTheLocaleCAndLooksNoFurther)
{
    for (const char* const name : {"de@=;", "@", "german", "de-DE", "a@b@c", "../../de", "%s%n", "\xFF\xFE"})
    {
        EXPECT_EQ(FormatWith(name, "de_DE.UTF-8", "de_DE.UTF-8"), s_strOfC) << name;
        EXPECT_EQ(FormatWith(nullptr, nullptr, name), s_strOfC) << name;
    }
    EXPECT_EQ(FormatWith(std::string(100000, 'x').c_str(), nullptr, nullptr), s_strOfC);
}

TEST(Locales, SurvivesMalformedNamesInTheVariablesThatAreNotAsked)
{
    for (const char* const name : {"de@=;", "@", "\xFF\xFE", ""})
    {
        const ScopedEnvironment messages("LC_MESSAGES", name);
        EXPECT_EQ(FormatWith(nullptr, "de_AT.UTF-8", name), L"dd.MM.yy HH:mm");
        EXPECT_EQ(FormatWith("fr_BE.UTF-8", name, name), L"d/MM/yy HH:mm");
    }
}

TEST(Locales, ShowsAChangedLocaleAtTheNextCall)
{
    const ScopedEnvironment german("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(Format(), s_strGerman);
    EXPECT_EQ(Format(), s_strGerman);
    {
        const ScopedEnvironment american("LC_ALL", "en_US.UTF-8");
        EXPECT_EQ(Format(), s_strAmerican);
        EXPECT_EQ(Format(), s_strAmerican);
    }
    EXPECT_EQ(Format(), s_strGerman);
}

TEST(Locales, AnswersEveryThreadTheSame)
{
    for (const char* const locale : {"it_IT.UTF-8", "ja_JP.UTF-8", "pt_BR.UTF-8", "C"})
    {
        const ScopedEnvironment environment("LC_ALL", locale);
        std::vector<Text> formats(8);
        std::vector<std::thread> threads;
        for (Text& format : formats)
            threads.emplace_back(
                [&format]
                {
                    for (int i = 0; i < 200; ++i)
                        Locales::GetCurrentDateFormat(format);
                });
        for (std::thread& thread : threads)
            thread.join();
        const Text expected = Format();
        for (const Text& format : formats)
            EXPECT_EQ(format, expected);
    }
}

TEST(Locales, IsSilentWhateverTheLocale)
{
    CapturedOutput output(2);
    FormatWith("de@=;", nullptr, nullptr);
    FormatWith("xx_XX.UTF-8", nullptr, nullptr);
    FormatWith("ar_EG.UTF-8", nullptr, nullptr);
    EXPECT_EQ(output.Stop(), "");
}

TEST(Locales, HasOneDecimalSeparatorAndSaysThatItIsNotTheLocales)
{
    for (const char* const locale : {"C", "de_DE.UTF-8", "en_US.UTF-8", "fr_FR.UTF-8"})
    {
        const ScopedEnvironment environment("LC_ALL", locale);
        Text separator = L"old";
        EXPECT_FALSE(Locales::GetDecimalSeparator(separator));
        EXPECT_EQ(separator, L".");
    }
}
