// SPDX-License-Identifier: MIT
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/RegExpSupport.h"
#include "toolkit/regExp/RegExp.h"

using namespace Toolkit;
using namespace ToolkitTest;

namespace
{

using Texts = std::vector<TString<char>>;
using Named = RegExp::ReplacementMappedStrings;

smart_ptr<MatchResult, smart_ptr_policy> Executed(const std::string& pattern, const std::string& subject)
{
    smart_ptr<MatchResult, smart_ptr_policy> record(new MatchResult);
    record->SetPattern(TString<char>(pattern));
    record->SetSubject(TString<char>(subject));
    const RegExp steps = Pattern("");
    steps.RegExp_compile(record);
    steps.RegExp_exec(record, 0);
    return record;
}

} // namespace

// ---- every match by one text

TEST(RegExpReplaceAll, ReplacesEveryMatch)
{
    const struct
    {
        const char* pattern;
        const char* replacement;
        const char* input;
        const char* result;
    } rows[] = {
        {"a", "b", "banana", "bbnbnb"},
        {"a", "aa", "aXa", "aaXaa"},
        {"a", "", "banana", "bnn"},
        {"z", "b", "banana", "banana"},
        {"a", "b", "", ""},
        {"an", "n", "banana", "bnna"},
        {"(a)(n)", "\\1$2&", "ban", "b\\1$2&"},
        {"[0-9]+", "#", "1 22 333", "# # #"},
        {".", "\xC3\xA4",
         "\xE2\x82\xAC"
         "a",
         "\xC3\xA4\xC3\xA4"},
        {"a*", "x", "baac", "bxc"},
        {"(?<=b)a", "b", "baaa", "bbbb"},
        {"(?<!b)a", "b", "aaa", "bab"},
        {"\\Aa", "", "aaab", "b"},
        {"\\Ga", "b", "aaca", "bbca"},
        {"\\ba", "b", "a aa", "b ba"},
        {"(*CRLF)(?m)^a", "b", "a\r\na\na", "a\r\nb\na"},
        {"a\\Kb", "x", "abab", "axax"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.result, Pattern(row.pattern).Replace(row.replacement, row.input, 0))
            << row.pattern << " " << row.input;
}

TEST(RegExpReplaceAll, StartAndEndOfTheTextDoNotCount)
{
    EXPECT_EQ("aaa", Pattern("^a").Replace("b", "aaa", 0));
    EXPECT_EQ("aaa", Pattern("a$").Replace("b", "aaa", 0));
    EXPECT_EQ("aaa\n", Pattern("a$").Replace("b", "aaa\n", 0));
    EXPECT_EQ("a\nb", Pattern("(?m)^a").Replace("b", "a\na", 0));
    EXPECT_EQ("b\na", Pattern("(?m)a$").Replace("b", "a\na", 0));
    EXPECT_EQ("aab", Pattern("a\\z").Replace("b", "aaa", 0));
}

TEST(RegExpReplaceAll, EmptyMatchesDoNotCount)
{
    EXPECT_EQ("abc", Pattern("").Replace("x", "abc", 0));
    EXPECT_EQ("abc", Pattern("x*").Replace("y", "abc", 0));
    EXPECT_EQ("abc", Pattern("(?=b)").Replace("y", "abc", 0));
}

TEST(RegExpReplaceAll, ThirdArgumentIsIgnored)
{
    for (int last = 0; last < 256; ++last)
        ASSERT_EQ("bbnbnb", Pattern("a").Replace("b", "banana", static_cast<unsigned char>(last)));
}

TEST(RegExpReplaceAll, ReplacementMayBelongToTheObject)
{
    const RegExp regExp = Pattern("a");
    EXPECT_EQ("aaa", regExp.Replace(regExp.GetPattern(), "aaa", 0));
}

TEST(RegExpReplaceAll, ZerosAreBytesLikeOthers)
{
    EXPECT_EQ(std::string("x\0y\0x", 5),
              Pattern("a").Replace("x", TString<char>(std::string("a\0y\0a", 5)), 0));
    EXPECT_EQ(std::string("\0b\0", 3), Pattern("a").Replace(TString<char>(std::string(1, '\0')), "aba", 0));
}

TEST(RegExpReplaceAll, MatchOfTooManyGroupsIsNone)
{
    EXPECT_EQ(Repeat("a", 20), Pattern(Repeat("(a)", 20)).Replace("b", TString<char>(Repeat("a", 20)), 0));
}

TEST(RegExpReplaceAll, MatchOfTooManyGroupsEndsTheRun)
{
    const std::string many = Repeat("a", 20);
    EXPECT_EQ("XX" + many + "b",
              Pattern("b|" + Repeat("(a)", 20)).Replace("X", TString<char>("bb" + many + "b"), 0));
}

TEST(RegExpReplaceAll, EndBeforeStartReplacesTheRest)
{
    EXPECT_EQ("abX", Pattern("(?=ab\\K)").Replace("X", "abcdef", 0));
}

TEST(RegExpReplaceAll, ReplacementThatBreaksUtf8Throws)
{
    const struct
    {
        const char* pattern;
        const char* replacement;
        const char* input;
        const char* result;
    } rows[] = {
        {"a", "\xFF", "ba", "-10"},
        {"\\C", "x", "\xC3\xA4", "-10"},
        {"\\C", "", "\xC3\xA4", "-10"},
        {"\\C", "\xC3", "\xC3\xA4", "-11"},
        {"\\C", "\xC3\xA4\xC3", "\xC3\xA4", "-11"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ExecutionMessage(row.result),
                  MessageOf([&] { Pattern(row.pattern).Replace(row.replacement, row.input, 0); }))
            << row.pattern << " " << row.replacement;
}

TEST(RegExpReplaceAll, ReplacementMayCompleteACharacter)
{
    EXPECT_EQ("\xC3\xB6\xC3\xB6", Pattern("\\C\\K\\C").Replace("\xB6", "\xC3\xA4\xC3\xA4", 0));
}

TEST(RegExpReplaceAll, SearchGoesOnAtItsPositionModulo65536)
{
    // "xxxx" becomes "xx", which stays unless a later search begins at byte 0 again.
    const struct
    {
        std::size_t distance;
        const char* begin;
    } rows[] = {{65532, "xx"}, {65533, "x"}, {65534, "xx"}};
    for (const auto& row : rows)
    {
        const std::string between = Repeat("-", row.distance);
        EXPECT_EQ(row.begin + between + "x",
                  std::string(Pattern("xx").Replace("x", TString<char>("xxxx" + between + "xx"), 0)))
            << row.distance;
    }
}

TEST(RegExpReplaceAll, SearchThatWouldBeginInsideACharacterThrows)
{
    // The first search ends behind byte 65,537: the next one would begin at byte 1.
    const TString<char> input("\xC3\xA4" + Repeat("-", 65534) + "a");
    EXPECT_EQ(ExecutionMessage("-11"), MessageOf([&] { Pattern("a").Replace("b", input, 0); }));
}

TEST(RegExpReplaceAll, RunThatWouldNeverEndThrows)
{
    const struct
    {
        const char* pattern;
        const char* replacement;
        std::string input;
    } rows[] = {
        {"a", "a", Repeat("a", 65536)},
        {"a", "a", Repeat("a", 70000)},
        {"a", "aa", Repeat("a", 40000)},
        {"a", "ba", Repeat("-", 70000) + "a"},
        {"aa|bb", "ab", "--" + Repeat("-", 65600) + "aab"},
        {"(?<=\\Ka)", "a", "xa"},
        {"(?<=\\Ka)", "aa", "xa"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(
            ExecutionMessage("-8"),
            MessageOf([&] { Pattern(row.pattern).Replace(row.replacement, TString<char>(row.input), 0); }))
            << row.pattern;
}

TEST(RegExpReplaceAll, LongRunsThatEndAreNotCutShort)
{
    EXPECT_EQ(Repeat("b", 200000), Pattern("a").Replace("b", TString<char>(Repeat("a", 200000)), 0));
    EXPECT_EQ(Repeat("bb", 100000), Pattern("a").Replace("bb", TString<char>(Repeat("a", 100000)), 0));
    EXPECT_EQ("", Pattern("a").Replace("", TString<char>(Repeat("a", 100000)), 0));
}

// ---- the groups of the first match by texts in their order

TEST(RegExpReplaceGroups, ReplacesGroupsInOrder)
{
    EXPECT_EQ("key=42", Pattern("([a-z]+)=([0-9]+)").Replace(Texts{"key", "42"}, "x=1"));
    EXPECT_EQ("<b=>, y=2", Pattern("([a-z]+)=([0-9]+)").Replace(Texts{"b", ">"}, "<x=1, y=2"));
    EXPECT_EQ("=", Pattern("([a-z]+)=([0-9]+)").Replace(Texts{"", ""}, "long=12345"));
    EXPECT_EQ("\\1=$2", Pattern("(a)=(b)").Replace(Texts{"\\1", "$2"}, "a=b"));
}

TEST(RegExpReplaceGroups, PlacesAndShiftsAreBytes)
{
    EXPECT_EQ("\xC3\xB6u=\xE2\x82\xAC\xC3\x9F",
              Pattern("(\\w*)=(.)").Replace(Texts{"u", "\xE2\x82\xAC"}, "\xC3\xB6xx=\xC3\xA4\xC3\x9F"));
}

TEST(RegExpReplaceGroups, OnlyTheFirstMatchIsRewritten)
{
    EXPECT_EQ("b=2 x=1", Pattern("([a-z]+)=([0-9]+)").Replace(Texts{"b", "2"}, "x=1 x=1"));
}

TEST(RegExpReplaceGroups, WithoutAMatchTheResultIsEmpty)
{
    EXPECT_EQ("", Pattern("([a-z]+)=([0-9]+)").Replace(Texts{"key", "42"}, "---"));
}

TEST(RegExpReplaceGroups, WithoutGroupsTheInputComesBack)
{
    EXPECT_EQ("xay", Pattern("a").Replace(Texts{}, "xay"));
    EXPECT_EQ(Repeat("a", 20), Pattern(Repeat("(a)", 20)).Replace(Texts{}, TString<char>(Repeat("a", 20))));
}

TEST(RegExpReplaceGroups, TextsBeyondTheGroupsAreNotUsed)
{
    EXPECT_EQ("x", Pattern("(a)").Replace(Texts{"x", "y", "z"}, "a"));
}

TEST(RegExpReplaceGroups, TooFewTextsThrow)
{
    EXPECT_THROW(Pattern("(a)(b)").Replace(Texts{"x"}, "ab"), std::out_of_range);
}

TEST(RegExpReplaceGroups, NestedGroupsAreReplacedAtTheirOldPlaces)
{
    EXPECT_EQ("12x4d", Pattern("(a(b)c)").Replace(Texts{"1234", "x"}, "abcd"));
    EXPECT_EQ("x2cd", Pattern("((a)b)").Replace(Texts{"12", "x"}, "abcd"));
}

TEST(RegExpReplaceGroups, GroupWithoutPartStandsOneByteBeforeTheShift)
{
    EXPECT_THROW(Pattern("(a)|(b)").Replace(Texts{"x", "y"}, "b"), std::out_of_range);
    EXPECT_THROW(Pattern("(a)(z)?(b)").Replace(Texts{"", "y", "z"}, "ab"), std::out_of_range);
    EXPECT_EQ("lyonz", Pattern("(a)(z)?(b)").Replace(Texts{"lon", "y", "z"}, "ab"));
}

// ---- the groups of the first match by their names

TEST(RegExpReplaceNames, ReplacesGroupsByName)
{
    Named named{{"k", "key"}, {"v", "42"}};
    EXPECT_EQ("key=42", Pattern("(?<k>[a-z]+)=(?<v>[0-9]+)").Replace(named, "x=1"));
    EXPECT_EQ((Named{{"k", "key"}, {"v", "42"}}), named);
}

TEST(RegExpReplaceNames, GroupsWithoutNameStay)
{
    Named named{{"v", "42"}};
    EXPECT_EQ("x=42", Pattern("([a-z]+)=(?<v>[0-9]+)").Replace(named, "x=1"));
    EXPECT_EQ(1U, named.size());
}

TEST(RegExpReplaceNames, MissingNameIsAddedEmpty)
{
    Named named{{"k", "key"}};
    EXPECT_EQ("key=", Pattern("(?<k>[a-z]+)=(?<v>[0-9]+)").Replace(named, "x=1"));
    EXPECT_EQ((Named{{"k", "key"}, {"v", ""}}), named);
}

TEST(RegExpReplaceNames, WithoutAMatchTheResultIsEmptyAndNothingIsAdded)
{
    Named named;
    EXPECT_EQ("", Pattern("(?<k>a)").Replace(named, "---"));
    EXPECT_TRUE(named.empty());
}

TEST(RegExpReplaceNames, WithoutGroupsTheInputComesBack)
{
    Named named{{"k", "key"}};
    EXPECT_EQ("xay", Pattern("a").Replace(named, "xay"));
    EXPECT_EQ("xay", Pattern("a(?<k>z)?").Replace(named, "xay"));
    EXPECT_EQ("20" + Repeat("a", 20),
              Pattern("(?<n>20)" + Repeat("(a)", 20)).Replace(named, TString<char>("20" + Repeat("a", 20))));
    EXPECT_EQ(1U, named.size());
}

TEST(RegExpReplaceNames, TextsAreLiteral)
{
    Named named{{"k", "\\2$2&"}, {"v", "(?<k>)"}};
    EXPECT_EQ("\\2$2&=(?<k>)", Pattern("(?<k>[a-z]+)=(?<v>[0-9]+)").Replace(named, "x=1"));
}

TEST(RegExpReplaceNames, OnlyTheFirstMatchIsRewritten)
{
    Named named{{"k", "key"}};
    EXPECT_EQ("key x", Pattern("(?<k>x)").Replace(named, "x x"));
}

TEST(RegExpReplaceNames, NestedGroupsAreReplacedAtTheirOldPlaces)
{
    Named named{{"a", "1234"}, {"b", "x"}};
    EXPECT_EQ("12x4d", Pattern("(?<a>a(?<b>b)c)").Replace(named, "abcd"));
}

TEST(RegExpReplaceNames, GroupWithoutPartStandsOneByteBeforeTheShift)
{
    Named named{{"a", "lon"}, {"y", "y"}, {"b", "z"}};
    EXPECT_EQ("lyonz", Pattern("(?<a>a)(?<y>z)?(?<b>b)").Replace(named, "ab"));
    EXPECT_EQ("lonz", Pattern("(?<a>a)(z)?(?<b>b)").Replace(named, "ab"));
}

TEST(RegExpReplaceNames, DuplicateNameReplacesEachOfItsGroups)
{
    Named named{{"n", "x"}};
    EXPECT_EQ("x-x", Pattern("(?J)(?<n>a)-(?<n>b)").Replace(named, "a-b"));
}

TEST(RegExpReplaceNames, GroupWithoutPartThrowsAfterItsNameIsAdded)
{
    Named named;
    EXPECT_THROW(Pattern("(?<a>a)|(?<b>b)").Replace(named, "b"), std::out_of_range);
    EXPECT_EQ((Named{{"a", ""}}), named);
}

// ---- the common step

TEST(RegExpReplaceStep, ReplacesWhereTheRecordSays)
{
    auto record = Executed("a(b)c", "xabcy");
    TString<char> target("xabcy");
    Pattern("").RegExp_replace(record, 1, target, "BBB", 0);
    EXPECT_EQ("xaBBBcy", target);
    Pattern("").RegExp_replace(record, 1, target, "b", 1);
    EXPECT_EQ("xaBbBcy", target);
    Pattern("").RegExp_replace(record, 0, target, "", -1);
    EXPECT_EQ("bBcy", target);
}

TEST(RegExpReplaceStep, ThrowsOutsideTheTarget)
{
    auto record = Executed("b", "ab");
    TString<char> target("ab");
    EXPECT_THROW(Pattern("").RegExp_replace(record, 0, target, "x", -2), std::out_of_range);
    EXPECT_THROW(Pattern("").RegExp_replace(record, 0, target, "x", 2), std::out_of_range);
    EXPECT_THROW(Pattern("").RegExp_replace(record, 0, target, "x", 2147483647), std::out_of_range);
    EXPECT_THROW(Pattern("").RegExp_replace(record, 0, target, "x", -2147483647 - 1), std::out_of_range);
    EXPECT_EQ("ab", target);
    Pattern("").RegExp_replace(record, 0, target, "x", 1);
    EXPECT_EQ("abx", target);
}

TEST(RegExpReplaceStep, ThrowsForGroupsThatNoRecordHas)
{
    auto record = Executed("b", "ab");
    TString<char> target("ab");
    for (const int group : {-1, 30, 31, 2147483647, -2147483647 - 1})
        EXPECT_THROW(Pattern("").RegExp_replace(record, group, target, "x", 0), std::out_of_range) << group;
    EXPECT_EQ("ab", target);
}

TEST(RegExpReplaceStep, EndBeforeStartReplacesTheRest)
{
    auto record = Executed("(?=ab\\K)", "abcd");
    TString<char> target("abcd");
    Pattern("").RegExp_replace(record, 0, target, "x", 0);
    EXPECT_EQ("abx", target);
}
