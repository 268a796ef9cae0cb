// SPDX-License-Identifier: MIT
#include "toolkit/app/CmdLineOption.h"

#include <type_traits>

#include <gtest/gtest.h>

using Toolkit::CmdLineOption;
using Toolkit::TString;

static_assert(std::has_virtual_destructor_v<CmdLineOption>);

TEST(CmdLineOption, LowersTheAsciiLettersOfItsName)
{
    const struct
    {
        const wchar_t* given;
        const wchar_t* stored;
    } rows[] = {
        {L"Culture", L"culture"},
        {L"RESTART", L"restart"},
        {L"a-Z_9", L"a-z_9"},
        {L"\u00C4\u0416", L"\u00C4\u0416"},
        {L"", L""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CmdLineOption(row.given, false).GetName(), row.stored);
}

TEST(CmdLineOption, LowersBehindAZero)
{
    const TString<wchar_t> name(std::wstring(L"A\0B", 3));
    EXPECT_EQ(CmdLineOption(name, false).GetName(), TString<wchar_t>(std::wstring(L"a\0b", 3)));
}

TEST(CmdLineOption, IsNotFoundAndWithoutAValueAtFirst)
{
    const CmdLineOption option(L"name", true);
    EXPECT_FALSE(option.IsFound());
    EXPECT_EQ(option.GetValue(), L"");
}

TEST(CmdLineOption, CanBeCopied)
{
    const CmdLineOption copy = CmdLineOption(L"Name", true);
    CmdLineOption assigned(L"other", false);
    assigned = copy;
    EXPECT_EQ(assigned.GetName(), L"name");
    EXPECT_TRUE(assigned.IsRequired());
}

TEST(CmdLineOption, KeepsWhetherItIsRequired)
{
    EXPECT_TRUE(CmdLineOption(L"name", true).IsRequired());
    EXPECT_FALSE(CmdLineOption(L"name", false).IsRequired());
}
