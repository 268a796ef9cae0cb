// SPDX-License-Identifier: MIT
#include "toolkit/regExp/RegExp.h"

#include <clocale>
#include <locale>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/RegExpSupport.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/regExp/RegExp.Exceptions"

using namespace Toolkit;
using namespace ToolkitTest;

namespace
{

using Result = smart_ptr<MatchResult, smart_ptr_policy>;

std::vector<std::string> Values(const Result& result)
{
    std::vector<std::string> values;
    for (std::size_t i = 0; i < result->GetCount(); ++i)
        values.push_back((*result)[i]->GetValue());
    return values;
}

using Texts = std::vector<std::string>;

// Groups thousands, in both character types.
template <class C>
class Grouping : public std::numpunct<C>
{
    C do_thousands_sep() const override { return C(','); }
    std::string do_grouping() const override { return "\1"; }
};

class GroupingLocale
{
public:
    GroupingLocale() : m_before(std::locale::global(Make())) {}
    ~GroupingLocale() { std::locale::global(m_before); }

private:
    static std::locale Make()
    {
        return std::locale(std::locale(std::locale::classic(), new Grouping<char>), new Grouping<wchar_t>);
    }
    const std::locale m_before;
};

} // namespace

// ---- construction

TEST(RegExp, KeepsPatternAndModifiers)
{
    const RegExp regExp(TString<char>("a(b"), static_cast<RegExpOptions::Modifiers>(5));
    EXPECT_EQ("a(b", regExp.GetPattern());
    EXPECT_EQ(5U, static_cast<unsigned int>(regExp.GetModifiers()));
}

TEST(RegExp, KeepsWidePatternAsUtf8)
{
    const RegExp regExp(TString<wchar_t>(L"\u00E4\u20AC\U0001F600"), RegExpOptions::Default);
    EXPECT_EQ("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", regExp.GetPattern());
}

TEST(RegExp, WidePatternWithoutUtf8IsEmpty)
{
    const RegExp regExp(TString<wchar_t>(L"a\xD800"), RegExpOptions::Default);
    EXPECT_EQ("", regExp.GetPattern());
    EXPECT_TRUE(regExp.IsMatch("anything"));
}

TEST(RegExp, WidePatternEndsAtZero)
{
    const RegExp regExp(TString<wchar_t>(std::wstring(L"a\0(", 3)), RegExpOptions::Default);
    EXPECT_EQ("a", regExp.GetPattern());
}

TEST(RegExp, ModifiersMakeNoDifference)
{
    for (const unsigned int bits : {0U, 1U, 2U, 4U, 8U, 16U, 0xFFFFFFFFU})
    {
        const RegExp regExp(TString<char>("^a.c$"), static_cast<RegExpOptions::Modifiers>(bits));
        EXPECT_TRUE(regExp.IsMatch("abc")) << bits;
        EXPECT_FALSE(regExp.IsMatch("ABC")) << bits;
        EXPECT_FALSE(regExp.IsMatch("x\nabc\n\n")) << bits;
        EXPECT_FALSE(regExp.IsMatch("a\nc")) << bits;
        EXPECT_EQ(Texts{"abc"}, Values(regExp.Match("abc"))) << bits;
        EXPECT_EQ("abc", regExp.Replace("x", "abc", 0)) << bits;
    }
}

// ---- IsMatch

