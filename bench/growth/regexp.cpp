// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include "toolkit/regExp/MatchResult.h"
#include "toolkit/regExp/RegExp.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

RegExp Expression(const std::string& pattern)
{
    return RegExp(TString<char>(pattern), RegExpOptions::Default);
}

// A text with that many places to replace.
TString<char> Places(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += i % 2 == 0 ? "the dog " : "quick fox";
    return TString<char>(text);
}

// `search(expression, subject)` of a subject whose end alone matches.
template <class C, class Search>
void AddSearch(const std::string& operation, Search search)
{
    Add(operation, s_vecMany,
        [search](std::size_t length)
        {
            const std::string words = ToolkitBench::Words(length) + "somebody@example.com";
            return [search, expression = Expression("(\\w+)@(\\w+)\\.com"),
                    subject = TString<C>(std::basic_string<C>(words.begin(), words.end()))]
            { benchmark::DoNotOptimize(search(expression, subject)); };
        });
}

// "(\w)(\w)...", one group for each.
std::string Groups(std::size_t count)
{
    std::string pattern;
    for (std::size_t i = 0; i < count; ++i)
        pattern += "(\\w)";
    return pattern;
}

void AddGroups()
{
    const std::vector<long> sizes = {2, 4, 8, 16};
    Add("MatchGroups", sizes,
        [](std::size_t count)
        {
            return [expression = Expression(Groups(count)), subject = TString<char>(std::string(count, 'a'))]
            { benchmark::DoNotOptimize(expression.Match(subject)->GetCount()); };
        });
    Add("ReplaceGroups", sizes,
        [](std::size_t count)
        {
            return [expression = Expression(Groups(count)), subject = TString<char>(std::string(count, 'a')),
                    texts = std::vector<TString<char>>(count, TString<char>("text"))]
            { benchmark::DoNotOptimize(expression.Replace(texts, subject)); };
        });
}

} // namespace

void AddRegExp()
{
    AddSearch<char>("IsMatch", [](const RegExp& expression, const TString<char>& subject)
                    { return expression.IsMatch(subject); });
    AddSearch<wchar_t>("IsMatchWide", [](const RegExp& expression, const TString<wchar_t>& subject)
                       { return expression.IsMatch(subject); });
    AddSearch<char>("Match", [](const RegExp& expression, const TString<char>& subject)
                    { return expression.Match(subject)->GetResult(); });
    AddGroups();
    // Up to what PCRE compiles.
    Add("PatternLength", s_vecFew,
        [](std::size_t length)
        {
            return [expression = Expression(ToolkitBench::Words(length)),
                    subject = TString<char>(ToolkitBench::Words(length))]
            { benchmark::DoNotOptimize(expression.IsMatch(subject)); };
        });
    // Up to what fits before offsets begin anew.
    Add("RegExpReplace", s_vecFew,
        [](std::size_t places)
        {
            return [expression = Expression("dog|fox"), text = Places(places), with = TString<char>("cat")]
            { benchmark::DoNotOptimize(expression.Replace(with, text, 0)); };
        });
    Add("RegExpReplaceLong", {10000, 40000, 160000},
        [](std::size_t places)
        {
            return [expression = Expression("dog|fox"), text = Places(places), with = TString<char>("bear")]
            { benchmark::DoNotOptimize(expression.Replace(with, text, 0)); };
        });
    Add("RegExpReplaceByLonger", s_vecFew,
        [](std::size_t places)
        {
            return [expression = Expression("dog|fox"), text = Places(places), with = TString<char>("bear")]
            { benchmark::DoNotOptimize(expression.Replace(with, text, 0)); };
        });
}

} // namespace ToolkitGrowth
