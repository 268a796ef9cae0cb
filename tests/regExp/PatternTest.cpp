// SPDX-License-Identifier: MIT
#include "toolkit/regExp/Pattern.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

using namespace Toolkit;

namespace
{

using Texts = std::vector<std::string>;

Pattern Compiled(std::string_view pattern, Pattern::Options options = Pattern::Default,
                 const PatternLimits& limits = PatternLimits())
{
    return Pattern::Compile(pattern, options, limits).value();
}

std::string Repeated(std::string_view text, std::size_t count)
{
    std::string repeated;
    while (count-- > 0)
        repeated += text;
    return repeated;
}

// Each match as its text, with its position.
Texts AllOf(const Pattern& pattern, std::string_view text)
{
    Texts found;
    for (const Match& match : pattern.All(text))
        found.push_back(match ? std::string(match[0]) + "@" + std::to_string(match.Position()) : "error");
    return found;
}

Texts SplitOf(const std::string& pattern, std::string_view text)
{
    Texts parts;
    for (const std::string_view part : *Compiled(pattern).Split(text))
        parts.emplace_back(part.data() != nullptr ? std::string(part) : "(none)");
    return parts;
}

std::string Replaced(const std::string& pattern, std::string_view text, std::string_view replacement)
{
    const Result<std::string> replaced = Compiled(pattern).Replace(text, replacement);
    return replaced ? *replaced : "failure: " + replaced.error().Message();
}

template <class T, class = void>
struct MayBeSearched : std::false_type
{
};

template <class T>
struct MayBeSearched<T, std::void_t<decltype(std::declval<const Pattern&>().Find(std::declval<T>())),
                                    decltype(std::declval<const Pattern&>().All(std::declval<T>())),
                                    decltype(std::declval<const Pattern&>().Split(std::declval<T>()))>>
    : std::true_type
{
};

static_assert(MayBeSearched<std::string&>::value);
static_assert(MayBeSearched<const std::string&>::value);
static_assert(MayBeSearched<std::string_view>::value);
static_assert(MayBeSearched<const char*>::value);
static_assert(MayBeSearched<const char (&)[4]>::value);
static_assert(!MayBeSearched<std::string>::value);
static_assert(!MayBeSearched<const std::string>::value);

} // namespace

// ---- compilation

TEST(Pattern, SaysWhyAPatternIsInvalid)
{
    const Result<Pattern> broken = Pattern::Compile("a(b");
    ASSERT_FALSE(broken);
    EXPECT_EQ(Errc::Malformed, broken.error().Code());
    EXPECT_EQ("cannot compile the pattern \"a(b\": missing closing parenthesis at byte 3",
              broken.error().Message());
    EXPECT_EQ(Errc::Malformed, Pattern::Compile("a\xFF").error().Code());
    EXPECT_EQ(Errc::LimitReached, Pattern::Compile(Repeated("(", 251) + Repeated(")", 251)).error().Code());
    EXPECT_EQ(Errc::LimitReached, Pattern::Compile(Repeated("(a)", 60000)).error().Code());
    EXPECT_EQ(Errc::LimitReached, Pattern::Compile("((a{1000}){1000}){1000}").error().Code());
}

TEST(Pattern, GoesOnAfterNulAndTakesNothingAtAll)
{
    EXPECT_TRUE(Compiled(std::string_view("a\0b", 3)).Find(std::string_view("xa\0b", 4)));
    EXPECT_TRUE(Compiled("").Find(""));
    EXPECT_TRUE(Compiled(std::string_view()).Find(std::string_view()));
}

TEST(Pattern, CombinesItsOptions)
{
    // Each option lets one more of the four subjects match.
    for (unsigned int bits = 0; bits < 16; ++bits)
    {
        const Pattern caseless = Compiled("A", static_cast<Pattern::Options>(bits));
        const Pattern lines = Compiled("^b$", static_cast<Pattern::Options>(bits));
        const Pattern dot = Compiled("a.b", static_cast<Pattern::Options>(bits));
        const Pattern spaced = Compiled("x y # z", static_cast<Pattern::Options>(bits));
        EXPECT_EQ((bits & Pattern::IgnoreCase) != 0, static_cast<bool>(caseless.Find("a"))) << bits;
        EXPECT_EQ((bits & Pattern::Multiline) != 0, static_cast<bool>(lines.Find("a\nb\nc"))) << bits;
        EXPECT_EQ((bits & Pattern::DotAll) != 0, static_cast<bool>(dot.Find("a\nb"))) << bits;
        EXPECT_EQ((bits & Pattern::Extended) != 0, static_cast<bool>(spaced.Find("xy"))) << bits;
    }
    static_assert(std::is_same_v<Pattern::Options, decltype(Pattern::IgnoreCase | Pattern::DotAll)>);
    EXPECT_TRUE(Compiled("^\xC3\x84.C$", Pattern::IgnoreCase | Pattern::Multiline | Pattern::DotAll)
                    .Find("x\n\xC3\xA4\nc\n"));
}

