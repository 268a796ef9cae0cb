// SPDX-License-Identifier: MIT
#include "toolkit/encoding/QP.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "tests/reference/PlainQuotedPrintable.h"

using Toolkit::QP;
using Toolkit::TString;
namespace Plain = ToolkitTest::PlainQuotedPrintable;

namespace
{

const unsigned int s_uLargest = 4294967295U;

struct Row
{
    const wchar_t* from;
    const wchar_t* to;
};

std::wstring RandomText(std::mt19937& random, const std::wstring& characters, std::size_t limit)
{
    std::wstring text(random() % limit, L'\0');
    for (wchar_t& character : text)
        character = characters[random() % characters.size()];
    return text;
}

} // namespace

TEST(QP, HexIsAnExportedPointerToTheUpperCaseDigits)
{
    EXPECT_STREQ(Toolkit::HEX, "0123456789ABCDEF");
    void* const symbol = dlsym(RTLD_DEFAULT, "HEX");
    ASSERT_NE(symbol, nullptr);
    EXPECT_STREQ(*static_cast<const char* const*>(symbol), "0123456789ABCDEF");
}

TEST(QP, EncodesControlsSpaceAndSpecials)
{
    const Row rows[] = {{L"", L""},
                        {L"a b", L"a=20b"},
                        {L"x=y?", L"x=3Dy=3F"},
                        {L"\u00E9", L"=C3=A9"},
                        {L"\u20AC", L"=E2=82=AC"},
                        {L"\U0001F600", L"=F0=9F=98=80"},
                        {L"a_b~", L"a_b~"},
                        {L"\x7F", L"=7F"},
                        {L" \t\r\n", L"=20=09=0D=0A"},
                        {L"\x01\x1F", L"=01=1F"},
                        {L"\"(),/:;<=>?@[\\]", L"=22=28=29=2C=2F=3A=3B=3C=3D=3E=3F=40=5B=5C=5D"},
                        {L"!#$%&'*+-.^`{|}", L"!#$%&'*+-.^`{|}"}};
    for (const Row& row : rows)
        EXPECT_EQ(QP::ToQP(row.from), row.to);
}

TEST(QP, EncodesEveryByteAsThePlainForm)
{
    for (wchar_t character = 0; character < 256; ++character)
        EXPECT_EQ(QP::ToQP(std::wstring(1, character)), Plain::Encode(std::wstring(1, character)))
            << static_cast<int>(character);
}

TEST(QP, TextEndsAtItsFirstZero)
{
    EXPECT_EQ(QP::ToQP(std::wstring(L"a\0b", 3)), L"a");
    EXPECT_EQ(QP::ToUNICODE(std::wstring(L"a\0b", 3)), L"a");
    EXPECT_EQ(QP::ToUNICODE(L"a=00b"), L"a");
    EXPECT_EQ(QP::ToUNICODE(L"a=00=FF"), L"a");
}

TEST(QP, TextWithoutUtf8FormGivesAnEmptyOne)
{
    for (const std::uint32_t value : {0xD800U, 0xDFFFU, 0x110000U, 0x80000041U, 0xFFFFFFFFU})
    {
        const TString<wchar_t> text(L"abc " + std::wstring(1, static_cast<wchar_t>(value)) + L" def");
        EXPECT_EQ(QP::ToQP(text), L"") << value;
        EXPECT_EQ(QP::ToQP(text, 5, 5), L"") << value;
        EXPECT_EQ(QP::ToUNICODE(text), L"") << value;
    }
}

TEST(QP, BreaksLines)
{
    EXPECT_EQ(QP::ToQP(L"abcdefghij", 5, 5), L"abcd=\r\nefgh=\r\nij");
    EXPECT_EQ(QP::ToQP(L"abcdefghij", 3, 5), L"ab=\r\ncdef=\r\nghij");
    EXPECT_EQ(QP::ToQP(L"abcdefghij", 7, 4), L"abcdef=\r\nghi=\r\nj");
}

TEST(QP, FirstLineOfOneBreaksAtOnce)
{
    EXPECT_EQ(QP::ToQP(L"abcdef", 1, 5), L"=\r\nabcd=\r\nef");
    EXPECT_EQ(QP::ToQP(L"", 1, 5), L"");
}

TEST(QP, FirstLineOfZeroBreaksNothing)
{
    EXPECT_EQ(QP::ToQP(L"abcdefghij", 0, 5), L"abcdefghij");
}

TEST(QP, LineLengthBelowFourBreaksNothing)
{
    for (const unsigned int length : {0U, 1U, 2U, 3U})
        EXPECT_EQ(QP::ToQP(L"abcdefghij", 2, length), L"abcdefghij") << length;
    EXPECT_EQ(QP::ToQP(L"abcdefghij", 2, 4), L"a=\r\nbcd=\r\nefg=\r\nhij");
}

