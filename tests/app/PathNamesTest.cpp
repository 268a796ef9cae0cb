// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/PathNames.h"

#include <gtest/gtest.h>

namespace PathNames = Toolkit::PathNames;
using Toolkit::TString;

namespace
{
using Wide = TString<wchar_t>;
}

TEST(PathNames, SplitsTheExecutablesPathIntoFolderAndName)
{
    const struct
    {
        const wchar_t* path;
        const wchar_t* folder;
        const wchar_t* name;
    } rows[] = {
        {L"/usr/bin/tool.sh", L"/usr/bin", L"tool"},
        {L"/usr/bin/tool", L"/usr/bin", L"tool"},
        {L"/tool", L"", L"tool"},
        {L"tool", L"/work folder", L""},
        {L"tool.exe", L"/work folder", L""},
        {L"", L"/work folder", L""},
        {L"/opt/tool.bin.exe", L"/opt", L"tool.bin"},
        {L"/opt/a.b/tool", L"/opt/a.b", L"tool"},
        {L"/opt/.tool", L"/opt", L""},
        {L"/opt/tool.", L"/opt", L"tool"},
        {L"/opt/", L"/opt", L""},
        {L"/\u00E4/\u0416.x", L"/\u00E4", L"\u0416"},
    };
    for (const auto& row : rows)
    {
        const PathNames::Executable split =
            PathNames::SplitExecutable(row.path, L'/', [] { return TString<wchar_t>(L"/work folder"); });
        EXPECT_EQ(split.m_strFolder, row.folder) << testing::PrintToString(std::wstring(row.path));
        EXPECT_EQ(split.m_strName, row.name) << testing::PrintToString(std::wstring(row.path));
    }
}

TEST(PathNames, MakesTheUniqueInstanceName)
{
    const struct
    {
        const wchar_t* folder;
        const wchar_t* name;
        const wchar_t* user;
        const wchar_t* key;
    } rows[] = {
        {L"/Applications/Tool.app/Contents/MacOS", L"Tool", L"ann",
         L"applicationstool.appcontentsmacostoolann"},
        {L"//A//:B::/", L"N", L"U", L"abnu"},
        {L"", L"Tool", L"", L"tool"},
        {L"/", L"", L"", L""},
        {L"/a", L"b/c", L"d:e", L"ab/cd:e"},
        {L"/\u00C4\u0416", L"T", L"u", L"\u00C4\u0416tu"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(PathNames::MakeUniqueInstanceName(row.folder, row.name, row.user, L'/'), row.key);
}

TEST(PathNames, JoinsWithOneSeparator)
{
    const struct
    {
        const wchar_t* base;
        const wchar_t* name;
        const wchar_t* result;
    } rows[] = {
        {L"", L"x", L"x"},         {L"/a", L"x", L"/a/x"},   {L"/a/", L"x", L"/a/x"},
        {L"/a/", L"/x", L"/a//x"}, {L"/a", L"/x", L"/a//x"}, {L"", L"", L""},
        {L"", L"/x", L"/x"},       {L"/a", L"", L"/a/"},     {L"/", L"x", L"/x"},
        {L"a\\", L"x", L"a\\/x"},
    };
    for (const auto& row : rows)
    {
        Wide result = L"old";
        PathNames::Join(result, row.base, row.name, L'/');
        EXPECT_EQ(result, row.result);
    }
}

TEST(PathNames, JoinsWithTheGivenSeparator)
{
    Wide result;
    PathNames::Join(result, L"C:", L"x", L'\\');
    EXPECT_EQ(result, L"C:\\x");
}

TEST(PathNames, GivesNothingForAPathThatTheSystemCannotTake)
{
    EXPECT_EQ(PathNames::ToNative(L"/\u00E4"), "/\xC3\xA4");
    EXPECT_EQ(PathNames::ToNative(L""), "");
    EXPECT_EQ(PathNames::ToNative(std::wstring(L"/tmp\0x", 6)), "");
    EXPECT_EQ(PathNames::ToNative(std::wstring(L"/tmp\0", 5)), "");
    EXPECT_EQ(PathNames::ToNative(std::wstring(1, static_cast<wchar_t>(0xD800))), "");
    EXPECT_EQ(PathNames::ToNative(std::wstring(1, static_cast<wchar_t>(0x110000))), "");
}
