// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/regExp/BackendCalls.h"
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

// ---- what the regular-expression library is asked

TEST(RegExpBackend, CompilesInUtf8ModeAloneOnEachCall)
{
    const RegExp regExp(TString<char>("a"), static_cast<RegExpOptions::Modifiers>(0xFFFFFFFFU));
    RegExp::ReplacementMappedStrings named;
    const BackendCalls calls;
    regExp.IsMatch("a");
    regExp.IsMatch("a");
    regExp.Match("a");
    regExp.Replace("b", "a", 0);
    regExp.Replace(std::vector<TString<char>>(), "a");
    regExp.Replace(named, "a");
    EXPECT_EQ(std::vector<std::uint32_t>(6, s_uUtf), calls.m_compilations);
}

TEST(RegExpBackend, ExecutesOnceFromTheStartWithoutOptions)
{
    const RegExp regExp(TString<char>("a"), static_cast<RegExpOptions::Modifiers>(0xFFFFFFFFU));
    RegExp::ReplacementMappedStrings named;
    const BackendCalls calls;
    regExp.IsMatch("aa");
    regExp.Match("aa");
    regExp.Replace(std::vector<TString<char>>(), "aa");
    regExp.Replace(named, "aa");
    ASSERT_EQ(4U, calls.m_executions.size());
    for (const BackendExecution& execution : calls.m_executions)
    {
        EXPECT_EQ(0U, execution.options);
        EXPECT_EQ(0U, execution.start);
        EXPECT_EQ(20U, execution.room);
    }
}

TEST(RegExpBackend, GlobalReplacementExecutesOncePerMatchAndOnceMore)
{
    const RegExp regExp = Pattern("a");
    const BackendCalls calls;
    regExp.Replace("b", "banana", 0);
    ASSERT_EQ(4U, calls.m_executions.size());
    EXPECT_EQ(s_uGlobal, calls.m_executions[0].options);
    for (const BackendExecution& execution : calls.m_executions)
    {
        EXPECT_EQ(s_uGlobal, execution.options & ~s_uUnchecked);
        EXPECT_EQ(20U, execution.room);
    }
}

TEST(RegExpBackend, FailedNameQueriesThrowTheirMessages)
{
    const struct
    {
        int query;
        const char* message;
    } rows[] = {
        {s_queries.m_iCount, "pcre_fullinfo 'PCRE_INFO_NAMECOUNT' return error"},
        {s_queries.m_iEntrySize, "pcre_fullinfo 'PCRE_INFO_NAMEENTRYSIZE' return error"},
        {s_queries.m_iTable, "pcre_fullinfo 'PCRE_INFO_NAMETABLE' return error"},
    };
    for (const auto& row : rows)
    {
        const HeldPatterns held;
        const FailingQuery failing(row.query);
        EXPECT_EQ(row.message, MessageOf([] { Pattern("(?<n>a)").Match("a"); }));
        EXPECT_EQ(0, held.Get()) << row.message;
    }
}

TEST(RegExpBackend, NameTableIsAskedOnlyForNames)
{
    for (const int query : {s_queries.m_iEntrySize, s_queries.m_iTable})
    {
        const FailingQuery failing(query);
        EXPECT_EQ(2U, Pattern("(a)").Match("a")->GetCount()) << query;
        EXPECT_EQ(0U, Pattern("(?<n>a)").Match("b")->GetCount()) << query;
    }
}

TEST(RegExpBackend, NamesAreCountedForEveryMatchWithGroups)
{
    const std::string message = "pcre_fullinfo 'PCRE_INFO_NAMECOUNT' return error";
    RegExp::ReplacementMappedStrings named;
    const RegExp regExp = Pattern("a");
    const FailingQuery failing(s_queries.m_iCount);
    EXPECT_EQ(message, MessageOf([&] { regExp.Match("a"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace(std::vector<TString<char>>(), "a"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace(named, "a"); }));
    EXPECT_EQ(-1, regExp.Match("b")->GetResult());
    EXPECT_EQ(0, Pattern(Repeat("(a)", 20)).Match(TString<char>(Repeat("a", 20)))->GetResult());
    EXPECT_TRUE(regExp.IsMatch("a"));
    EXPECT_EQ("b", regExp.Replace("b", "a", 0));
}

// ---- who frees what was compiled

TEST(RegExpBackend, NothingCompiledSurvivesACall)
{
    const HeldPatterns held;
    const RegExp regExp = Pattern("(?<n>a)");
    RegExp::ReplacementMappedStrings named;
    regExp.IsMatch("a");
    regExp.Match("a");
    regExp.Replace("b", "aa", 0);
    regExp.Replace(named, "a");
    MessageOf([&] { regExp.IsMatch("\xFF"); });
    MessageOf([&] { regExp.Match("\xFF"); });
    MessageOf([&] { regExp.Replace("\xFF", "a", 0); });
    MessageOf([&] { Pattern("(").Match("a"); });
    EXPECT_EQ(0, held.Get());
}

TEST(RegExpBackend, RecordKeepsOneCompiledPatternToItsEnd)
{
    const HeldPatterns held;
    const RegExp regExp = Pattern("a");
    {
        smart_ptr<MatchResult, smart_ptr_policy> record = regExp.Match("a");
        const smart_ptr<MatchResult, smart_ptr_policy> other = record;
        EXPECT_EQ(1, held.Get());
        regExp.RegExp_compile(record);
        EXPECT_EQ(1, held.Get());
        record->SetPattern("(");
        MessageOf([&] { regExp.RegExp_compile(record); });
        EXPECT_EQ(0, held.Get());
        record->SetPattern("a");
        regExp.RegExp_compile(record);
        EXPECT_EQ(1, held.Get());
    }
    EXPECT_EQ(0, held.Get());
}
