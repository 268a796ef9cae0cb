#include "toolkit/core/TString.h"

#include <gtest/gtest.h>

using Toolkit::TString;

TEST(TString, EmptyIsOneSharedInstance)
{
    EXPECT_EQ(&TString<wchar_t>::Empty(), &TString<wchar_t>::Empty());
    EXPECT_EQ(&TString<char>::Empty(), &TString<char>::Empty());
    EXPECT_TRUE(TString<wchar_t>::Empty().empty());
}
