// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/faults/OutOfMemory.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/datetime/CultureInfo.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/datetime/Locales.h"
#include "toolkit/datetime/Timestamp.h"

using namespace Toolkit;
using ToolkitTest::Attempt;

TEST(OutOfMemory, IsSurvivedByDates)
{
    const ToolkitSession session;
    const DateTime moment(2009, 3, 7, 14, 5, 9);
    const TString<wchar_t> text(L"2009-03-07 14:05:09, and more than fits into the string object");
    ToolkitTest::FailEachAllocation({
        {"DateTime, constructors",
         [&](const Attempt& attempt)
         {
             attempt([] { const DateTime now; });
             attempt([&] { EXPECT_EQ(moment, DateTime(2009, 3, 7, 14, 5, 9)); });
             attempt([] { EXPECT_TRUE(DateTime(2009, 3, 7, 14, 5, 9, 2).IsValid()); });
             attempt([&] { EXPECT_EQ(moment, DateTime(moment)); });
             attempt([] { EXPECT_EQ(3, DateTime::CreateNormalizedDateTime(2009, 2, 30).GetMonth()); });
         }},
        {"DateTime, changes and differences",
         [&](const Attempt& attempt)
         {
             DateTime value(moment);
             const smart_ptr<DateTime> other(new DateTime(moment));
             attempt([&] { value.Add(0, 1, 0, 0); });
             attempt([&] { value.Remove(0, 1, 0, 0); });
             attempt([&] { value.Add(0, 0, 90); });
             attempt([&] { value.MakeToUTC().MakeFromUTC(); });
             attempt([&] { value.GetTotalMinutes(other); });
             attempt([&] { value.Now(); });
             attempt([&] { value = moment; });
             EXPECT_TRUE(value.IsValid());
         }},
        {"DateTime, ISO and sortable texts",
         [&](const Attempt& attempt)
         {
             TString<wchar_t> wide;
             TString<wchar_t> date;
             TString<wchar_t> time;
             TString<wchar_t> sortable;
             TString<char> narrow;
             DateTime value(moment);
             attempt([&] { moment.GetIsoString(wide, true); });
             attempt([&] { moment.GetIsoString(narrow, false); });
             // Each into a text of its own, as one that is long enough allocates nothing.
             attempt([&] { moment.GetIsoDate(date, true); });
             attempt([&] { moment.GetIsoTime(time, true); });
             attempt([&] { moment.GetSortableString(sortable); });
             attempt([&] { moment.IntToUString(7, 60); });
             attempt([&] { value.ParseIsoString(text); });
             attempt([&]
                     { value.ParseIsoString(TString<char>("2009-03-07 14:05:09 Z, and some more text")); });
             EXPECT_TRUE(value.ParseIsoString(text));
         }},
        {"DateTime, texts of the user's locale, and Locales",
         [&](const Attempt& attempt)
         {
             TString<wchar_t> out;
             for (const char* const locale : {"en_US.UTF-8", "ja_JP.UTF-8"})
             {
                 const ToolkitTest::ScopedEnvironment environment("LC_ALL", locale);
                 attempt([&] { Locales::GetCurrentDateFormat(out); });
                 attempt([&] { moment.GetString(out); });
                 attempt([&] { moment.GetRelativeStringFromNow(out); });
                 moment.GetDate(out);
                 EXPECT_EQ(locale[0] == 'e' ? L"03/7/09" : L"2009/03/07", out);
             }
         }},
        {"CultureInfo", [&](const Attempt& attempt)
         { attempt([&] { EXPECT_EQ(text, CultureInfo(text, text).m_strDisplayName); }); }},
    });
}

TEST(OutOfMemory, IsSurvivedByTimestamps)
{
    const Timestamp moment = *Timestamp::Parse("2026-03-02T14:05:09.250Z");
    ToolkitTest::FailEachAllocation({
        {"Timestamp::Parse, ParseMail",
         [&](const Attempt& attempt)
         {
             attempt([&] { EXPECT_EQ(moment, *Timestamp::Parse("2026-03-02T14:05:09.250Z")); });
             attempt([&] { EXPECT_GT(moment, *Timestamp::ParseMail("2 Mar 2026 14:05 GMT")); });
             attempt([] { EXPECT_FALSE(Timestamp::Parse("a long text that is no timestamp at all")); });
             attempt([] { EXPECT_FALSE(Timestamp::ParseMail("1 Jan 9999 00:00:00 +0000")); });
         }},
        {"Timestamp::ToRfc3339",
         [&](const Attempt& attempt)
         {
             attempt([&] { EXPECT_EQ("2026-03-02T14:05:09.250Z", moment.ToRfc3339()); });
             attempt([&] { EXPECT_EQ(29U, moment.ToRfc3339(Timestamp::Zone::Local, 3).size()); });
         }},
        {"Timestamp::Format",
         [&](const Attempt& attempt)
         {
             const ToolkitTest::ScopedEnvironment environment("LC_ALL", "de_DE.UTF-8");
             attempt([&] { EXPECT_EQ(0U, moment.Format(Timestamp::Style::Short).find("02.03.26, ")); });
             attempt([&]
                     { EXPECT_EQ(0U, moment.Format(Timestamp::Style::Full, "fr_FR").find("lundi 2 mars")); });
         }},
        {"Timestamp::FromDateTime, ToDateTime",
         [&](const Attempt& attempt)
         {
             attempt([&] { EXPECT_LT(*Timestamp::FromDateTime(moment.ToDateTime()), moment); });
             attempt([] { EXPECT_FALSE(Timestamp::FromDateTime(DateTime(2026, 13, 1, 0, 0, 0))); });
         }},
    });
}
