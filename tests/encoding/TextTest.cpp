// SPDX-License-Identifier: MIT
#include "toolkit/encoding/Text.h"

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/PlainUtf8.h"

using namespace std::string_literals;
using Toolkit::Errc;
using Toolkit::Result;
using Toolkit::Text;

TEST(Text, ConvertsToWideAndBack)
{
    const std::pair<std::string, std::wstring> rows[] = {
        {"", L""},
        {"abc", L"abc"},
        {"gr\u00f6\u00dfe", L"gr\u00f6\u00dfe"},
        {"\u5c71\U0001F600", L"\u5c71\U0001F600"},
        {"a\0b\0"s, L"a\0b\0"s},
        {"\0"s, L"\0"s},
    };
    for (const auto& [utf8, wide] : rows)
    {
        const Result<std::wstring> there = Text::ToWide(utf8);
        ASSERT_TRUE(there) << utf8;
        EXPECT_EQ(*there, wide);
        const Result<std::string> back = Text::FromWide(wide);
        ASSERT_TRUE(back) << utf8;
        EXPECT_EQ(*back, utf8);
        EXPECT_TRUE(Text::IsUtf8(utf8));
    }
}

TEST(Text, SaysWhereUtf8IsBroken)
{
    const std::pair<std::string, std::size_t> rows[] = {
        {"abc\xFF", 3},
        {"\xC0\x80", 0},
        {"a\xED\xA0\x80", 1},
        {"\xF4\x90\x80\x80", 0},
        {"\u00f6\xC3", 2},
        {"aaaaaaaaaaaaaaaa\x80", 16},
        {"aaaaaaaaaaaaaaa\u00f6\xE2\x82", 17},
        {"\0\x80"s, 1},
    };
    for (const auto& [bytes, position] : rows)
    {
        EXPECT_FALSE(Text::IsUtf8(bytes));
        const Result<std::wstring> wide = Text::ToWide(bytes);
        ASSERT_FALSE(wide);
        EXPECT_EQ(wide.error().Code(), Errc::Malformed);
        EXPECT_EQ(wide.error().Message(),
                  "cannot convert from UTF-8: byte " + std::to_string(position) + " begins no character");
    }
}

TEST(Text, KnowsUtf8AsThePlainFormDoes)
{
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round)
    {
        std::string bytes(random() % 24, 'a');
        for (int i = 0; i < 3 && !bytes.empty(); ++i)
            bytes[random() % bytes.size()] =
                static_cast<char>("\xC3\xB6\xE2\x82\xAC\xF0\x9F\x98\x80\xED\xF4\x90"[random() % 12]);
        const bool plain = bytes.empty() || !ToolkitTest::PlainUtf8::Decode(bytes).empty();
        ASSERT_EQ(Text::IsUtf8(bytes), plain) << ::testing::PrintToString(bytes);
        ASSERT_EQ(Text::ToWide(bytes).has_value(), plain);
    }
}

TEST(Text, SaysWhichWideElementIsNoCharacter)
{
    for (const wchar_t broken :
         {L'\xD800', L'\xDFFF', static_cast<wchar_t>(0x110000), static_cast<wchar_t>(-1)})
    {
        const std::wstring wide = {L'a', L'b', broken};
        const Result<std::string> text = Text::FromWide(wide);
        ASSERT_FALSE(text);
        EXPECT_EQ(text.error().Code(), Errc::Malformed);
        EXPECT_EQ(text.error().Message(), "cannot convert from wide text: element 2 begins no character");
        EXPECT_EQ(*Text::FromWide(wide, Text::Replace), "ab\uFFFD");
    }
}

TEST(Text, ReplacesWhatIsBrokenOnlyWhenAsked)
{
    EXPECT_EQ(*Text::ToWide("a\xFFz\xC3", Text::Replace), L"a\uFFFDz\uFFFD");
    EXPECT_EQ(*Text::ToWide("\xE2\x82z\0"s, Text::Replace), L"\uFFFDz\0"s);
    EXPECT_EQ(*Text::ToWide("gr\u00f6\u00dfe", Text::Replace), L"gr\u00f6\u00dfe");
}

