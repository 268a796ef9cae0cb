// SPDX-License-Identifier: MIT
#include "toolkit/encoding/EncodedWords.h"

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "toolkit/encoding/Text.h"

using Toolkit::EncodedWords;
using Toolkit::Errc;
using Toolkit::Result;
using Toolkit::Text;

namespace
{

struct Row
{
    std::string header;
    std::string text;
};

void CheckDecoded(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(row.text, EncodedWords::Decode(row.header)) << row.header;
}

// What the standard asks of a header in words.
void CheckWords(const std::string& header)
{
    for (std::size_t begin = 0; begin < header.size();)
    {
        const std::size_t end = std::min(header.find(' ', begin), header.size());
        const std::string word = header.substr(begin, end - begin);
        ASSERT_LE(word.size(), 75U);
        ASSERT_EQ("=?", word.substr(0, 2));
        ASSERT_EQ("?=", word.substr(word.size() - 2));
        begin = end + 1;
    }
}

} // namespace

TEST(EncodedWords, DecodesTheExamplesOfTheStandard)
{
    CheckDecoded({
        {"=?US-ASCII?Q?Keith_Moore?= <moore@cs.utk.edu>", "Keith Moore <moore@cs.utk.edu>"},
        {"=?ISO-8859-1?Q?Keld_J=F8rn_Simonsen?= <keld@dkuug.dk>", "Keld J\u00f8rn Simonsen <keld@dkuug.dk>"},
        {"=?ISO-8859-1?Q?Andr=E9?= Pirard <PIRARD@vm1.ulg.ac.be>",
         "Andr\u00e9 Pirard <PIRARD@vm1.ulg.ac.be>"},
        {"=?ISO-8859-1?B?SWYgeW91IGNhbiByZWFkIHRoaXMgeW8=?=\r\n "
         "=?ISO-8859-2?B?dSB1bmRlcnN0YW5kIHRoZSBleGFtcGxlLg==?=",
         "If you can read this you understand the example."},
        {"Nathaniel Borenstein <nsb@thumper.bellcore.com> (=?iso-8859-8?b?7eXs+SDv4SDp7Oj08A==?=)",
         "Nathaniel Borenstein <nsb@thumper.bellcore.com> "
         "(\u05dd\u05d5\u05dc\u05e9 \u05df\u05d1 \u05d9\u05dc\u05d8\u05e4\u05e0)"},
        {"(=?ISO-8859-1?Q?a?=)", "(a)"},
        {"(=?ISO-8859-1?Q?a?= b)", "(a b)"},
        {"(=?ISO-8859-1?Q?a?= =?ISO-8859-1?Q?b?=)", "(ab)"},
        {"(=?ISO-8859-1?Q?a?=  =?ISO-8859-1?Q?b?=)", "(ab)"},
        {"(=?ISO-8859-1?Q?a?=\r\n    =?ISO-8859-1?Q?b?=)", "(ab)"},
        {"(=?ISO-8859-1?Q?a_b?=)", "(a b)"},
        {"(=?ISO-8859-1?Q?a?= =?ISO-8859-2?Q?_b?=)", "(a b)"},
    });
}

TEST(EncodedWords, DecodesEveryCharset)
{
    CheckDecoded({
        {"=?utf-8?Q?Caf=C3=A9?=", "Caf\u00e9"},
        {"=?UTF-8?b?4oKs?=", "\u20ac"},
        {"=?iso-2022-jp?B?GyRCOzNFRBsoQiAbJEIyVjtSGyhC?=", "\u5c71\u7530 \u82b1\u5b50"},
        {"=?koi8-r?Q?=F0=D2=C9=D7=C5=D4?=", "\u041f\u0440\u0438\u0432\u0435\u0442"},
        {"=?gb2312?B?xOO6ww==?=", "\u4f60\u597d"},
        {"=?eucgb2312_cn?b?xOO6ww==?=", "\u4f60\u597d"},
        {"=?big5_tw?b?pHOl0A==?=", "\u5c71\u7530"},
        {"=?windows-1252?Q?=80_5?=", "\u20ac 5"},
        {"=?utf-8*de-CH?Q?Z=C3=BCrich?=", "Z\u00fcrich"},
        {"=?utf-8?Q?\?=", ""},
    });
}

