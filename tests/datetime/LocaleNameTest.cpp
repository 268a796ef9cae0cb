// SPDX-License-Identifier: MIT
#include "toolkit/internal/icu/LocaleName.h"

#include <gtest/gtest.h>

using Toolkit::LocaleName;

TEST(LocaleName, TakesNamesOfTheEnvironment)
{
    const struct
    {
        const char* name;
        const char* id;
        const char* language;
    } rows[] = {
        {"de", "de", "de"},
        {"de_DE", "de_DE", "de"},
        {"de_DE.UTF-8", "de_DE", "de"},
        {"de_DE.utf8", "de_DE", "de"},
        {"de_DE.ISO8859-15@euro", "de_DE", "de"},
        {"de_DE@euro", "de_DE", "de"},
        {"de@euro", "de", "de"},
        {"ja_JP.eucJP", "ja_JP", "ja"},
        {"ja_JP.SHIFT_JIS", "ja_JP", "ja"},
        {"fil_PH", "fil_PH", "fil"},
        {"es_419", "es_419", "es"},
        {"en_001", "en_001", "en"},
        {"zh_Hant_TW", "zh_Hant_TW", "zh"},
        {"zh_Hant", "zh_Hant", "zh"},
        {"zh_hANT_TW", "zh_Hant_TW", "zh"},
        {"en_US_POSIX", "en_US_POSIX", "en"},
        {"sl_IT_NEDIS", "sl_IT_NEDIS", "sl"},
        {"de_CH_1996", "de_CH_1996", "de"},
        {"no_NO_NY", "no_NO_NY", "no"},
        {"be_tarask", "be__tarask", "be"},
        {"be_tarask.UTF-8", "be__tarask", "be"},
        {"be_Cyrl_tarask", "be_Cyrl__tarask", "be"},
        {"be_BY_tarask", "be_BY_tarask", "be"},
        {"de_1996", "de__1996", "de"},
        {"de_POSIX", "de__POSIX", "de"},
    };
    for (const auto& row : rows)
    {
        const LocaleName name(row.name);
        EXPECT_TRUE(name.IsValid()) << row.name;
        EXPECT_EQ(name.Id(), row.id) << row.name;
        EXPECT_EQ(name.Language(), row.language) << row.name;
    }
}

TEST(LocaleName, TakesModifiersThatStandForAScriptOrAVariant)
{
    const struct
    {
        const char* name;
        const char* id;
    } rows[] = {
        {"sr_RS@latin", "sr_Latn_RS"},
        {"sr_RS.UTF-8@latin", "sr_Latn_RS"},
        {"sr@latin", "sr_Latn"},
        {"uz_UZ@cyrillic", "uz_Cyrl_UZ"},
        {"sd_IN@devanagari", "sd_Deva_IN"},
        {"tt_RU@iqtelif", "tt_Latn_RU"},
        {"az_IR@arabic", "az_Arab_IR"},
        {"ca_ES@valencia", "ca_ES_VALENCIA"},
        {"ca@valencia", "ca"},
        {"sr_Cyrl_RS@latin", "sr_Cyrl_RS"},
        {"ca_ES_OTHER@valencia", "ca_ES_OTHER"},
        {"be_BY@tarask", "be_BY"},
        {"sr_RS@Latin", "sr_RS"},
        {"sr_RS@lat", "sr_RS"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(LocaleName(row.name).Id(), row.id) << row.name;
}

TEST(LocaleName, KnowsAndForgetsItsScript)
{
    EXPECT_EQ(LocaleName("zh_Hant").Script(), "Hant");
    EXPECT_EQ(LocaleName("sr_RS.UTF-8@latin").Script(), "Latn");
    EXPECT_EQ(LocaleName("de_DE").Script(), "");
    EXPECT_EQ(LocaleName("zh_Hant").WithoutScript().Id(), "zh");
    EXPECT_EQ(LocaleName("sr_Latn_RS_ABCDE").WithoutScript().Id(), "sr_RS_ABCDE");
    EXPECT_EQ(LocaleName("be_Cyrl_tarask").WithoutScript().Id(), "be__tarask");
    EXPECT_EQ(LocaleName("sr_RS@latin").WithoutScript().Script(), "");
    EXPECT_EQ(LocaleName("de_DE").WithoutScript().Id(), "de_DE");
    EXPECT_EQ(LocaleName("C").WithoutScript().Id(), "");
}

TEST(LocaleName, RefusesEverythingElse)
{
    const std::string rows[] = {
        "",
        "C",
        "POSIX",
        "C.UTF-8",
        "C@euro",
        "c",
        "posix",
        "german",
        "d",
        "d1",
        "_",
        "_DE",
        "de_",
        "de_D",
        "de_DEU",
        "de__DE",
        "de_DE_",
        "de_DE_x",
        "de_DE_xx",
        "de_DE_ny",
        "de_toolongvariant",
        "be_tarask_BY",
        "be_tarask_1996",
        "be__tarask",
        "de_DE_toolongvariant",
        "de_DE_1996_1901",
        "de_Latn_Latn_DE",
        "de-DE",
        "d[_DE",
        "d{_DE",
        "de DE",
        " de_DE",
        "de_DE ",
        "de_DE.",
        "de_DE.@euro",
        "de_DE@",
        "de_DE.UTF-8@",
        "de_DE@euro@latin",
        "de_DE@calendar=japanese",
        "de_DE@euro.UTF-8",
        "de_DE.UTF-8.UTF-8",
        "de_DE.UTF 8",
        "de@=;",
        "@",
        ".",
        ".UTF-8",
        "en_US:de_DE",
        "../../etc/passwd",
        "/usr/share",
        "%s%n",
        "d\xC3\xA4",
        "\xFF\xFE",
        "de_\xC3\x84\xC3\x96",
        std::string("de\0DE", 5),
        std::string(300, 'x'),
        "de_" + std::string(300, 'D'),
        "de_DE." + std::string(300, 'U'),
        "de_DE@" + std::string(300, 'e'),
        std::string(100000, '_'),
    };
    for (const std::string& row : rows)
    {
        const LocaleName name(row);
        EXPECT_FALSE(name.IsValid()) << row;
        EXPECT_EQ(name.Id(), "") << row;
        EXPECT_EQ(name.Language(), "") << row;
    }
}