// ---- one match

TEST(Pattern, FindsGroupsByNumberAndName)
{
    const std::string text = "in \xC3\xA4: key=42;";
    const Match match = Compiled(R"((?<key>\w+)=(?<value>\d+)(?<more>,\d+)?)").Find(text);
    ASSERT_TRUE(match);
    EXPECT_EQ(nullptr, match.Error());
    EXPECT_EQ("key=42", match[0]);
    EXPECT_EQ("key", match["key"]);
    EXPECT_EQ("42", match[2]);
    EXPECT_EQ(text.data() + 11, match["value"].data());
    EXPECT_EQ(7U, match.Position());
    EXPECT_EQ(6U, match.Length());
    EXPECT_EQ(11U, match.Position(2));
    EXPECT_EQ(2U, match.Length("value"));
    EXPECT_EQ(4U, match.Count());
    EXPECT_TRUE(match.Has(2));
    EXPECT_TRUE(match.Has("key"));
}

TEST(Pattern, GroupThatTookNoPartIsEmpty)
{
    const Match match = Compiled("(a)|(b)|(?<c>c)").Find("xb");
    ASSERT_TRUE(match);
    for (const std::size_t group : {1U, 3U, 4U, 1000U})
    {
        EXPECT_FALSE(match.Has(group));
        EXPECT_EQ("", match[group]);
        EXPECT_EQ(std::string_view::npos, match.Position(group));
        EXPECT_EQ(0U, match.Length(group));
    }
    for (const char* const name : {"c", "unknown", ""})
    {
        EXPECT_FALSE(match.Has(name));
        EXPECT_EQ("", match[name]);
        EXPECT_EQ(std::string_view::npos, match.Position(name));
    }
    EXPECT_TRUE(match.Has(2));
    const Match empty = Compiled("a()").Find("a");
    EXPECT_TRUE(empty.Has(1));
    EXPECT_EQ(1U, empty.Position(1));
}

TEST(Pattern, WithoutAMatchThereIsNothing)
{
    for (const Match& match : {Compiled("(?<n>z)").Find("abc"), Match()})
    {
        EXPECT_FALSE(match);
        EXPECT_EQ(nullptr, match.Error());
        EXPECT_FALSE(match.Has(0));
        EXPECT_EQ("", match[0]);
        EXPECT_EQ("", match["n"]);
        EXPECT_EQ(std::string_view::npos, match.Position());
        EXPECT_EQ(0U, match.Count());
    }
}

TEST(Pattern, OfDuplicateNamesTheFirstThatTookPartCounts)
{
    const Pattern pattern = Compiled("(?J)(?<n>a)|(?<n>b)|(?<n>c)(?<n>d)");
    EXPECT_EQ("a", pattern.Find("a")["n"]);
    EXPECT_EQ("b", pattern.Find("b")["n"]);
    EXPECT_EQ("c", pattern.Find("cd")["n"]);
    EXPECT_EQ("<a><b><c>", *pattern.Replace("abcd", "<${n}>"));
}

TEST(Pattern, HasAnyNumberOfGroups)
{
    const Pattern pattern = Compiled(Repeated("(.)", 3000) + "(?<last>.)");
    const std::string text = Repeated("ab", 1500) + "z";
    const Match match = pattern.Find(text);
    ASSERT_TRUE(match);
    EXPECT_EQ(3002U, match.Count());
    EXPECT_EQ("b", match[2000]);
    EXPECT_EQ("z", match["last"]);
    EXPECT_EQ(3000U, match.Position(3001));
}

