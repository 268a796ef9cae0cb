// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "tests/faults/OutOfMemory.h"
#include "toolkit/app/Folders.h"
#include "toolkit/core/LibraryVersion.h"
#include "toolkit/core/Result.h"
#include "toolkit/encoding/Text.h"

using namespace Toolkit;
using ToolkitTest::Attempt;

namespace
{

const char c_strLong[] = "a text that no string keeps within itself, \u20ac";

} // namespace

TEST(OutOfMemory, IsSurvivedByResults)
{
    ToolkitTest::FailEachAllocation({
        {"Failure::Failure", [](const Attempt& attempt)
         { attempt([] { EXPECT_EQ(c_strLong, Failure(Errc::Refused, c_strLong).Message()); }); }},
        {"Failure::operator=",
         [](const Attempt& attempt)
         {
             Failure failure(Errc::Refused, "before");
             const bool assigned = attempt([&] { failure = Failure(Errc::Malformed, c_strLong); });
             EXPECT_EQ(assigned ? c_strLong : std::string("before"), failure.Message());
         }},
        {"Result::operator=",
         [](const Attempt& attempt)
         {
             const Result<std::string> value = c_strLong;
             Result<std::string> result = Failure(Errc::Refused, "before");
             const bool assigned = attempt([&] { result = value; });
             EXPECT_EQ(assigned, result.has_value());
             EXPECT_TRUE(assigned || result.error().Message() == "before");
         }},
        {"LibraryVersion", [](const Attempt& attempt) { attempt([] { EXPECT_NE("", LibraryVersion()); }); }},
    });
}

TEST(OutOfMemory, IsSurvivedByTexts)
{
    // ICU keeps what it has once found of a charset.
    ASSERT_TRUE(Text::FromCharset("a", "iso-8859-15"));
    ToolkitTest::FailEachAllocation({
        {"Text::ToWide",
         [](const Attempt& attempt) { attempt([] { EXPECT_TRUE(Text::ToWide(c_strLong).has_value()); }); }},
        {"Text::FromWide", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(Text::FromWide(std::wstring(100, L'\u20ac')).has_value()); }); }},
        {"Text::ToCharset", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(Text::ToCharset(c_strLong, "iso-8859-15").has_value()); }); }},
        {"Text::FromCharset(broken)", [](const Attempt& attempt)
         { attempt([] { EXPECT_FALSE(Text::FromCharset("\xFF", "us-ascii").has_value()); }); }},
        {"Text::FromCharset(unknown)", [](const Attempt& attempt)
         { attempt([] { EXPECT_FALSE(Text::FromCharset("a", "no-such-charset").has_value()); }); }},
    });
}

TEST(OutOfMemory, IsSurvivedByFolders)
{
    ToolkitTest::FailEachAllocation({
        {"Folders::Of", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(Folders::Of("an application of a long name").has_value()); }); }},
        {"Folders::Of(bad name)", [](const Attempt& attempt)
         { attempt([] { EXPECT_FALSE(Folders::Of("an application / of a long name").has_value()); }); }},
        {"Folders::Config",
         [](const Attempt& attempt)
         {
             const Folders folders = *Folders::Of("watch");
             attempt([&] { EXPECT_EQ("watch", folders.Config().filename()); });
         }},
        {"Folders::Executable",
         [](const Attempt& attempt) { attempt([] { EXPECT_FALSE(Folders::Executable().empty()); }); }},
    });
}