TEST(RegExp, IsMatchFindsPatternAnywhere)
{
    const struct
    {
        const char* pattern;
        const char* subject;
        bool matches;
    } rows[] = {
        {"b", "abc", true},
        {"d", "abc", false},
        {"a*", "", true},
        {"", "", true},
        {"", "abc", true},
        {"a+", "", false},
        {"^b", "abc", false},
        {"^a", "abc", true},
        {"c$", "abc", true},
        {"^c$", "b\nc\nd", false},
        {"(?m)^c$", "b\nc\nd", true},
        {"(?i)B", "abc", true},
        {"B", "abc", false},
        {"a.c", "a\nc", false},
        {"(?s)a.c", "a\nc", true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.matches, Pattern(row.pattern).IsMatch(row.subject))
            << row.pattern << " " << row.subject;
}

TEST(RegExp, IsMatchWorksInCharacters)
{
    EXPECT_TRUE(Pattern("^.$").IsMatch("\xE2\x82\xAC"));
    EXPECT_TRUE(Pattern("^\\x{20AC}$").IsMatch("\xE2\x82\xAC"));
    EXPECT_FALSE(Pattern("^...$").IsMatch("\xE2\x82\xAC"));
}

TEST(RegExp, IsMatchConvertsWideSubject)
{
    EXPECT_TRUE(Pattern("^\xC3\xA4.$").IsMatch(L"\u00E4\u20AC"));
    EXPECT_FALSE(Pattern("^\xC3\xA4.$").IsMatch(L"a\u20AC"));
}

TEST(RegExp, WideSubjectWithoutUtf8IsSearchedAsEmpty)
{
    EXPECT_TRUE(Pattern("^$").IsMatch(L"abc\xD800"));
    EXPECT_EQ("", Pattern("^$").Match(L"abc\xD800")->GetSubject());
}

TEST(RegExp, SubjectGoesOnBehindZero)
{
    const TString<char> subject(std::string("a\0b", 3));
    EXPECT_TRUE(Pattern("b").IsMatch(subject));
    EXPECT_TRUE(Pattern("a\\x00b").IsMatch(subject));
    EXPECT_EQ((Texts{std::string("\0b", 2)}), Values(Pattern("[^a]+").Match(subject)));
}

TEST(RegExp, WideSubjectEndsAtZero)
{
    const TString<wchar_t> subject(std::wstring(L"a\0b", 3));
    EXPECT_FALSE(Pattern("b").IsMatch(subject));
    EXPECT_EQ("a", Pattern("a").Match(subject)->GetSubject());
}

TEST(RegExp, PatternEndsAtZero)
{
    EXPECT_TRUE(Pattern(std::string("a\0(", 3)).IsMatch("a"));
    EXPECT_EQ(" : missing ) (@offset: 1) (ror ",
              MessageOf([] { Pattern(std::string("(\0b", 3)).IsMatch("a"); }));
}

TEST(RegExp, IsMatchIsFalseWhenGroup20TakesPart)
{
    const RegExp regExp = Pattern(Repeat("(a)", 20));
    EXPECT_FALSE(regExp.IsMatch(Repeat("a", 20)));
    EXPECT_TRUE(Pattern(Repeat("(a)", 19)).IsMatch(Repeat("a", 19)));
    EXPECT_TRUE(Pattern(Repeat("(a)", 19) + "(z)?").IsMatch(Repeat("a", 19)));
}

// ---- Match

TEST(RegExp, MatchWithoutMatchHasNoGroups)
{
    const Result result = Pattern("(?<x>z)").Match("abc");
    EXPECT_EQ(-1, result->GetResult());
    EXPECT_EQ(0U, result->GetCount());
    EXPECT_TRUE(result->GetNames().empty());
    EXPECT_EQ("abc", result->GetSubject());
}

TEST(RegExp, MatchOfEmptySubjectIsOneEmptyGroup)
{
    const Result result = Pattern("a*").Match("");
    EXPECT_EQ(1, result->GetResult());
    EXPECT_EQ(Texts{""}, Values(result));
}

TEST(RegExp, MatchReportsOnlyTheFirstMatch)
{
    EXPECT_EQ((Texts{"1", "1"}), Values(Pattern("([0-9])").Match("a1b2")));
}

TEST(RegExp, GroupThatTookNoPartIsEmpty)
{
    const Result result = Pattern("(a)|(b)").Match("b");
    EXPECT_EQ((Texts{"b", "", "b"}), Values(result));
    for (unsigned short i = 0; i < 3; ++i)
        EXPECT_EQ(i, (*result)[i]->GetIndex());
    EXPECT_EQ(-1, result->GetOffsets()[2]);
    EXPECT_EQ(-1, result->GetOffsets()[3]);
}

TEST(RegExp, GroupsBehindTheLastThatTookPartAreNotReported)
{
    EXPECT_EQ((Texts{"a", "a"}), Values(Pattern("(a)(b)?").Match("a")));
}

TEST(RegExp, MatchNamesGroups)
{
    const Result result = Pattern("(?<year>\\d{4})-(?P<month>\\d\\d)").Match("2009-11");
    EXPECT_EQ((Texts{"2009-11", "2009", "11"}), Values(result));
    EXPECT_EQ("", (*result)[0]->GetName());
    EXPECT_EQ("year", (*result)[1]->GetName());
    EXPECT_EQ("month", (*result)[2]->GetName());
    EXPECT_EQ((std::map<TString<char>, int>{{"month", 2}, {"year", 1}}), result->GetNames());
    EXPECT_EQ("month", result->GetNames().begin()->first);
}

TEST(RegExp, DuplicateNameStandsForItsFirstGroup)
{
    const Result result = Pattern("(?J)(?<n>a)(?<n>b)(?<m>c)").Match("abc");
    EXPECT_EQ((std::map<TString<char>, int>{{"m", 3}, {"n", 1}}), result->GetNames());
    EXPECT_EQ("n", (*result)[1]->GetName());
    EXPECT_EQ("n", (*result)[2]->GetName());
    EXPECT_EQ("a", result->Find("n")->GetValue());
}

TEST(RegExp, NamesBeyondReportedGroupsAreLeftOut)
{
    const Result result = Pattern("(?<a>a)(?<b>b)?").Match("a");
    EXPECT_EQ((std::map<TString<char>, int>{{"a", 1}}), result->GetNames());
}

TEST(RegExp, MatchHasNoGroupsWhenGroup20TakesPart)
{
    const Result result = Pattern(Repeat("(a)", 19) + "(?<last>a)").Match(Repeat("a", 20));
    EXPECT_EQ(0, result->GetResult());
    EXPECT_EQ(0U, result->GetCount());
    EXPECT_TRUE(result->GetNames().empty());
}

TEST(RegExp, MatchReportsNineteenGroups)
{
    const Result result =
        Pattern(Repeat("(a)", 18) + "(?<last>b)(z)?(?<more>z)?").Match(Repeat("a", 18) + "b");
    EXPECT_EQ(20, result->GetResult());
    ASSERT_EQ(20U, result->GetCount());
    EXPECT_EQ("last", (*result)[19]->GetName());
    EXPECT_EQ("b", (*result)[19]->GetValue());
    EXPECT_EQ(1U, result->GetNames().size());
}

TEST(RegExp, NamesOfGroups128To255AreListedByNegativeNumbers)
{
    for (int number : {127, 128, 200, 255, 256, 300, 384, 511})
    {
        const std::string pattern = "a|" + Repeat("()", static_cast<std::size_t>(number - 1)) + "(?<far>z)";
        const Result result = Pattern(pattern).Match("a");
        EXPECT_EQ(Texts{"a"}, Values(result)) << number;
        EXPECT_EQ("", (*result)[0]->GetName()) << number;
        EXPECT_TRUE(result->Find("far").IsNull()) << number;
        if (number >= 128 && number <= 255)
            EXPECT_EQ((std::map<TString<char>, int>{{"far", number - 256}}), result->GetNames()) << number;
        else
            EXPECT_TRUE(result->GetNames().empty()) << number;
    }
}

TEST(RegExp, KeepOutMovesTheStart)
{
    const Result result = Pattern("a\\Kb").Match("ab");
    EXPECT_EQ(Texts{"b"}, Values(result));
    EXPECT_EQ(1, result->GetOffsets()[0]);
}

TEST(RegExp, MatchThatEndsBeforeItsStartIsEmpty)
{
    const Result result = Pattern("(?=ab\\K)").Match("ab");
    EXPECT_EQ(Texts{""}, Values(result));
    EXPECT_EQ(2, result->GetOffsets()[0]);
    EXPECT_EQ(0, result->GetOffsets()[1]);
}

TEST(RegExp, WideMatchGivesUtf8AndByteOffsets)
{
    const Result result = Pattern("(\xE2\x82\xAC)b").Match(L"\u00E4\u20ACb");
    EXPECT_EQ((Texts{"\xE2\x82\xAC"
                     "b",
                     "\xE2\x82\xAC"}),
              Values(result));
    EXPECT_EQ(2, result->GetOffsets()[0]);
    EXPECT_EQ(6, result->GetOffsets()[1]);
    EXPECT_EQ("\xC3\xA4\xE2\x82\xAC"
              "b",
              result->GetSubject());
}

TEST(RegExp, ServesManyThreadsAtOnce)
{
    const RegExp regExp = Pattern("(?<n>[0-9]+)");
    std::vector<std::thread> threads;
    std::vector<int> right(4, 0);
    for (std::size_t t = 0; t < right.size(); ++t)
        threads.emplace_back(
            [&regExp, &right, t]
            {
                const std::string number = std::to_string(1000 + t);
                for (int i = 0; i < 200; ++i)
                    if (regExp.Match("a" + number)->Find("n")->GetValue() == number &&
                        regExp.IsMatch(number) && regExp.Replace("x", number + "b", 0) == "xb")
                        ++right[t];
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(std::vector<int>(4, 200), right);
}

// ---- messages

TEST(RegExp, CompileMessageOverwritesItsBeginning)
{
    const struct
    {
        const char* pattern;
        const char* message;
    } rows[] = {
        {"(", " : missing ) (@offset: 1) (ror "},
        {"a(", " : missing ) (@offset: 2) a(or "},
        {"abcdef(", " : missing ) (@offset: 7) abcdef("},
        {"abcd(", " : missing ) (@offset: 5) abcd("},
        {"abc(", " : missing ) (@offset: 4) abc( "},
        {"*", " : nothing to repeat (@offset: 0) *"},
        {"[a", " : missing terminating ] for character class (@offset: 2) [a"},
        {"\xC3\xA4\xC3\xA4(", " : missing ) (@offset: 5) \xC3\xA4\xC3\xA4(r "},
        {"a\xFF", " : invalid UTF-8 string (@offset: 1) "},
    };
    for (const auto& row : rows)
    {
        const RegExp regExp = Pattern(row.pattern);
        EXPECT_EQ(row.message, MessageOf([&] { regExp.IsMatch("x"); })) << row.pattern;
    }
}

TEST(RegExp, EveryOperationReportsInvalidPatternAlike)
{
    const RegExp regExp = Pattern("(");
    const std::string message = " : missing ) (@offset: 1) (ror ";
    RegExp::ReplacementMappedStrings named;
    EXPECT_EQ(message, MessageOf([&] { regExp.IsMatch("x"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.IsMatch(L"x"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Match("x"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Match(L"x"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace("x", "y", 0); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace(std::vector<TString<char>>(), "y"); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace(named, "y"); }));
}

TEST(RegExp, EveryOperationReportsFailedExecutionAlike)
{
    const RegExp regExp = Pattern("a");
    const TString<char> broken("a\xFF");
    const std::string message = "-10Exp::Match return error: ";
    RegExp::ReplacementMappedStrings named;
    EXPECT_EQ(message, MessageOf([&] { regExp.IsMatch(broken); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Match(broken); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace("x", broken, 0); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace(std::vector<TString<char>>(), broken); }));
    EXPECT_EQ(message, MessageOf([&] { regExp.Replace(named, broken); }));
}

TEST(RegExp, NumbersInMessagesFollowNoLocale)
{
    const GroupingLocale grouping;
    const std::string pattern = Repeat("a", 1234) + "(";
    EXPECT_EQ(" : missing ) (@offset: 1235) " + pattern, MessageOf([&] { Pattern(pattern).IsMatch("x"); }));
    EXPECT_EQ("-10Exp::Match return error: ", MessageOf([&] { Pattern("a").IsMatch("\xFF"); }));
}

TEST(RegExp, MessagesAreUtf8InTheCLocale)
{
    ASSERT_STREQ("C", std::setlocale(LC_ALL, nullptr));
    EXPECT_EQ(" : missing ) (@offset: 6) \xE2\x82\xAC\xC3\xA4(r ",
              MessageOf([] { Pattern("\xE2\x82\xAC\xC3\xA4(").IsMatch("x"); }));
}

TEST(RegExp, PatternsThatWouldTakeForeverEndByMatchLimit)
{
    const RegExp regExp = Pattern("(a+)+$");
    const TString<char> subject(Repeat("a", 40) + "b");
    EXPECT_EQ(ExecutionMessage("-8"), MessageOf([&] { regExp.IsMatch(subject); }));
    EXPECT_EQ("-8gExp::Match return error: ", ExecutionMessage("-8"));
}

TEST(RegExp, SaysNothingOnStandardError)
{
    CapturedOutput error(2);
    MessageOf([] { Pattern("(").IsMatch("x"); });
    MessageOf([] { Pattern("a").Match("\xFF"); });
    EXPECT_EQ("", error.Stop());
}
