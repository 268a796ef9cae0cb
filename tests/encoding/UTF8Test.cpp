// SPDX-License-Identifier: MIT
#include "toolkit/encoding/UTF8.h"

#include <cstdint>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <wx/strconv.h>
#include <wx/string.h>

#include "tests/reference/PlainUtf8.h"

using Toolkit::TString;
using Toolkit::UTF8;

namespace
{

bool IsSurrogate(std::uint32_t value)
{
    return value >= 0xD800 && value <= 0xDFFF;
}

std::wstring Wide(std::uint32_t value)
{
    return std::wstring(1, static_cast<wchar_t>(value));
}

// A value in as many bytes as told, whether or not that is a valid form.
std::string Form(std::uint32_t value, int bytes)
{
    if (bytes == 1)
        return std::string(1, static_cast<char>(value));
    static const unsigned int s_uLeads[] = {0, 0, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};
    std::string form(1, static_cast<char>(s_uLeads[bytes] | (value >> (6 * (bytes - 1)))));
    for (int i = bytes - 2; i >= 0; --i)
        form += static_cast<char>(0x80U | ((value >> (6 * i)) & 0x3FU));
    return form;
}

int ShortestForm(std::uint32_t value)
{
    return value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
}

std::uint32_t RandomCharacter(std::mt19937& random)
{
    static const std::uint32_t s_uLimits[] = {0x80, 0x800, 0x10000, 0x110000};
    std::uint32_t value = 0;
    while (value == 0 || IsSurrogate(value))
        value = static_cast<std::uint32_t>(random()) % s_uLimits[random() % 4];
    return value;
}

} // namespace

