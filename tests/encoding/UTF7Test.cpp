// SPDX-License-Identifier: MIT
#include "toolkit/encoding/UTF7.h"

#include <string>

#include <gtest/gtest.h>

using Toolkit::TString;
using Toolkit::UTF7;

TEST(UTF7, WidensEachByteByItsUnsignedValue)
{
    EXPECT_EQ(L"\u00E9", UTF7::ToUNICODE("\xE9"));
    for (int byte = 1; byte < 256; ++byte)
        EXPECT_EQ(std::wstring(1, static_cast<wchar_t>(byte)),
                  UTF7::ToUNICODE(std::string(1, static_cast<char>(byte))));
}

TEST(UTF7, KeepsSevenBitsAndReplacesTheRest)
{
    EXPECT_EQ("a_b", UTF7::ToUTF7(L"a\u00E9b"));
    for (int character = 1; character < 128; ++character)
        EXPECT_EQ(std::string(1, static_cast<char>(character)),
                  UTF7::ToUTF7(std::wstring(1, static_cast<wchar_t>(character))));
    for (const int character :
         {128, 255, 256, 0x20AC, 0xD800, 0x1F600, 0x10FFFF, 0x110000, 0x100041, 0x7FFFFFFF, -1})
        EXPECT_EQ("_", UTF7::ToUTF7(std::wstring(1, static_cast<wchar_t>(character)))) << character;
}

TEST(UTF7, DoesNotEncode)
{
    EXPECT_EQ("1 + 1 +AGE-", UTF7::ToUTF7(L"1 + 1 +AGE-"));
    EXPECT_EQ(L"+AGE-", UTF7::ToUNICODE("+AGE-"));
}

TEST(UTF7, ConvertsTheEmptyText)
{
    EXPECT_EQ("", UTF7::ToUTF7(L""));
    EXPECT_EQ(L"", UTF7::ToUNICODE(""));
}

TEST(UTF7, EndsAtTheFirstZero)
{
    EXPECT_EQ("ab", UTF7::ToUTF7(std::wstring(L"ab\0\u00E9", 4)));
    EXPECT_EQ(L"ab", UTF7::ToUNICODE(std::string("ab\0c", 4)));
    EXPECT_EQ("", UTF7::ToUTF7(std::wstring(L"\0a", 2)));
    EXPECT_EQ(L"", UTF7::ToUNICODE(std::string("\0a", 2)));
}