TEST(Text, ConvertsFromCharsets)
{
    const struct
    {
        std::string bytes;
        const char* charset;
        std::string text;
    } rows[] = {
        {"gr\xF6\xDF"s + "e", "iso-8859-1", "gr\u00f6\u00dfe"},
        {"gr\xF6\xDF"s + "e", "ISO-8859-1", "gr\u00f6\u00dfe"},
        {"\x80", "windows-1252", "\u20ac"},
        {"\xA4", "iso-8859-15", "\u20ac"},
        {"abc\0d"s, "us-ascii", "abc\0d"s},
        {"\x93\xFA", "shift_jis", "\u65e5"},
        {"\x1B$B$\"\x1B(B", "iso-2022-jp", "\u3042"},
        {"\xCF\xF0", "koi8-r", "\u043e\u041f"},
        {"\xFE\xFF\0a\xD8\x3D\xDE\0"s, "utf-16", "a\U0001F600"},
        {"a\0\0\0"s, "utf-32le", "a"},
        {"gr\u00f6", "utf-8", "gr\u00f6"},
        {"+AOQ-", "utf-7", "\u00e4"},
        {"", "iso-8859-1", ""},
    };
    for (const auto& row : rows)
    {
        const Result<std::string> text = Text::FromCharset(row.bytes, row.charset);
        ASSERT_TRUE(text) << text.error().Message();
        EXPECT_EQ(*text, row.text) << row.charset;
    }
}

TEST(Text, ConvertsEveryByteOfLatin1BothWays)
{
    std::string bytes;
    for (int round = 0; round < 1000; ++round)
        for (int byte = 0; byte < 256; ++byte)
            bytes += static_cast<char>(byte);
    const Result<std::string> text = Text::FromCharset(bytes, "iso-8859-1");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->size(), 1000U * (128 + 2 * 128));
    const Result<std::string> back = Text::ToCharset(*text, "iso-8859-1");
    ASSERT_TRUE(back);
    EXPECT_TRUE(*back == bytes);
}

TEST(Text, ConvertsLongTextsOfManyBytesACharacter)
{
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += i % 3 == 0 ? "a" : "\u65e5";
    for (const char* charset : {"shift_jis", "iso-2022-jp", "utf-16", "utf-8", "utf-7"})
    {
        const Result<std::string> bytes = Text::ToCharset(text, charset);
        ASSERT_TRUE(bytes) << bytes.error().Message();
        const Result<std::string> back = Text::FromCharset(*bytes, charset);
        ASSERT_TRUE(back) << back.error().Message();
        EXPECT_TRUE(*back == text) << charset;
    }
}

TEST(Text, SaysWhereACharsetIsBroken)
{
    const Result<std::string> text = Text::FromCharset("abc\x80", "us-ascii");
    ASSERT_FALSE(text);
    EXPECT_EQ(text.error().Code(), Errc::Malformed);
    EXPECT_EQ(text.error().Message(), "cannot convert from us-ascii to utf-8: byte 3 begins no character");
    EXPECT_EQ(*Text::FromCharset("abc\x80z", "us-ascii", Text::Replace), "abc\uFFFDz");
    EXPECT_FALSE(Text::FromCharset("\xD8\x3D"s, "utf-16be"));
    EXPECT_EQ(*Text::FromCharset("\xD8\x3D"s, "utf-16be", Text::Replace), "\uFFFD");
    EXPECT_EQ(*Text::FromCharset("\x93", "shift_jis", Text::Replace), "\uFFFD");
}

TEST(Text, LeavesNothingOutOnTheWayToACharset)
{
    // The soft hyphen, the joiner and the mark are not shown, and ICU would leave them out.
    for (const char* text : {"a\u20ac", "a\u00ad", "a\u200d", "a\uFEFF", "a\U0001F600"})
    {
        const Result<std::string> bytes = Text::ToCharset(text, "us-ascii");
        ASSERT_FALSE(bytes) << text;
        EXPECT_EQ(bytes.error().Code(), Errc::Malformed);
        EXPECT_NE(bytes.error().Message().find("has no form there"), std::string::npos)
            << bytes.error().Message();
        EXPECT_EQ(*Text::ToCharset(text, "us-ascii", Text::Replace), "a?");
    }
    EXPECT_FALSE(Text::ToCharset("a\xFF", "utf-16"));
}

TEST(Text, RefusesUnknownCharsets)
{
    for (const char* charset :
         {"", "no-such-charset", "../iso-8859-1", "iso-8859-1,swaplfnl", "a/b", "gr\u00f6\u00dfe"})
    {
        const Result<std::string> text = Text::FromCharset("a", charset, Text::Replace);
        ASSERT_FALSE(text) << charset;
        EXPECT_EQ(text.error().Code(), std::errc::invalid_argument);
        EXPECT_NE(text.error().Message().find("\"" + std::string(charset) + "\" is no charset"),
                  std::string::npos);
        EXPECT_FALSE(Text::ToCharset("a", charset));
    }
    EXPECT_FALSE(Text::FromCharset("a", std::string(500, 'x')));
    EXPECT_FALSE(Text::FromCharset("a", "utf-8\0x"s));
}