TEST(EncodedWords, JoinsNeighbours)
{
    CheckDecoded({
        // A character that is divided among words.
        {"=?utf-8?Q?=C3?= =?UTF-8?B?qQ==?=", "\u00e9"},
        {"=?utf-8?Q?a?==?utf-8?Q?b?=", "ab"},
        {"=?utf-8?Q?a?=\t \r\n\t=?iso-8859-1?Q?=E4?=", "a\u00e4"},
        {"=?utf-8?Q?a?= - =?utf-8?Q?b?=", "a - b"},
        {" =?utf-8?Q?a?= ", " a "},
        {"=?utf-8?Q?=C3?= x =?utf-8?Q?=A9?=", "\uFFFD x \uFFFD"},
    });
}

TEST(EncodedWords, LeavesWhatIsNoWord)
{
    for (const char* const header :
         {"",
          "plain",
          "\xE4 byte",
          "=?",
          "?=",
          "=?=",
          "=?\?=",
          "=?utf-8?=",
          "=?utf-8?Q?",
          "=?utf-8?Q?a",
          "=?utf-8?Q?a?",
          "=?utf-8?X?a?=",
          "=?utf-8??a?=",
          "=?utf-8?Q?a\r\n?=",
          "=?utf-8?QQ?a?=",
          "=??Q?a?=",
          "=?*de?Q?a?=",
          "=?utf-8?B?a*b?=",
          "=?utf-8?B?abcde?=",
          "=?utf-8?B?ab?cd?=",
          "a =?no-such-charset?Q?a?=\r\n =?no-such-charset?Q?b?= c",
          "=?a-name-that-is-longer-than-any-name-of-a-charset-can-possibly-ever-be-here?Q?a?="})
        EXPECT_EQ(header, EncodedWords::Decode(header));
}

TEST(EncodedWords, DecodesWhatIsOnlySlightlyBroken)
{
    CheckDecoded({
        {"=?utf-8?Q?two words?=", "two words"},
        {"=?utf-8?Q?Really?\?=", "Really?"},
        {"=?utf-8?Q?=4_=GG?=", "=4 =GG"},
        {"=?utf-8?Q?a==?=", "a=="},
        {"=?utf-8?B?Zg?=", "f"},
        {"=?utf-8?B?Zg=?=", "f"},
        {"=?utf-8?B?Zm9v=?=", "foo"},
        {"=?utf-8?B?Zh==?=", "f"},
        {"=?utf-8?B?Zm 9v?=", "foo"},
        {"=?utf-8?Q?=E4bc?=", "\uFFFD"
                              "bc"},
        {"=?us-ascii?Q?=E4?=", "\uFFFD"},
        {"=?utf-8?Q?a =?utf-8?Q?b?=", "=?utf-8?Q?a b"},
        // One that is not known beside ones that are.
        {"=?utf-8?Q?a?= =?none?Q?b?= =?utf-8?Q?c?=", "a =?none?Q?b?= c"},
        {"=?none?Q?b?==?utf-8?Q?c?=", "=?none?Q?b?=c"},
    });
}

TEST(EncodedWords, TakesTimeThatIsLinearInTheHeader)
{
    for (const std::string part :
         {"=?", "=?a?Q?", "=?a?B?*", "=?a?Q?b\n", "=?utf-8?Q?a?= ", "=?utf-8?B?=?=", "=?a?Q?=?=", "?="})
    {
        std::string header;
        while (header.size() < 300000)
            header += part;
        for (const char* const end : {"", "?=", "\n"})
            EXPECT_LE(EncodedWords::Decode(header + end).size(), header.size() + 2);
    }
}