TEST(UTF8, ConvertsBothWays)
{
    struct Row
    {
        const wchar_t* wide;
        const char* narrow;
    };
    const Row rows[] = {
        {L"", ""},
        {L"abc", "abc"},
        {L"\u00E9", "\xC3\xA9"},
        {L"\u20AC", "\xE2\x82\xAC"},
        {L"\U0001F600", "\xF0\x9F\x98\x80"},
        {L"\uFEFF", "\xEF\xBB\xBF"},
        {L"\uFFFF", "\xEF\xBF\xBF"},
        {L"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
        {L"a\u00E9\u20AC\U0001F600z", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z"},
    };
    for (const Row& row : rows)
    {
        EXPECT_EQ(row.narrow, UTF8::ToUTF8(row.wide));
        EXPECT_EQ(row.wide, UTF8::ToUNICODE(row.narrow)) << row.narrow;
    }
}

TEST(UTF8, ConvertsEveryCharacterBothWays)
{
    for (std::uint32_t value = 1; value <= 0x10FFFF; ++value)
    {
        if (IsSurrogate(value))
            continue;
        const std::wstring wide = Wide(value);
        const TString<char> narrow = UTF8::ToUTF8(wide);
        ASSERT_EQ(Form(value, ShortestForm(value)), narrow) << value;
        ASSERT_EQ(wide, UTF8::ToUNICODE(narrow)) << value;
    }
}

TEST(UTF8, RejectsALoneByteFromEightyOn)
{
    for (int byte = 0x80; byte < 0x100; ++byte)
        EXPECT_TRUE(UTF8::ToUNICODE(std::string(1, static_cast<char>(byte))).empty()) << byte;
}

TEST(UTF8, TellsEveryPairOfBytes)
{
    for (unsigned int first = 1; first < 0x100; ++first)
        for (unsigned int second = 1; second < 0x100; ++second)
        {
            const std::string pair{static_cast<char>(first), static_cast<char>(second)};
            std::wstring expected;
            if (first < 0x80 && second < 0x80)
                expected = {static_cast<wchar_t>(first), static_cast<wchar_t>(second)};
            else if (first >= 0xC2 && first <= 0xDF && second >= 0x80 && second <= 0xBF)
                expected = Wide(((first & 0x1FU) << 6) | (second & 0x3FU));
            ASSERT_EQ(expected, UTF8::ToUNICODE(pair)) << first << " " << second;
        }
}

TEST(UTF8, TellsEverySecondByteOfLongForms)
{
    for (unsigned int lead = 0xE0; lead < 0x100; ++lead)
        for (unsigned int second = 1; second < 0x100; ++second)
        {
            const bool three = lead < 0xF0;
            std::string bytes{static_cast<char>(lead), static_cast<char>(second), '\x80'};
            std::uint32_t value = ((lead & 0x0FU) << 12) | ((second & 0x3FU) << 6);
            if (!three)
            {
                bytes += '\x80';
                value = ((lead & 0x07U) << 18) | ((second & 0x3FU) << 12);
            }
            const bool valid = second >= 0x80 && second <= 0xBF && lead <= 0xF4 &&
                               value >= (three ? 0x800U : 0x10000U) && value <= 0x10FFFF &&
                               !IsSurrogate(value);
            ASSERT_EQ(valid ? Wide(value) : std::wstring(), UTF8::ToUNICODE(bytes)) << lead << " " << second;
        }
}

TEST(UTF8, RejectsOverlongForms)
{
    for (const std::uint32_t value :
         {0U, 1U, 0x2FU, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xFFFFU, 0x10000U, 0x10FFFFU})
        for (int bytes = ShortestForm(value) + 1; bytes <= 6; ++bytes)
            EXPECT_TRUE(UTF8::ToUNICODE("a" + Form(value, bytes)).empty()) << value << " in " << bytes;
}

TEST(UTF8, RejectsSurrogatesBothWays)
{
    for (std::uint32_t value = 0xD800; value <= 0xDFFF; ++value)
    {
        ASSERT_TRUE(UTF8::ToUTF8(Wide(value)).empty()) << value;
        ASSERT_TRUE(UTF8::ToUNICODE(Form(value, 3)).empty()) << value;
    }
    EXPECT_TRUE(UTF8::ToUTF8(Wide(0xD83D) + Wide(0xDE00)).empty());
    EXPECT_TRUE(UTF8::ToUNICODE(Form(0xD83D, 3) + Form(0xDE00, 3)).empty());
}

TEST(UTF8, RejectsValuesAboveTheLastCharacter)
{
    for (const std::uint32_t value : {0x110000U, 0x13FFFFU, 0x140000U, 0x1FFFFFU})
        EXPECT_TRUE(UTF8::ToUNICODE(Form(value, 4)).empty()) << value;
    EXPECT_TRUE(UTF8::ToUNICODE(Form(0x200000, 5)).empty());
    EXPECT_TRUE(UTF8::ToUNICODE(Form(0x4000000, 6)).empty());
    for (const std::uint32_t value :
         {0x110000U, 0x200000U, 0x7FFFFFFFU, 0x80000000U, 0x80000041U, 0xFFFFFFFFU})
        EXPECT_TRUE(UTF8::ToUTF8(L"a" + Wide(value)).empty()) << value;
}

TEST(UTF8, RejectsCutSequences)
{
    for (const char* const whole : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"})
        for (std::size_t count = 1; count < std::string(whole).size(); ++count)
        {
            const std::string cut = std::string(whole).substr(0, count);
            EXPECT_TRUE(UTF8::ToUNICODE(cut).empty());
            EXPECT_TRUE(UTF8::ToUNICODE("abc" + cut).empty());
            EXPECT_TRUE(UTF8::ToUNICODE(cut + "abc").empty());
            EXPECT_TRUE(UTF8::ToUNICODE(cut + std::string("\0\x80", 2)).empty());
        }
}

TEST(UTF8, SeesOneBadByteAnywhereInLongText)
{
    for (std::size_t length : {1U, 15U, 16U, 17U, 24U, 32U, 41U})
        for (std::size_t at = 0; at < length; ++at)
        {
            std::string bytes(length, 'k');
            bytes[at] = '\xFF';
            ASSERT_TRUE(UTF8::ToUNICODE(bytes).empty()) << length << " at " << at;
            std::wstring wide(length, L'k');
            wide[at] = static_cast<wchar_t>(0xD800);
            ASSERT_TRUE(UTF8::ToUTF8(wide).empty()) << length << " at " << at;
        }
}

TEST(UTF8, ConvertsOneLongCharacterAnywhereInLongText)
{
    for (std::size_t length = 1; length <= 41; ++length)
        for (std::size_t at = 0; at < length; ++at)
        {
            std::wstring wide(length, L'k');
            wide[at] = L'\u20AC';
            const std::string narrow =
                std::string(at, 'k') + "\xE2\x82\xAC" + std::string(length - at - 1, 'k');
            ASSERT_EQ(narrow, UTF8::ToUTF8(wide));
            ASSERT_EQ(wide, UTF8::ToUNICODE(narrow));
        }
}

TEST(UTF8, EndsAtTheFirstZero)
{
    EXPECT_EQ("ab", UTF8::ToUTF8(std::wstring(L"ab\0c", 4)));
    EXPECT_EQ(L"ab", UTF8::ToUNICODE(std::string("ab\0c", 4)));
    EXPECT_EQ("", UTF8::ToUTF8(std::wstring(L"\0a", 2)));
    EXPECT_EQ(L"", UTF8::ToUNICODE(std::string("\0a", 2)));
}

TEST(UTF8, IgnoresBadTextBehindAZero)
{
    EXPECT_EQ("a", UTF8::ToUTF8(L"a" + std::wstring(1, L'\0') + Wide(0xD800)));
    EXPECT_EQ(L"a", UTF8::ToUNICODE(std::string("a\0\xFF", 3)));
}

TEST(UTF8, EncodesEveryShortTextAtEveryPlaceAsThePlainFormDoes)
{
    const std::uint32_t values[] = {0,      'a',    0x7F,   0x80,    0x7FF,    0x800,     0xD7FF,
                                    0xD800, 0xDFFF, 0xE000, 0x10000, 0x10FFFF, 0x110000U, 0xFFFFFFFFU};
    for (const std::size_t before : {0UL, 1UL, 14UL, 15UL, 16UL, 17UL, 40UL})
        for (const std::uint32_t first : values)
            for (const std::uint32_t second : values)
                for (const std::uint32_t third : values)
                {
                    const std::wstring text =
                        std::wstring(before, L'x') + Wide(first) + Wide(second) + Wide(third) + L"yz";
                    ASSERT_EQ(ToolkitTest::PlainUtf8::Encode(text), UTF8::ToUTF8(text))
                        << before << " " << first << " " << second << " " << third;
                }
}

TEST(UTF8, EncodesRandomTextsIntoUsedMemoryAsThePlainFormDoes)
{
    std::mt19937 random(8);
    TString<char> bytes;
    for (int round = 0; round < 20000; ++round)
    {
        std::wstring text;
        const std::size_t length = random() % 70;
        const std::size_t oddity = random() % 40;
        while (text.size() < length)
            text += static_cast<wchar_t>(random() % (oddity + 2) != 0 ? 1 + random() % 0x7F
                                                                      : random() % 0x120000);
        UTF8::Encode(text, bytes);
        ASSERT_EQ(ToolkitTest::PlainUtf8::Encode(text), bytes);
    }
}

TEST(UTF8, EncodesACharacterAnywhereInTextOfSeveralParts)
{
    const std::wstring longText(1100, L'x');
    for (const std::uint32_t value : {0U, 0xE4U, 0x4E00U, 0xD800U, 0x10FFFFU, 0x110000U})
        for (std::size_t place = 0; place < longText.size(); ++place)
        {
            std::wstring text = longText;
            text[place] = static_cast<wchar_t>(value);
            const TString<char> bytes = UTF8::ToUTF8(text);
            const bool invalid = value == 0xD800 || value == 0x110000;
            const std::string character = value == 0 ? std::string() : std::string(UTF8::ToUTF8(Wide(value)));
            const std::size_t behind = value == 0 ? 0 : longText.size() - place - 1;
            ASSERT_EQ(invalid ? std::string()
                              : std::string(place, 'x') + character + std::string(behind, 'x'),
                      bytes)
                << value << " " << place;
        }
}

TEST(UTF8, DecodesEveryFourBytesAtEveryPlaceAsThePlainFormDoes)
{
    const std::string bytes("\0a\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xED\xEF\xF0\xF4\xF5\xF8\xFF",
                            21);
    std::string four(4, 'x');
    for (const char first : bytes)
        for (const char second : bytes)
            for (const char third : bytes)
                for (const char fourth : bytes)
                {
                    four = {first, second, third, fourth};
                    const std::wstring plain = ToolkitTest::PlainUtf8::Decode(four);
                    // What follows a text that is invalid or ends at a zero makes no difference.
                    const bool goesOn = plain.size() > 0 && four.find('\0') == four.npos;
                    for (const std::size_t before : {0UL, 12UL, 13UL, 14UL, 15UL, 61UL})
                    {
                        const std::wstring expected =
                            plain.empty() && first != '\0'
                                ? std::wstring()
                                : std::wstring(before, L'x') + plain + (goesOn ? L"yz" : L"");
                        ASSERT_EQ(expected, UTF8::ToUNICODE(std::string(before, 'x') + four + "yz"))
                            << before << testing::PrintToString(four);
                    }
                }
}

TEST(UTF8, ConvertsRandomTextsOfAllLengthsAsThePlainFormDoes)
{
    std::mt19937 random(5);
    for (int round = 0; round < 6000; ++round)
    {
        // From ASCII alone to hardly any; some with a NUL or what is no character.
        const std::size_t other = std::size_t{1} << random() % 12;
        const bool broken = random() % 8 == 0;
        std::wstring wide;
        for (std::size_t left = random() % (round % 8 == 0 ? 1500 : 90); left > 0; --left)
            wide +=
                static_cast<wchar_t>(random() % other != 0 ? 1 + random() % 0x7F : RandomCharacter(random));
        if (broken && !wide.empty())
            wide[random() % wide.size()] = static_cast<wchar_t>(random() % 2 == 0 ? 0 : 0xD800 + random());
        const std::string encoded = ToolkitTest::PlainUtf8::Encode(wide);
        ASSERT_EQ(encoded, UTF8::ToUTF8(wide)) << round;
        std::string narrow = encoded;
        if (broken && !narrow.empty())
            narrow[random() % narrow.size()] = static_cast<char>(random());
        ASSERT_EQ(ToolkitTest::PlainUtf8::Decode(narrow), UTF8::ToUNICODE(narrow)) << round;
    }
}

TEST(UTF8, DecodesACharacterAnywhereInLongText)
{
    const std::string longText(1100, 'x');
    const std::string characters[] = {std::string(1, '\0'), "\xC3\xA4", "\xE4\xB8\x80", "\xF4\x8F\xBF\xBF",
                                      "\xED\xA0\x80"};
    for (const std::string& character : characters)
        for (std::size_t place = 0; place < longText.size(); ++place)
        {
            std::string text = longText;
            text.replace(place, 1, character);
            ASSERT_EQ(ToolkitTest::PlainUtf8::Decode(text), UTF8::ToUNICODE(text)) << place;
        }
}

TEST(UTF8, TakesNoMoreMemoryThanALongTextNeeds)
{
    const std::wstring ascii(1000, L'a');
    for (const std::wstring& wide : {ascii, L"\u00E4" + ascii, ascii + L"\u00E4", ascii + L"\u4E00" + ascii})
    {
        const TString<char> narrow = UTF8::ToUTF8(wide);
        EXPECT_EQ(narrow.size(), narrow.capacity());
        const TString<wchar_t> again = UTF8::ToUNICODE(narrow);
        EXPECT_EQ(wide, again);
        EXPECT_EQ(again.size(), again.capacity());
    }
}

TEST(UTF8, HasToBeUTF8WhenTheLengthChanges)
{
    EXPECT_FALSE(UTF8::HasToBeUTF8(L""));
    EXPECT_FALSE(UTF8::HasToBeUTF8(L"abc"));
    EXPECT_FALSE(UTF8::HasToBeUTF8(L"\u007F"));
    EXPECT_TRUE(UTF8::HasToBeUTF8(L"\u0080"));
    EXPECT_TRUE(UTF8::HasToBeUTF8(L"ab\u00E9"));
    EXPECT_TRUE(UTF8::HasToBeUTF8(Wide(0xD800)));
    EXPECT_TRUE(UTF8::HasToBeUTF8(std::wstring(L"a\0b", 3)));
    EXPECT_TRUE(UTF8::HasToBeUTF8(std::wstring(1, L'\0')));
}

TEST(UTF8, AgreesWithWxWidgetsOnValidText)
{
    std::mt19937 random(99);
    for (int round = 0; round < 3000; ++round)
    {
        std::wstring wide;
        for (std::size_t left = random() % 60; left > 0; --left)
            wide += static_cast<wchar_t>(random() % 2 == 0 ? 'a' + random() % 26 : RandomCharacter(random));
        const wxString base(wide);
        const wxScopedCharBuffer bytes = base.mb_str(wxConvUTF8);
        const std::string narrow(bytes.data(), bytes.length());
        ASSERT_EQ(narrow, UTF8::ToUTF8(wide));
        ASSERT_EQ(wxString(narrow.c_str(), wxConvUTF8).ToStdWstring(), UTF8::ToUNICODE(narrow));
    }
}
