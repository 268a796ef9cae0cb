// SPDX-License-Identifier: MIT
#include <string>

#include <gtest/gtest.h>

#include "tests/support/RegExpSupport.h"
#include "toolkit/regExp/RegExp.h"

using namespace Toolkit;
using namespace ToolkitTest;

// What holds whichever library is beneath.

namespace
{

std::string Nested(std::size_t levels)
{
    return Repeat("(", levels) + "a" + Repeat(")", levels);
}

} // namespace

TEST(RegExpBackend, DeepRecursionEndsInAnExceptionOnTheMainThread)
{
    const RegExp regExp = Pattern("^(a|b)*$");
    EXPECT_TRUE(regExp.IsMatch(TString<char>(Repeat("ab", 1000))));
    EXPECT_EQ(ExecutionMessage("-21"),
              MessageOf([&] { regExp.IsMatch(TString<char>(Repeat("ab", 1000000))); }));
    EXPECT_EQ(ExecutionMessage("-21"),
              MessageOf([&] { regExp.Match(TString<char>(Repeat("ab", 1000000))); }));
}

TEST(RegExpBackend, LimitInThePatternStillCounts)
{
    EXPECT_EQ(
        ExecutionMessage("-21"),
        MessageOf([] { Pattern("(*LIMIT_RECURSION=5)(a|b)*").IsMatch(TString<char>(Repeat("a", 50))); }));
    EXPECT_EQ(ExecutionMessage("-8"),
              MessageOf([] { Pattern("(*LIMIT_MATCH=5)(a|b)*").IsMatch(TString<char>(Repeat("a", 50))); }));
}

TEST(RegExpBackend, PatternsMayNest250Levels)
{
    EXPECT_EQ(0, Pattern(Nested(250)).Match("a")->GetResult());
    EXPECT_EQ(" : parentheses are too deeply nested (@offset: 251) " + Nested(251),
              MessageOf([] { Pattern(Nested(251)).IsMatch("a"); }));
}