TEST(EncodedWords, EncodesOnlyWhatNeedsIt)
{
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"plain ASCII, <as> \"it\" is", "plain ASCII, <as> \"it\" is"},
        {"Caf\u00e9", "=?utf-8?Q?Caf=C3=A9?="},
        {"a \u00e4_b?=", "=?utf-8?B?YSDDpF9iPz0=?="},
        {"=?utf-8?Q?a?=", "=?utf-8?Q?=3D=3Futf-8=3FQ=3Fa=3F=3D?="},
        {"a\r\nBcc: b", "=?utf-8?Q?a=0D=0ABcc=3A_b?="},
        {"\u5c71\u7530", "=?utf-8?B?5bGx55Sw?="},
    };
    for (const auto& [text, header] : rows)
    {
        EXPECT_EQ(header, EncodedWords::Encode(text).value_or("failed"));
        EXPECT_EQ(text, EncodedWords::Decode(header));
    }
    EXPECT_EQ("=?iso-8859-1?Q?Caf=E9?=", EncodedWords::Encode("Caf\u00e9", "iso-8859-1").value_or("failed"));
}

TEST(EncodedWords, SaysWhatItCannotEncode)
{
    EXPECT_EQ(Errc::Malformed, EncodedWords::Encode("a\xE4").error().Code());
    EXPECT_EQ(Errc::Malformed, EncodedWords::Encode("\u20ac", "iso-8859-1").error().Code());
    EXPECT_EQ(std::errc::invalid_argument, EncodedWords::Encode("a", "none").error().Code());
    // A name that ICU knows, and that is longer than most.
    const std::string name = "Extended_UNIX_Code_Packed_Format_for_Japanese";
    EXPECT_EQ("\u5c71", EncodedWords::Decode(EncodedWords::Encode("\u5c71", name).value_or("failed")));
    EXPECT_EQ("cannot encode in ISO_8859-1:1987: its name cannot stand in a word",
              EncodedWords::Encode("\u00fc", "ISO_8859-1:1987").error().Message());
    EXPECT_EQ(std::errc::invalid_argument, EncodedWords::Encode("\u00fc", "utf-8?").error().Code());
    EXPECT_EQ("plain", *EncodedWords::Encode("plain", "ISO_8859-1:1987"));
    const std::string longest = "UTF" + std::string(55, '-') + "8";
    EXPECT_EQ("cannot encode in " + longest + ": its name leaves a word no room",
              EncodedWords::Encode("a smile: \U0001F600", longest).error().Message());
    EXPECT_EQ("\u5c71", EncodedWords::Decode(EncodedWords::Encode("\u5c71", longest).value_or("failed")));
}

TEST(EncodedWords, DecodesWhateverItEncodes)
{
    const struct
    {
        const char* charset;
        std::wstring characters;
    } rows[] = {
        {"utf-8", L"ab =?_\r\n\t\u00e4\u20ac\u5c71\U0001F600"},
        {"iso-8859-1", L"ab =?_\u00e4\u00ff"},
        {"koi8-r", L"ab \u041f\u0440\u0438"},
        {"iso-2022-jp", L"ab \u5c71\u7530\u82b1"},
        {"shift_jis", L"ab \u5c71\u7530\u82b1"},
        {"euc-kr", L"ab \uc0b0\uc77c"},
        {"big5", L"ab \u5c71\u7530"},
        {"gb18030", L"ab \u5c71\u00e4\U0001F600"},
        {"utf-16be", L"ab \u5c71\u00e4\U0001F600"},
        {"utf-7", L"ab \u5c71\u00e4"},
    };
    std::mt19937 random(2047);
    for (const auto& row : rows)
        for (int round = 0; round < 60; ++round)
        {
            std::wstring wide(random() % 120, L'\0');
            for (wchar_t& character : wide)
                character = row.characters[random() % row.characters.size()];
            const std::string text = Text::FromWide(wide).value();
            const Result<std::string> header = EncodedWords::Encode(text, row.charset);
            ASSERT_TRUE(header) << row.charset << ": " << header.error().Message();
            ASSERT_EQ(text, EncodedWords::Decode(*header)) << *header;
            if (*header != text)
                CheckWords(*header);
        }
}