TEST(Pattern, MatchIsAValue)
{
    const std::string text = "ab";
    Match kept;
    {
        const Pattern pattern = Compiled("(a)(b)");
        Match first = pattern.Find(text);
        const Match copy = first;
        const Match second = pattern.Find("b");
        EXPECT_FALSE(second);
        EXPECT_EQ("b", copy[2]);
        const Match moved = std::move(first);
        EXPECT_EQ("ab", moved[0]);
        kept = moved;
        kept = *&kept;
    }
    EXPECT_EQ("a", kept[1]);
    EXPECT_EQ(3U, kept.Count());
    Match failed = Compiled("a").Find("\xFF");
    const Match copyOfFailed = failed;
    ASSERT_NE(nullptr, copyOfFailed.Error());
    EXPECT_EQ(failed.Error()->Message(), copyOfFailed.Error()->Message());
}

TEST(Pattern, IsAValue)
{
    Pattern pattern = Compiled("a");
    const Pattern copy = pattern;
    const Pattern moved = std::move(pattern);
    EXPECT_TRUE(pattern.Find("a"));
    EXPECT_TRUE(moved.Find("a"));
    pattern = Compiled("b");
    EXPECT_TRUE(pattern.Find("b"));
    EXPECT_FALSE(copy.Find("b"));
}

// ---- texts that cannot be searched

TEST(Pattern, TextThatIsNotUtf8NeverMatches)
{
    const Pattern pattern = Compiled("a");
    for (const std::string_view text : {"a\xFF", "\xC3", "aa\xED\xA0\x80", "\xC0\x80", "a\xF4\x90\x80\x80"})
    {
        const Match match = pattern.Find(text);
        EXPECT_FALSE(match);
        ASSERT_NE(nullptr, match.Error());
        EXPECT_EQ(Errc::Malformed, match.Error()->Code());
        EXPECT_EQ(Texts{"error"}, AllOf(pattern, text));
        EXPECT_EQ(Errc::Malformed, pattern.Replace(text, "b").error().Code());
        EXPECT_EQ(Errc::Malformed, pattern.Split(text).error().Code());
    }
    EXPECT_EQ("cannot search the text: it is not UTF-8 at byte 1: UTF-8 error: illegal byte (0xfe or 0xff)",
              pattern.Find("a\xFF").Error()->Message());
}

TEST(Pattern, CatastrophicPatternsEndWithAnError)
{
    const std::string text = Repeated("a", 5000) + "!";
    for (const char* const catastrophic : {"(a+)+$", "(a|aa)+$", "(a|a?)+$", "(?:a?){2000}b?$x|(a+)+$"})
        for (const char* const code : {"", "(*NO_JIT)"})
        {
            const auto begin = std::chrono::steady_clock::now();
            const Pattern pattern = Compiled(std::string(code) + catastrophic);
            const Match match = pattern.Find(text);
            EXPECT_FALSE(match);
            ASSERT_NE(nullptr, match.Error()) << code << catastrophic;
            EXPECT_EQ(Errc::LimitReached, match.Error()->Code());
            EXPECT_EQ(Errc::LimitReached, pattern.Replace(text, "").error().Code());
            EXPECT_EQ(Errc::LimitReached, pattern.Split(text).error().Code());
            EXPECT_GT(std::chrono::seconds(60), std::chrono::steady_clock::now() - begin);
        }
}

TEST(Pattern, DeepPatternsGetTheMemoryThatTheyMayHave)
{
    const std::string text = Repeated("ab", 30000);
    for (const char* const code : {"", "(*NO_JIT)"})
    {
        const std::string nested = std::string(code) + "^(a|b(?!c))*$";
        EXPECT_TRUE(Compiled(nested).Find(text)) << code;
        const Match match = Compiled(nested, Pattern::Default, PatternLimits().Memory(100000)).Find(text);
        EXPECT_FALSE(match) << code;
        ASSERT_NE(nullptr, match.Error()) << code;
        EXPECT_EQ(Errc::LimitReached, match.Error()->Code());
    }
}

TEST(Pattern, StepsAreLimited)
{
    const std::string text = Repeated("a", 16) + "!";
    EXPECT_EQ(nullptr, Compiled("(a+)+$").Find(text).Error());
    PatternLimits limits;
    limits.Steps(1000).Memory(1 << 20);
    const PatternLimits copy = limits;
    limits = PatternLimits();
    EXPECT_NE(nullptr, Compiled("(a+)+$", Pattern::Default, copy).Find(text).Error());
    EXPECT_EQ(nullptr, Compiled("(a+)+$", Pattern::Default, limits).Find(text).Error());
    EXPECT_TRUE(Compiled("a", Pattern::Default, copy).Find(text));
}

