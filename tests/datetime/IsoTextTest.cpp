// SPDX-License-Identifier: MIT
#include <cstddef>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/reference/PlainIsoText.h"
#include "tests/support/DateTimes.h"
#include "tests/support/GroupedDigits.h"
#include "tests/support/LocalZone.h"
#include "toolkit/encoding/UTF8.h"

// The reader of ISO texts beside a real stream.

using Toolkit::DateTime;
using Toolkit::UTF8;
using ToolkitTest::Parsed;

namespace
{

const std::wstring s_strText(L"2009-03-07 14:05:09 Z");
// Characters that mean something to a stream, and some that only might.
const std::wstring s_strCharacters(L"0159 \t\n-+Zz:.,x'\0\u00A0\u0662\u3000", 20);

class IsoText : public testing::Test
{
protected:
    static void ExpectPlain(const std::wstring& text)
    {
        ASSERT_EQ(Parsed(text), ToolkitTest::PlainIsoText::Value(text)) << testing::PrintToString(text);
        const Toolkit::TString<char> narrow = UTF8::ToUTF8(text);
        DateTime time;
        const bool valid = time.ParseIsoString(narrow);
        EXPECT_EQ(valid, time.IsValid());
        ASSERT_EQ(time, ToolkitTest::PlainIsoText::Value(UTF8::ToUNICODE(narrow)))
            << testing::PrintToString(narrow);
    }

private:
    const ToolkitTest::LocalZone m_zone{"Asia/Kathmandu"};
};

} // namespace

TEST_F(IsoText, IsReadAsAStreamReadsIt)
{
    for (const wchar_t* const text :
         {L"", L"Z", L"2009-03-07 14:05:09 Z", L"-0-1-1 0:0:0", L"-399-2-28 0:0:0 Z", L"-400-2-29 0:0:0 Z",
          L"2147483647-1-1 1:1:1", L"-2147483648-1-1 1:1:1", L"2147483648-1-1 1:1:1",
          L"292278994-1-1 1:1:1 Z", L"-292275054-1-1 1:1:1 Z", L"292278995-1-1 1:1:1 Z",
          L"-292275056-1-1 1:1:1 Z", L"1 1 1 1 1 61 Z", L"1 1 1 1 1 - Z", L"1 1 1 1 1 + Z",
          L"0x7d9-3-7 1:1:1", L"1e3-3-7 1:1:1", L"1 1 1 1 1\xFFFFFFFF+7"})
        ExpectPlain(text);
}

TEST_F(IsoText, IsReadAsAStreamReadsItWithAnyTwoCharactersReplaced)
{
    for (std::size_t i = 0; i < s_strText.size(); ++i)
        for (std::size_t j = i; j < s_strText.size(); ++j)
            for (const wchar_t one : s_strCharacters)
                for (const wchar_t other : s_strCharacters)
                {
                    std::wstring text(s_strText);
                    text[i] = one;
                    text[j] = other;
                    ExpectPlain(text);
                }
}

TEST_F(IsoText, IsReadAsAStreamReadsItWithAnyPartLeftOutOrPutIn)
{
    for (std::size_t i = 0; i <= s_strText.size(); ++i)
    {
        for (std::size_t length = 0; i + length <= s_strText.size(); ++length)
        {
            std::wstring text(s_strText);
            ExpectPlain(text.erase(i, length));
        }
        for (const wchar_t one : s_strCharacters)
            for (const wchar_t other : s_strCharacters)
            {
                std::wstring text(s_strText);
                ExpectPlain(text.insert(i, {one, other}));
            }
    }
}

TEST_F(IsoText, IsReadAsAStreamReadsItForEveryCharacter)
{
    for (wchar_t character = 0; character < 0x11000; ++character)
        for (const std::size_t i : {0U, 4U, 5U, 18U, 19U, 20U})
        {
            std::wstring text(s_strText);
            text[i] = character;
            ExpectPlain(text);
        }
}

TEST_F(IsoText, IsReadAsAStreamReadsItForShortTexts)
{
    // Every text of up to seven characters that is made of these, behind the first numbers.
    const std::wstring characters(L"7 -Zx");
    std::size_t count = 1;
    for (int length = 0; length <= 7; ++length, count *= characters.size())
        for (std::size_t number = 0; number < count; ++number)
        {
            std::wstring text(L"1 1 1 1");
            for (std::size_t rest = number, i = 0; static_cast<int>(i) < length;
                 ++i, rest /= characters.size())
                text += characters[rest % characters.size()];
            ExpectPlain(text);
        }
}

TEST_F(IsoText, IsReadAsAStreamReadsItForRandomTexts)
{
    std::mt19937 random(20090307);
    const std::wstring characters(L"00112233456789      ---++:TZ\t");
    const std::wstring parts[] = {L"1",  L"2009", L" ",  L"-",  L":", L"12",
                                  L"59", L"61",   L"-5", L"+7", L"Z", L"99999999999"};
    for (int i = 0; i < 100000; ++i)
    {
        std::wstring text;
        for (std::size_t length = random() % 30; length > 0; --length)
            text += characters[random() % characters.size()];
        ExpectPlain(text);
        text.clear();
        for (std::size_t length = random() % 16; length > 0; --length)
            text += parts[random() % 12];
        ExpectPlain(text);
    }
}

TEST_F(IsoText, IsReadAsAStreamOfTheClassicLocaleReadsIt)
{
    const ToolkitTest::GroupedDigits grouped;
    for (const wchar_t* const text :
         {L"2009-03-07 14:05:09 Z", L"12,009-03-07 14:05:09", L"2,009-03-07 14:05:09"})
        ExpectPlain(text);
}
