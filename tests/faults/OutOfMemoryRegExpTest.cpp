// SPDX-License-Identifier: MIT
#include <vector>

#include <gtest/gtest.h>
#ifndef TOOLKIT_TEST_PCRE2
#include <pcre.h>
#endif

#include "tests/faults/OutOfMemory.h"
#include "toolkit/regExp/Pattern.h"
#include "toolkit/regExp/RegExp.h"

using namespace Toolkit;
using ToolkitTest::Attempt;

namespace
{

const TString<char> c_strPattern("(?<first>[a-z]+) (?<second_of_a_long_name>[a-z]+)|(x*)*y{2,30}");
const TString<char> c_strSubject("one two, three four and five or more words");

// Lets what the library of regular expressions allocates count as well. With PCRE2 it does anyway.
class CountedRegexMemory
{
public:
#ifdef TOOLKIT_TEST_PCRE2
    CountedRegexMemory() {}
#else
    CountedRegexMemory() : m_malloc(pcre_malloc), m_free(pcre_free)
    {
        pcre_malloc = [](std::size_t size) { return operator new(size, std::nothrow); };
        pcre_free = [](void* memory) { operator delete(memory); };
    }
    ~CountedRegexMemory()
    {
        pcre_malloc = m_malloc;
        pcre_free = m_free;
    }

private:
    void* (*const m_malloc)(std::size_t);
    void (*const m_free)(void*);
#endif
};

} // namespace

TEST(OutOfMemory, IsSurvivedByRegularExpressions)
{
    const CountedRegexMemory counted;
    const RegExp regExp(c_strPattern, RegExpOptions::Default);
    ToolkitTest::FailEachAllocation({
        {"RegExp::RegExp",
         [](const Attempt& attempt)
         {
             attempt([] { RegExp(c_strPattern, RegExpOptions::Default); });
             attempt([] { RegExp(std::wstring(100, L'x'), RegExpOptions::Default); });
         }},
        {"RegExp::IsMatch",
         [&](const Attempt& attempt)
         {
             attempt([&] { EXPECT_TRUE(regExp.IsMatch(c_strSubject)); });
             attempt([&] { EXPECT_TRUE(regExp.IsMatch(TString<wchar_t>(L"one two"))); });
             EXPECT_TRUE(regExp.IsMatch(c_strSubject));
         }},
        {"RegExp::Match",
         [&](const Attempt& attempt)
         {
             attempt([&] { EXPECT_EQ("one", regExp.Match(c_strSubject)->Find("first")->GetValue()); });
             EXPECT_EQ(3, regExp.Match(c_strSubject)->GetResult());
         }},
        {"RegExp::Match(invalid pattern)", [](const Attempt& attempt)
         { attempt([] { RegExp("(", RegExpOptions::Default).Match(c_strSubject); }); }},
        {"RegExp::Match(failed execution)",
         [&](const Attempt& attempt) { attempt([&] { regExp.Match(TString<char>("\xFF")); }); }},
        {"RegExp::Replace(text)", [&](const Attempt& attempt)
         { attempt([&] { EXPECT_EQ("-, - - -", regExp.Replace("-", "a b, c d e f g hs", 0)); }); }},
        {"RegExp::Replace(by number)",
         [&](const Attempt& attempt)
         {
             const std::vector<TString<char>> replacements(2, std::string(50, '-'));
             attempt([&] { EXPECT_EQ(101U, regExp.Replace(replacements, "one two").size()); });
         }},
        {"RegExp::Replace(by name)",
         [&](const Attempt& attempt)
         {
             RegExp::ReplacementMappedStrings replacements = {{"first", std::string(50, '-')}};
             attempt([&] { EXPECT_EQ(51U, regExp.Replace(replacements, "one two").size()); });
             EXPECT_EQ(51U, regExp.Replace(replacements, "one two").size());
         }},
        {"RegExp::RegExp_compile, RegExp_exec, RegExp_replace",
         [&](const Attempt& attempt)
         {
             smart_ptr<MatchResult> record(new MatchResult);
             record->SetPattern("(b+)");
             record->SetSubject("abbc");
             attempt([&] { regExp.RegExp_compile(record); });
             attempt([&] { regExp.RegExp_exec(record, 0); });
             regExp.RegExp_compile(record);
             regExp.RegExp_exec(record, 0);
             TString<char> target("abbc");
             attempt([&] { regExp.RegExp_replace(record, 1, target, std::string(40, '-'), 0); });
             EXPECT_EQ(1, record->GetOffsets()[0]);
         }},
        {"RegExpException::Throw",
         [](const Attempt& attempt) {
             attempt([]
                     { RegExpException::Throw(L"a message that is too long for the string object itself"); });
         }},
    });
}

TEST(OutOfMemory, IsSurvivedByPatterns)
{
    const Pattern pattern = *Pattern::Compile(std::string_view(c_strPattern));
    const std::string text = c_strSubject;
    ToolkitTest::FailEachAllocation({
        {"Pattern::Compile", [](const Attempt& attempt)
         { attempt([] { EXPECT_TRUE(Pattern::Compile(std::string_view(c_strPattern)).has_value()); }); }},
        {"Pattern::Compile(a group repeated by *+)", [](const Attempt& attempt)
         { attempt([] { EXPECT_FALSE(Pattern::Compile("(a)*+b|ac")->Find("ac").Has(1)); }); }},
        {"Pattern::Compile(invalid)", [](const Attempt& attempt)
         { attempt([] { EXPECT_FALSE(Pattern::Compile("(a pattern that is not closed").has_value()); }); }},
        {"Pattern::Find",
         [&](const Attempt& attempt)
         {
             const Pattern fresh = *Pattern::Compile(std::string_view(c_strPattern));
             attempt([&] { EXPECT_EQ("one", fresh.Find(text)["first"]); });
             EXPECT_EQ("one", fresh.Find(text)["first"]);
         }},
        {"Pattern::Find(without machine code)",
         [&](const Attempt& attempt)
         {
             const Pattern interpreted = *Pattern::Compile("(*NO_JIT)" + std::string(c_strPattern));
             attempt([&] { EXPECT_EQ("one", interpreted.Find(text)["first"]); });
             EXPECT_EQ("one", interpreted.Find(text)["first"]);
         }},
        {"Pattern::Find(broken text)",
         [&](const Attempt& attempt) { attempt([&] { EXPECT_NE(nullptr, pattern.Find("\xFF").Error()); }); }},
        {"Match::Match",
         [&](const Attempt& attempt)
         {
             const Match match = pattern.Find(text);
             attempt([&] { EXPECT_EQ("one", Match(match)[1]); });
             Match other = pattern.Find("five six");
             const bool assigned = attempt([&] { other = match; });
             EXPECT_EQ(assigned ? "one" : "five", other[1]);
         }},
        {"Pattern::Replace",
         [&](const Attempt& attempt)
         {
             attempt(
                 [&]
                 { EXPECT_EQ("<$one>, <$three>", *pattern.Replace("one two, three four", "<$$${first}>")); });
         }},
        {"Pattern::Split", [&](const Attempt& attempt)
         { attempt([&] { EXPECT_EQ(9U, pattern.Split("one two, three four")->size()); }); }},
    });
}