// Machine code of PCRE2 10.42 would remember what the group captured before "y" was missing.
TEST(Pattern, GroupOfAnAttemptThatFailedTakesNoPart)
{
    for (const char* const group : {"(b)*+",
                                    "(b){0,}+",
                                    "(?<n>b)*+",
                                    "(b+)*+",
                                    "(b|)*+",
                                    "(c)*(b)*+",
                                    "()*+",
                                    "(b)(?#+)*(?#c)+",
                                    "(?x:(b) *#*+)\n +)",
                                    "(b)\\Q\\E*\\Q\\E+",
                                    "(?:(b))*+",
                                    "(b)*",
                                    "(b)++",
                                    "(b)?+",
                                    "(b){2,}+",
                                    "(?>(b)*)",
                                    "(?=(b)*+)",
                                    "(b(?C1)(?#c))*+",
                                    "(?x:(b(?C) )*+)",
                                    "(a)*(b)*+"})
        for (const char* const code : {"", "(*NO_JIT)"})
        {
            const std::string text = std::string(code) + "x(?:" + group + "y|bbK)";
            const Match match = Compiled(text).Find("xbbK");
            ASSERT_TRUE(match) << text;
            EXPECT_EQ("xbbK", match[0]) << text;
            for (std::size_t i = 1; i < match.Count(); ++i)
                EXPECT_FALSE(match.Has(i)) << text;
            EXPECT_EQ("xbbK", Compiled(text + "(?(1)Z)").Find("xbbKZ")[0]) << text;
        }
    EXPECT_EQ((Texts{"K@3"}), AllOf(Compiled("(?:(b)*+y)*K(?(1)Z|)"), "bxbKZ"));
    // So long that PCRE2 cannot list its items.
    EXPECT_FALSE(Compiled("x(?:(b)*+y|bbK)|" + Repeated("a", 20000)).Find("xbbK").Has(1));
}

TEST(Pattern, PatternThatCallsItselfForEverEndsWithAnError)
{
    const Match match = Compiled("(?R)").Find("a");
    EXPECT_FALSE(match);
    EXPECT_NE(nullptr, match.Error());
}

TEST(Pattern, MayRefuseEmptyMatchesAtItsStart)
{
    EXPECT_EQ("a", Compiled("(*NOTEMPTY)a*?b*?").Find("ab")[0]);
    EXPECT_EQ("b", Compiled("(*NOTEMPTY)a*?b*?").Find("cb")[0]);
    EXPECT_EQ("a", Compiled("(*UTF)(*NOTEMPTY_ATSTART)a*?b*?").Find("ab")[0]);
    EXPECT_EQ(1U, Compiled("(*NOTEMPTY_ATSTART)a*?b*?").Find("cdab").Position());
    EXPECT_EQ((Texts{"a@0", "b@1"}), AllOf(Compiled("(*NOTEMPTY)a*?b*?"), "ab"));
}

// ---- all matches

