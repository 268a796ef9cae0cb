// SPDX-License-Identifier: MIT
#include "toolkit/app/Version.h"

#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/PlainVersion.h"
#include "tests/support/GroupedDigits.h"

using Toolkit::smart_ptr;
using Toolkit::TString;
using Toolkit::Version;

namespace
{

const unsigned int s_uLargest = 4294967295U;

static_assert(std::is_same_v<decltype(Version::s_pInstance), smart_ptr<Version>*>);
static_assert(!std::is_convertible_v<TString<wchar_t>, Version>);

void ExpectPlain(const std::wstring& text)
{
    const auto parts = ToolkitTest::PlainVersion::Parse(text);
    const Version version{TString<wchar_t>(text)};
    ASSERT_TRUE(version == Version(parts[0], parts[1], parts[2], parts[3]))
        << testing::PrintToString(text) << " gives " << testing::PrintToString(version.ToString());
}

} // namespace

TEST(Version, DefaultIsZero)
{
    EXPECT_EQ(Version().ToString(), L"0.0.0.0");
}

TEST(Version, KeepsItsFourParts)
{
    const Version version(1, 2, 3, 4);
    EXPECT_EQ(version.GetMajor(), 1U);
    EXPECT_EQ(version.GetMinor(), 2U);
    EXPECT_EQ(version.GetBuild(), 3U);
    EXPECT_EQ(version.GetRevision(), 4U);
}

TEST(Version, ParsesDottedText)
{
    const wchar_t* const rows[][2] = {
        {L"1.2", L"1.2.0.0"},   {L"1.0.865.8", L"1.0.865.8"}, {L"1.2.3.4.5", L"1.2.3.4"},
        {L".3..4", L"3.4.0.0"}, {L"1..2.", L"1.2.0.0"},       {L"abc", L"0.0.0.0"},
        {L"", L"0.0.0.0"},      {L"...", L"0.0.0.0"},         {L" 2. 5", L"2.5.0.0"},
        {L"7b.08", L"7.8.0.0"}, {L"1.x.3", L"1.0.3.0"},       {L"1. .3", L"1.0.3.0"}};
    for (const auto& row : rows)
        EXPECT_EQ(Version(row[0]).ToString(), row[1]) << testing::PrintToString(row[0]);
}

TEST(Version, ParsesSignsAndOverflowAsAStreamDoes)
{
    const wchar_t* const rows[][2] = {{L"-1", L"4294967295.0.0.0"},
                                      {L"+7", L"7.0.0.0"},
                                      {L"-0", L"0.0.0.0"},
                                      {L"4294967295", L"4294967295.0.0.0"},
                                      {L"4294967296", L"4294967295.0.0.0"},
                                      {L"-4294967295", L"1.0.0.0"},
                                      {L"-4294967296", L"4294967295.0.0.0"},
                                      {L"99999999999999999999999999", L"4294967295.0.0.0"},
                                      {L"-", L"0.0.0.0"},
                                      {L"+-1", L"0.0.0.0"},
                                      {L"- 1", L"0.0.0.0"},
                                      {L"0x10", L"0.0.0.0"},
                                      {L"1,000", L"1.0.0.0"}};
    for (const auto& row : rows)
    {
        EXPECT_EQ(Version(row[0]).ToString(), row[1]) << testing::PrintToString(row[0]);
        ExpectPlain(row[0]);
    }
}

TEST(Version, ParsesEveryShortTextAsAStreamDoes)
{
    const std::wstring characters = L"019.-+ \tx";
    std::vector<std::wstring> texts = {L""};
    for (std::size_t i = 0; texts[i].size() < 4; ++i)
        for (const wchar_t character : characters)
            texts.push_back(texts[i] + character);
    for (const std::wstring& text : texts)
        ExpectPlain(text);
}

TEST(Version, ParsesRandomTextAsAStreamDoes)
{
    std::mt19937 random(5);
    const std::wstring characters =
        L"0123456789012345678901234567890123456789....-+ \t\n\v\f\r,e'x\u00A0\u0660\u2003" +
        std::wstring(1, L'\0');
    for (int i = 0; i < 100000; ++i)
    {
        std::wstring text(random() % 40, L'\0');
        for (wchar_t& character : text)
            character = characters[random() % characters.size()];
        ExpectPlain(text);
    }
}

TEST(Version, EveryCharacterAroundADigitIsReadAsByAStream)
{
    for (wchar_t character = 0; character < 0x3100; ++character)
    {
        ExpectPlain(std::wstring(1, character) + L"7");
        ExpectPlain(L"7" + std::wstring(1, character) + L"7");
    }
}

TEST(Version, ReadsAndWritesIndependentlyOfTheGlobalLocale)
{
    const ToolkitTest::GroupedDigits grouped;
    EXPECT_EQ(Version(1234567, 0, 0, s_uLargest).ToString(), L"1234567.0.0.4294967295");
    EXPECT_EQ(Version(L"1,234.5678").ToString(), L"1.5678.0.0");
}

TEST(Version, OrdersByTheFirstPartThatDiffers)
{
    const Version ascending[] = {
        Version(0, 0, 0, 0),           Version(0, 0, 0, 1),         Version(0, 0, 1, 0),
        Version(0, 1, 0, 0),           Version(1, 0, 0, 0),         Version(1, 0, 0, 9),
        Version(1, 0, 9, 0),           Version(1, 99, 99, 99),      Version(2, 0, 0, 0),
        Version(2147483648U, 0, 0, 0), Version(s_uLargest, 0, 0, 0)};
    for (const Version& a : ascending)
        for (const Version& b : ascending)
        {
            EXPECT_EQ(a < b, &a < &b);
            EXPECT_EQ(a > b, &a > &b);
            EXPECT_EQ(a == b, &a == &b);
            EXPECT_EQ(a.CompareVersion(b), &a == &b ? 0 : &a > &b ? 1 : -1);
        }
}

TEST(Version, ComparesWithText)
{
    const Version version(1, 0, 865, 8);
    EXPECT_EQ(version.CompareVersion(L"1.0.865.10"), -1);
    EXPECT_EQ(version.CompareVersion(L"1.0.865.8"), 0);
    EXPECT_EQ(version.CompareVersion(L"1.0.864"), 1);
    EXPECT_EQ(version.CompareVersion(L"nonsense"), 1);
}

TEST(Version, CreateGivesTheLibrarysOwnVersionAnewEachTime)
{
    const std::unique_ptr<Version> first(Version::Create());
    const std::unique_ptr<Version> second(Version::Create());
    EXPECT_NE(first, second);
    EXPECT_EQ(first->ToString(), L"1.0.865.8");
    EXPECT_TRUE(*first == Version(1, 0, 865, 8));
}

TEST(Version, InstanceIsNullUntilTheModuleMakesIt)
{
    EXPECT_EQ(Version::s_pInstance, nullptr);
}