TEST(QP, NoBreakAtTheEnd)
{
    EXPECT_EQ(QP::ToQP(L"abcd", 5, 5), L"abcd");
    EXPECT_EQ(QP::ToQP(L"abcdefgh", 5, 5), L"abcd=\r\nefgh");
}

TEST(QP, BreakNeverFollowsAnEqualsSign)
{
    EXPECT_EQ(QP::ToQP(L"ab c", 4, 10), L"ab=\r\n=20c");
    EXPECT_EQ(QP::ToQP(L" abc", 2, 10), L"=\r\n=20abc");
}

TEST(QP, BreakMayFallBetweenTheDigitsOfAnEscape)
{
    EXPECT_EQ(QP::ToQP(L"ab c", 5, 10), L"ab=2=\r\n0c");
}

TEST(QP, HugeLinesAreCountedIn64Bits)
{
    EXPECT_EQ(QP::ToQP(L"abcdef", 3, s_uLargest), L"ab=\r\ncdef");
    EXPECT_EQ(QP::ToQP(L"abcdef", 3, s_uLargest - 2), L"ab=\r\ncdef");
    EXPECT_EQ(QP::ToQP(L"abcdef", s_uLargest, s_uLargest), L"abcdef");
    EXPECT_EQ(QP::ToQP(L"abcdef", s_uLargest, 4), L"abcdef");
}

TEST(QP, BreaksAsThePlainFormForEveryShortLine)
{
    const std::wstring text = L"a \u00E9\u20ACbc=d\n\U0001F600efg  h";
    for (std::size_t length = 0; length <= text.size(); ++length)
        for (unsigned int firstLine = 0; firstLine < 60; ++firstLine)
            for (unsigned int lineLength = 0; lineLength < 20; ++lineLength)
                ASSERT_EQ(QP::ToQP(text.substr(0, length), firstLine, lineLength),
                          Plain::Encode(text.substr(0, length), firstLine, lineLength))
                    << length << " " << firstLine << " " << lineLength;
}

TEST(QP, EncodesRandomTextAsThePlainForm)
{
    std::mt19937 random(2);
    const std::wstring characters = L"abcdef =?\n\u00E9\u07FF\u0800\u20AC\U00010000\U0010FFFF";
    for (int i = 0; i < 100000; ++i)
    {
        const std::wstring text = RandomText(random, characters, i % 1000 == 0 ? 3000 : 40);
        const unsigned int firstLine = static_cast<unsigned int>(random() % 50);
        const unsigned int lineLength = static_cast<unsigned int>(random() % 80);
        ASSERT_EQ(QP::ToQP(text), Plain::Encode(text));
        ASSERT_EQ(QP::ToQP(text, firstLine, lineLength), Plain::Encode(text, firstLine, lineLength))
            << firstLine << " " << lineLength;
    }
}

TEST(QP, Decodes)
{
    const Row rows[] = {{L"", L""},
                        {L"=C3=A9", L"\u00E9"},
                        {L"=c3=a9", L"\u00E9"},
                        {L"a=20b", L"a b"},
                        {L"plain text", L"plain text"},
                        {L"=F0=9F=98=80", L"\U0001F600"},
                        {L"caf\u00E9=20au lait", L"caf\u00E9 au lait"},
                        {L"=3D41", L"=41"}};
    for (const Row& row : rows)
        EXPECT_EQ(QP::ToUNICODE(row.from), row.to);
}

TEST(QP, SoftLineBreakLosesOnlyItsEqualsSign)
{
    EXPECT_EQ(QP::ToUNICODE(L"ab=\r\ncd"), L"ab\r\ncd");
}

TEST(QP, LetterGIsADigitWorthSixteen)
{
    EXPECT_EQ(QP::ToUNICODE(L"=1G"), L" ");
    EXPECT_EQ(QP::ToUNICODE(L"=1g"), L" ");
    EXPECT_EQ(QP::ToUNICODE(L"=G1"), std::wstring(L"\x01"));
    EXPECT_EQ(QP::ToUNICODE(L"=1H"), L"1H");
}

TEST(QP, WhatIsNoEscapeStays)
{
    const Row rows[] = {{L"=ZZ", L"ZZ"},
                        {L"a=", L"a="},
                        {L"=4", L"=4"},
                        {L"=", L"="},
                        {L"==", L"=="},
                        {L"===", L"=="},
                        {L"=4=41", L"4A"},
                        {L"==41", L"A"},
                        {L"=4\u00E9", L"4\u00E9"},
                        {L"=\u00E9", L"\u00E9"},
                        {L"=41=", L"A="}};
    for (const Row& row : rows)
        EXPECT_EQ(QP::ToUNICODE(row.from), row.to) << row.from;
}