TEST(Pattern, FindsAllMatches)
{
    const struct
    {
        const char* pattern;
        const char* text;
        Texts matches;
    } rows[] = {
        {"a", "banana", {"a@1", "a@3", "a@5"}},
        {"ana", "banana", {"ana@1"}},
        {"z", "banana", {}},
        {"", "", {"@0"}},
        {"", "ab", {"@0", "@1", "@2"}},
        {"x*", "axb", {"@0", "x@1", "@2", "@3"}},
        {"x*", "\xC3\xA4x", {"@0", "x@2", "@3"}},
        {"a*?", "aa", {"@0", "a@0", "@1", "a@1", "@2"}},
        {"|a", "aa", {"@0", "a@0", "@1", "a@1", "@2"}},
        {"\\b", "ab c", {"@0", "@2", "@3", "@4"}},
        {"(?<=a)", "aab", {"@1", "@2"}},
        {"^", "a\nb", {"@0"}},
        {"(?m)^", "a\nb", {"@0", "@2"}},
        {"(?m)$", "a\nb", {"@1", "@3"}},
        {"(*CRLF)(?m)$", "a\r\nb", {"@1", "@4"}},
        {"(*ANYCRLF)x*", "\r\nx", {"@0", "x@2", "@3"}},
        {"\\Ga", "aab", {"a@0", "a@1"}},
        {"a\\Kb", "abab", {"b@1", "b@3"}},
        {"a\\K", "aab", {"@1", "@2"}},
        {".", "\xE2\x82\xAC\xF0\x9F\x98\x80", {"\xE2\x82\xAC@0", "\xF0\x9F\x98\x80@3"}},
        {"\\d+(?=x)", "12x34 5x", {"12@0", "5@6"}},
        // "\\K" beyond the end, and into the match before.
        {"(?(DEFINE)(ab\\K))(?=(?1))", "xabcdabcd", {"@1", "@5"}},
        {"(?(DEFINE)(\\Kb))(?:(?<=(?1)).|b)", "abcbbd", {"b@1", "c@2", "b@3", "b@4", "d@5"}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.matches, AllOf(Compiled(row.pattern), row.text)) << row.pattern << " " << row.text;
}

TEST(Pattern, MatchesInsideACharacterGoOnAtTheNext)
{
    for (const char* const pattern : {"\\C", "\\C?", "\\C*?"})
        EXPECT_LE(3U, AllOf(Compiled(pattern), "a\xC3\xA4z").size()) << pattern;
}

TEST(Pattern, MatchesMayBeKeptAndPatternsMayGo)
{
    std::vector<Match> kept;
    const std::string text = "1 22 333";
    for (const Match& match : Compiled("\\d+").All(text))
        kept.push_back(match);
    ASSERT_EQ(3U, kept.size());
    EXPECT_EQ("1", kept[0][0]);
    EXPECT_EQ("333", kept[2][0]);
    const Matches all = Compiled("\\d+").All(text);
    EXPECT_EQ(3, std::distance(all.begin(), all.end()));
    EXPECT_EQ(2,
              std::count_if(all.begin(), all.end(), [](const Match& match) { return match.Length() > 1; }));
    Matches::Iterator at = all.begin();
    EXPECT_EQ("1", (*at++)[0]);
    EXPECT_EQ("22", (*at)[0]);
    EXPECT_EQ(5U, (++at)->Position());
    EXPECT_TRUE(++at == all.end());
    EXPECT_TRUE(++at == all.end());
}

TEST(Pattern, AnErrorEndsAllMatches)
{
    const std::string text = "1 " + Repeated("a", 40) + "!";
    EXPECT_EQ((Texts{"1@0", "error"}),
              AllOf(Compiled("1|(a+)+$", Pattern::Default, PatternLimits().Steps(10000)), text));
}

// ---- replacement

TEST(Pattern, ReplacesByGroups)
{
    const struct
    {
        const char* pattern;
        const char* text;
        const char* replacement;
        const char* replaced;
    } rows[] = {
        {R"((?<key>\w+)=(?<value>\d+))", "a=1, b=2", "${value}=${key}", "1=a, 2=b"},
        {"(a)(b)", "abab", "$2$1", "baba"},
        {"(a)(b)", "ab", "${2}1$0", "b1ab"},
        {"a", "banana", "$$", "b$n$n$"},
        {"a", "banana", "$$1$$", "b$1$n$1$n$1$"},
        {"a", "banana", "", "bnn"},
        {"z", "banana", "x", "banana"},
        {"(a)|(b)", "ab", "[$1$2]", "[a][b]"},
        {"x*", "axb", "-", "-a--b-"},
        {"", "ab", ".", ".a.b."},
        {"a", "", "b", ""},
        {"\xC3\xA4", "x\xC3\xA4y", "\xE2\x82\xAC", "x\xE2\x82\xACy"},
        {"a", "aa", "a", "aa"},
        {"(?<long_name_1>a)", "a", "<${long_name_1}>", "<a>"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.replaced, Replaced(row.pattern, row.text, row.replacement)) << row.replacement;
    EXPECT_EQ("k", *Compiled(Repeated("(.)", 11)).Replace("abcdefghijk", "$11"));
}

TEST(Pattern, UnknownGroupsAreFailures)
{
    EXPECT_EQ("failure: cannot replace by \"${nam}\": the pattern has no group \"nam\"",
              Replaced("(?<name>a)", "a", "${nam}"));
    EXPECT_EQ("failure: cannot replace by \"$2\": the pattern has no group \"2\"",
              Replaced("(a)", "a", "$2"));
    for (const char* const replacement :
         {"$", "x$", "$x", "${", "${1", "${}", "$ 1", "${-1}", "$99999999999999999999"})
    {
        const Result<std::string> replaced = Compiled("(a)").Replace("b", replacement);
        ASSERT_FALSE(replaced) << replacement;
        EXPECT_EQ(Errc::Malformed, replaced.error().Code());
    }
    EXPECT_EQ("failure: cannot replace by \"${1}$x\": after \"$\" comes neither a group nor another \"$\"",
              Replaced("(a)", "a", "${1}$x"));
}

TEST(Pattern, ReplacesByWhatAFunctionReturns)
{
    const Pattern pattern = Compiled("(?<word>[a-z]+)");
    const auto upper = [](const Match& match)
    {
        std::string text(match["word"]);
        std::transform(text.begin(), text.end(), text.begin(),
                       [](char letter)
                       { return static_cast<char>(std::toupper(static_cast<unsigned char>(letter))); });
        return text;
    };
    EXPECT_EQ("ABC 1 D", *pattern.Replace("abc 1 d", upper));
    EXPECT_EQ("<$0> 1", *pattern.Replace("ab 1", [](const Match&) { return "<$0>"; }));
    EXPECT_EQ("ab ab", *pattern.Replace("ab ab", [](const Match& match) { return match[0]; }));
    EXPECT_EQ("\xFF 1", *pattern.Replace("a 1", [](const Match&) { return std::string("\xFF"); }));
    const std::string kept = "kept";
    EXPECT_EQ("kept 1",
              *pattern.Replace("a 1", [&kept](const Match&) -> const std::string& { return kept; }));
    int count = 0;
    EXPECT_EQ("1-2-3",
              *pattern.Replace("a-b-c", [count](const Match&) mutable { return std::to_string(++count); }));
}

TEST(Pattern, PassesOnWhatAFunctionThrows)
{
    const Pattern pattern = Compiled("a");
    const auto fails = [](const Match&) -> std::string { throw std::runtime_error("no"); };
    EXPECT_THROW(static_cast<void>(pattern.Replace("a", fails)), std::runtime_error);
    EXPECT_EQ("b", *pattern.Replace("a", "b"));
}

// ---- split

TEST(Pattern, SplitsAsPythonDoes)
{
    const struct
    {
        const char* pattern;
        const char* text;
        Texts parts;
    } rows[] = {
        {",", "a,b,,c", {"a", "b", "", "c"}},
        {",", "", {""}},
        {",", "abc", {"abc"}},
        {",", ",", {"", ""}},
        {"\\W+", "Words, words, words.", {"Words", "words", "words", ""}},
        {"(\\W+)", "Words, words.", {"Words", ", ", "words", ".", ""}},
        {"(\\W+)", "...words, words...", {"", "...", "words", ", ", "words", "...", ""}},
        {"\\b", "Words, words, words.", {"", "Words", ", ", "words", ", ", "words", "."}},
        {"\\W*", "...words...", {"", "", "w", "o", "r", "d", "s", "", ""}},
        {"(\\W*)",
         "...words...",
         {"", "...", "", "", "w", "", "o", "", "r", "", "d", "", "s", "...", "", "", ""}},
        {"x*", "axbc", {"", "a", "", "b", "c", ""}},
        {"(a)|(b)", "1a2b3", {"1", "a", "(none)", "2", "(none)", "b", "3"}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.parts, SplitOf(row.pattern, row.text)) << row.pattern << " " << row.text;
}

// ---- threads

TEST(Pattern, ServesManyThreadsAtOnce)
{
    const Pattern pattern = Compiled("(?<n>[0-9]+)(a|b(?!c))*");
    std::vector<std::thread> threads;
    std::vector<int> right(8, 0);
    for (std::size_t t = 0; t < right.size(); ++t)
        threads.emplace_back(
            [&pattern, &right, t]
            {
                const std::string number = std::to_string(1000 + t);
                const std::string text = "x" + number + std::string(t % 2 == 0 ? 5 : 5000, 'a');
                for (int i = 0; i < 200; ++i)
                {
                    const Match match = pattern.Find(text);
                    const Match other = pattern.Find(number);
                    if (match["n"] == number && match.Length() == text.size() - 1 && other["n"] == number &&
                        *pattern.Replace(number, "<$1>") == "<" + number + ">")
                        ++right[t];
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(std::vector<int>(8, 200), right);
}

TEST(Pattern, MatchMayEndOnAnotherThread)
{
    const std::string text = "a";
    for (int i = 0; i < 100; ++i)
    {
        Match match = Compiled("a").Find(text);
        std::thread([taken = std::move(match)] { EXPECT_EQ("a", taken[0]); }).join();
    }
}
