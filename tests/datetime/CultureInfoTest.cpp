// SPDX-License-Identifier: MIT
#include "toolkit/datetime/CultureInfo.h"

#include <gtest/gtest.h>

using Toolkit::CultureInfo;

TEST(CultureInfo, KeepsItsTwoTextsInOrder)
{
    const CultureInfo culture(L"de_DE", L"Deutsch (Deutschland)");
    EXPECT_EQ(culture.m_strName, L"de_DE");
    EXPECT_EQ(culture.m_strDisplayName, L"Deutsch (Deutschland)");
}

TEST(CultureInfo, IsCopiedAndAssigned)
{
    CultureInfo culture(L"de_DE", L"Deutsch");
    const CultureInfo copy = culture;
    culture = CultureInfo(L"", L"");
    EXPECT_EQ(culture.m_strName, L"");
    EXPECT_EQ(culture.m_strDisplayName, L"");
    EXPECT_EQ(copy.m_strName, L"de_DE");
    EXPECT_EQ(copy.m_strDisplayName, L"Deutsch");
}