TEST(QP, EscapesThatAreNotUtf8GiveAnEmptyText)
{
    for (const wchar_t* const text :
         {L"=FF", L"a=80b", L"=C3", L"=C3a", L"=C0=80", L"=C1=BF", L"=E0=80=80", L"=ED=A0=80",
          L"=F4=90=80=80", L"=F8=88=80=80=80", L"=C3=", L"=C3=A", L"=F0=80=80=80"})
        EXPECT_EQ(QP::ToUNICODE(text), L"") << text;
}

TEST(QP, CharacterMayBeSpreadOverDroppedEqualsSigns)
{
    EXPECT_EQ(QP::ToUNICODE(L"=C3==A9"), L"\u00E9");
}

TEST(QP, DecodesEveryShortTextAsThePlainForm)
{
    const std::wstring characters = L"=2GCA9a\r\u00E9";
    std::vector<std::wstring> texts = {L""};
    for (std::size_t i = 0; texts[i].size() < 5; ++i)
        for (const wchar_t character : characters)
            texts.push_back(texts[i] + character);
    // Behind a long run, so that whole blocks are decoded as well.
    const std::wstring run(31, L'x');
    for (const std::wstring& text : texts)
    {
        ASSERT_EQ(QP::ToUNICODE(text), Plain::Decode(text)) << text;
        ASSERT_EQ(QP::ToUNICODE(run + text + run), Plain::Decode(run + text + run)) << text;
    }
}

TEST(QP, DecodesRandomTextAsThePlainForm)
{
    std::mt19937 random(3);
    const std::vector<std::wstring> pieces = {L"=",           L"a",         L"xyz",   L"=20",
                                              L"=C3=A9",      L"=E2=82=AC", L"=\r\n", L"=F0=9F=98=80",
                                              L"plain words", L"=1G",       L"==",    L"=3D"};
    const std::vector<std::wstring> bad = {L"=C3", L"=00", L"\u00E9", L"=FF", std::wstring(1, L'\0')};
    for (int i = 0; i < 200000; ++i)
    {
        std::wstring text;
        for (std::size_t count = random() % (i % 500 == 0 ? 1500 : 16); count > 0; --count)
            text += pieces[random() % pieces.size()];
        if (i % 4 == 0)
            text.insert(random() % (text.size() + 1), bad[random() % bad.size()]);
        ASSERT_EQ(QP::ToUNICODE(text), Plain::Decode(text)) << text;
    }
}

TEST(QP, DecodesWhatItEncodes)
{
    std::mt19937 random(4);
    const std::wstring characters = L"abc =?\t\n\u00E9\u20AC\U0010FFFF";
    for (int i = 0; i < 20000; ++i)
    {
        const std::wstring text = RandomText(random, characters, 60);
        ASSERT_EQ(QP::ToUNICODE(QP::ToQP(text)), text);
    }
}

TEST(QP, HasToBeQPAsksForLengthLineFeedAndBytes)
{
    struct
    {
        const char* text;
        unsigned int length;
        unsigned int limit;
        bool onlyLength;
        bool expected;
    } const rows[] = {
        {"plain", 10, 76, false, false}, {"plain text", 10, 76, false, true}, {"plain", 80, 76, false, true},
        {"a b", 10, 76, true, false},    {"a\nb", 10, 76, true, true},        {"a\nb", 10, 76, false, true},
        {"plain", 76, 76, false, false}, {"plain", 77, 76, true, true},       {"", 0, 0, false, false},
        {"\x7F", 1, 76, false, true},    {"\x80", 1, 76, false, true},        {"~_", 2, 76, false, false},
        {"\r", 1, 76, true, false},      {"\r", 1, 76, false, true}};
    for (const auto& row : rows)
    {
        EXPECT_EQ(QP::HasToBeQP(TString<char>(row.text), row.length, row.limit, row.onlyLength), row.expected)
            << row.text;
    }
}

TEST(QP, HasToBeQPAgreesWithTheEncoderForEveryByte)
{
    for (int code = 0; code < 256; ++code)
    {
        const std::string byte(1, static_cast<char>(code));
        EXPECT_EQ(QP::HasToBeQP(TString<char>(byte), 1, 1, false), code >= 127 || Plain::IsQuoted(byte[0]))
            << code;
    }
}

TEST(QP, WideHasToBeQPLooksAtTheUtf8Bytes)
{
    EXPECT_FALSE(QP::HasToBeQP(TString<wchar_t>(L"plain"), 10, 76, false));
    EXPECT_TRUE(QP::HasToBeQP(TString<wchar_t>(L"plain text"), 10, 76, false));
    EXPECT_TRUE(QP::HasToBeQP(TString<wchar_t>(L"\u00E9"), 10, 76, false));
    EXPECT_FALSE(QP::HasToBeQP(TString<wchar_t>(L"\u00E9"), 10, 76, true));
    EXPECT_FALSE(QP::HasToBeQP(TString<wchar_t>(std::wstring(L"a\0 ", 3)), 10, 76, false));
    EXPECT_TRUE(QP::HasToBeQP(TString<char>(std::string("a\0", 2)), 10, 76, false));
}
