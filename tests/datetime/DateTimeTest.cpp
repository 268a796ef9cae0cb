#include "toolkit/datetime/DateTime.h"

#include <gtest/gtest.h>

namespace
{

using Toolkit::DateTime;
using Toolkit::TString;

TEST(DateTime, WritesAndReadsIsoText)
{
    const DateTime time(2009, 3, 7, 14, 5, 9);
    TString<wchar_t> text;
    time.GetIsoString(text, false);
    EXPECT_EQ(text, L"2009-03-07 14:05:09");
    DateTime read;
    EXPECT_TRUE(read.ParseIsoString(text));
    EXPECT_EQ(read, time);
}

} // namespace
