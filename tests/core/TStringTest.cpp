// SPDX-License-Identifier: MIT
#include "toolkit/core/TString.h"

#include <algorithm>
#include <climits>
#include <clocale>
#include <cstdlib>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include "tests/reference/PlainTString.h"
#include "tests/support/ForkedCopy.h"
#include "tests/support/InChild.h"
#include "tests/support/Sanitized.h"
#include "tests/support/TemporaryFolder.h"

using Toolkit::TString;
using ToolkitTest::ForkedCopy;
using ToolkitTest::InChild;
using ToolkitTest::PlainCompareNoCase;
using ToolkitTest::PlainHasSubstring;
using ToolkitTest::PlainReplace;

namespace
{

using Text = TString<wchar_t>;
using Bytes = TString<char>;

// The elements that both sides of the narrow `tolower` begin and end at are among them.
const int s_iFirst = -300;
const int s_iLast = 600;

template <class C>
TString<C> One(int element)
{
    return TString<C>(std::basic_string<C>(1, static_cast<C>(element)));
}

// What a locale makes of every element, in short texts and in long ones, and of random texts; empty if it is
// what the plain forms make of it.
template <class C>
std::string CompareElements(int first, int last)
{
    for (int a = first; a <= last; ++a)
    {
        const TString<C> text = One<C>(a);
        TString<C> longer(std::basic_string<C>(400, static_cast<C>(1)));
        longer[399 - static_cast<std::size_t>(a - first) % 64] = static_cast<C>(a);
        for (int b = first; b <= last; ++b)
        {
            const TString<C> what = One<C>(b);
            if (text.compareNoCase(what) != PlainCompareNoCase(text, what))
                return "compareNoCase of " + std::to_string(a) + " and " + std::to_string(b);
            const bool found = PlainHasSubstring(text, what);
            if (text.HasSubstring(what) != found)
                return "HasSubstring of " + std::to_string(a) + " and " + std::to_string(b);
            const bool filler = static_cast<C>(b) == static_cast<C>(1);
            if (longer.HasSubstring(what) != (found || filler))
                return "HasSubstring in a long text of " + std::to_string(a) + " and " + std::to_string(b);
        }
    }
    return "";
}

template <class C>
std::string CompareRandom(const std::vector<int>& alphabet)
{
    std::mt19937 random(4711);
    const auto make = [&](std::size_t length)
    {
        TString<C> text;
        while (text.size() < length)
            text.push_back(static_cast<C>(alphabet[random() % alphabet.size()]));
        return text;
    };
    for (int round = 0; round < 4000; ++round)
    {
        const TString<C> text = make(random() % 700);
        const TString<C> what = make(random() % 9);
        if (text.HasSubstring(what) != PlainHasSubstring(text, what))
            return "HasSubstring in round " + std::to_string(round);
        TString<C> other = text;
        if (!other.empty() && random() % 4 != 0)
            other[random() % other.size()] = static_cast<C>(alphabet[random() % alphabet.size()]);
        other.resize(other.size() - std::min<std::size_t>(other.size(), random() % 3));
        if (text.compareNoCase(other) != PlainCompareNoCase(text, other))
            return "compareNoCase in round " + std::to_string(round);
    }
    return "";
}

std::string CompareEverything()
{
    std::string wrong = CompareElements<wchar_t>(s_iFirst, s_iLast);
    if (wrong.empty())
        wrong = CompareElements<char>(SCHAR_MIN, SCHAR_MAX);
    if (wrong.empty())
        wrong = CompareRandom<wchar_t>({L'a', L'A', L'b', 0xE9, 0xC9, -23, -1, -128, 0x416, 0x436, 0x1F600});
    if (wrong.empty())
        wrong = CompareRandom<char>({'a', 'A', 'b', 'B', -23, -55, -1, -128, 0});
    return wrong;
}

// Run in a child, as the locale belongs to the whole process.
testing::AssertionResult CompareEverythingIn(const char* locale)
{
    return InChild(
        [locale]
        {
            if (std::setlocale(LC_ALL, locale) == nullptr)
                return std::string("no locale ") + locale;
            return CompareEverything();
        });
}

// Every text over a and b of at most `longest` elements.
std::vector<std::wstring> EveryText(std::size_t longest)
{
    std::vector<std::wstring> texts{L""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < longest; ++i)
    {
        texts.push_back(texts[i] + L'a');
        texts.push_back(texts[i] + L'b');
    }
    return texts;
}

// A replacement that is stopped by the alarm.
std::string ReplaceForAWhile(const wchar_t* text, const wchar_t* what, const wchar_t* with)
{
    return ForkedCopy(
               [=]
               {
                   const itimerval soon{{0, 0}, {0, 300000}};
                   setitimer(ITIMER_REAL, &soon, nullptr);
                   Text replaced(text);
                   replaced.Replace(what, with);
                   return std::string("it returned");
               })
        .Wait();
}

const char c_strStoppedByAlarm[] = " (the child ended with status 14)";

} // namespace

TEST(TString, HasTheConstructorsOfTheStandardString)
{
    EXPECT_EQ(std::wstring(L"a\0b", 3), Text(L"a\0b", 3));
    EXPECT_EQ(L"xxx", Text(3, L'x'));
    EXPECT_EQ(L"ab", (Text{L'a', L'b'}));
    EXPECT_EQ("bc", Bytes(Bytes("abc"), 1));
    EXPECT_EQ("b", Bytes(Bytes("abc"), 1, 1));
    const std::string source = "abc";
    EXPECT_EQ("abc", Bytes(source.begin(), source.end()));
    EXPECT_EQ("abc", Bytes(std::string_view(source)));
    EXPECT_EQ("", Bytes(static_cast<const char*>(nullptr)));
}

TEST(TString, AddsNoDataToTheStandardString)
{
    EXPECT_EQ(sizeof(std::wstring), sizeof(Text));
    EXPECT_EQ(sizeof(std::string), sizeof(Bytes));
    EXPECT_TRUE((std::is_base_of_v<std::wstring, Text>));
    EXPECT_TRUE((std::is_convertible_v<std::wstring, Text>));
    EXPECT_TRUE((std::is_convertible_v<Bytes, std::string>));
    EXPECT_TRUE((std::is_convertible_v<const char*, Bytes>));
}

TEST(TString, IsBuiltFromTextAndStandardStringsAndCopies)
{
    EXPECT_TRUE(Text().empty());
    EXPECT_EQ(L"abc", Text(L"abc"));
    EXPECT_EQ(std::string("a\0b", 3), Bytes(std::string("a\0b", 3)));
    const Text original(L"abc");
    const Text copy(original);
    EXPECT_EQ(original, copy);
}

TEST(TString, IsEmptyForANullPointer)
{
    EXPECT_TRUE(Text(static_cast<const wchar_t*>(nullptr)).empty());
    EXPECT_TRUE(Bytes(static_cast<const char*>(nullptr)).empty());
}

TEST(TString, OffersWhatTheStandardStringOffers)
{
    Text text = Text(L"ab") + L"cd";
    text += L"e";
    EXPECT_EQ(5U, text.size());
    EXPECT_EQ(2U, text.find(L"cd"));
    EXPECT_EQ(L"bc", text.substr(1, 2));
    EXPECT_LT(Text(L"a"), Text(L"b"));
    text = std::wstring(L"other");
    EXPECT_EQ(std::wstring(L"other"), text);
}

TEST(TString, EmptyIsOneSharedInstance)
{
    EXPECT_EQ(&TString<wchar_t>::Empty(), &TString<wchar_t>::Empty());
    EXPECT_EQ(&TString<char>::Empty(), &TString<char>::Empty());
    EXPECT_TRUE(TString<wchar_t>::Empty().empty());
    EXPECT_TRUE(TString<char>::Empty().empty());
}

TEST(TString, ContainsTellsLettersByCase)
{
    EXPECT_TRUE(Text(L"hello world").Contains(L"lo w"));
    EXPECT_FALSE(Text(L"hello world").Contains(L"WORLD"));
    EXPECT_FALSE(Text(L"ab").Contains(L"abc"));
    EXPECT_TRUE(Bytes("hello").Contains("hello"));
    EXPECT_TRUE(Bytes(std::string("a\0b", 3)).Contains(std::string("\0b", 2)));
}

TEST(TString, ContainsTheEmptyText)
{
    EXPECT_TRUE(Text(L"abc").Contains(L""));
    EXPECT_TRUE(Text().Contains(L""));
    EXPECT_TRUE(Bytes().Contains(""));
    EXPECT_TRUE(Text().HasSubstring(L""));
    EXPECT_TRUE(Bytes("a").HasSubstring(""));
}

TEST(TString, HasSubstringIgnoresCase)
{
    EXPECT_TRUE(Text(L"hello world").HasSubstring(L"WORLD"));
    EXPECT_TRUE(Text(L"HELLO").HasSubstring(L"hello"));
    EXPECT_TRUE(Bytes("hello world").HasSubstring("WORLD"));
    EXPECT_FALSE(Text(L"hello").HasSubstring(L"hellos"));
    EXPECT_FALSE(Text().HasSubstring(L"a"));
    EXPECT_FALSE(Bytes("hello").HasSubstring("y"));
}

TEST(TString, HasSubstringComparesLettersBeyondTheNarrowOnesExactly)
{
    EXPECT_FALSE(Text(L"\u0436").HasSubstring(L"\u0416"));
    EXPECT_TRUE(Text(L"\u0436A").HasSubstring(L"\u0436a"));
}

TEST(TString, HasSubstringFindsEveryStartAndEnd)
{
    for (std::size_t length : {1U, 2U, 3U, 17U, 255U, 256U, 257U, 300U})
        for (std::size_t at = 0; at + length <= 560; ++at)
        {
            Text text(std::wstring(560, L'.'));
            const std::wstring upper = L"Q" + std::wstring(length - 1, L'.');
            text[at] = L'q';
            ASSERT_TRUE(text.HasSubstring(upper)) << length << " at " << at;
            text[at] = L'.';
            ASSERT_FALSE(text.HasSubstring(upper)) << length << " at " << at;
        }
}

TEST(TString, HasSubstringFindsBehindManyFalseStarts)
{
    Text text(std::wstring(4096, L'a'));
    EXPECT_FALSE(text.HasSubstring(L"AAAB"));
    EXPECT_FALSE(text.HasSubstring(L"ABA"));
    text.back() = L'B';
    EXPECT_TRUE(text.HasSubstring(L"AAAb"));
}

TEST(TString, CompareNoCaseAnswersTheSignOfTheFirstDifference)
{
    struct Row
    {
        const char* a;
        const char* b;
        int expected;
    };
    const Row rows[] = {
        {"abc", "ABC", 0}, {"ab", "ABC", -1},  {"abd", "ABC", 1},  {"", "", 0},     {"", "x", -1},
        {"x", "", 1},      {"ABCD", "abc", 1}, {"abc", "ABd", -1}, {"B", "abc", 1}, {"a", "BCD", -1},
        {"a_", "aB", -1},  {"[", "A", -1},     {"b", "A", 1},
    };
    for (const Row& row : rows)
    {
        const std::string a(row.a);
        const std::string b(row.b);
        EXPECT_EQ(row.expected, Bytes(a).compareNoCase(b)) << a << " " << b;
        EXPECT_EQ(row.expected,
                  Text(std::wstring(a.begin(), a.end())).compareNoCase(std::wstring(b.begin(), b.end())))
            << a << " " << b;
    }
}

TEST(TString, CompareNoCaseTakesElementsAsSigned)
{
    EXPECT_EQ(-1, Text(std::wstring(1, static_cast<wchar_t>(-5))).compareNoCase(L"a"));
    EXPECT_EQ(-1, Bytes("\xFF").compareNoCase("a"));
}

TEST(TString, CompareNoCaseGoesOnBehindAZero)
{
    EXPECT_EQ(-1, Bytes(std::string("a\0b", 3)).compareNoCase(std::string("A\0C", 3)));
    EXPECT_EQ(0, Bytes(std::string("a\0b", 3)).compareNoCase(std::string("A\0B", 3)));
}

TEST(TString, CompareNoCaseSeesADifferenceAtEveryPosition)
{
    for (std::size_t length = 1; length < 40; ++length)
        for (std::size_t at = 0; at < length; ++at)
        {
            const Bytes a(std::string(length, 'k'));
            Bytes b(std::string(length, 'K'));
            b[at] = 'L';
            ASSERT_EQ(-1, a.compareNoCase(b));
            ASSERT_EQ(1, b.compareNoCase(a));
        }
}

TEST(TString, IgnoresCaseAsThePlainFormsDoInTheCLocale)
{
    EXPECT_TRUE(CompareEverythingIn("C"));
}

TEST(TString, IgnoresCaseAsThePlainFormsDoInAUTF8Locale)
{
    EXPECT_TRUE(CompareEverythingIn("C.UTF-8"));
}

// There "I" is no capital of "i".
TEST(TString, IgnoresCaseAsThePlainFormsDoInATurkishLocale)
{
    const ToolkitTest::TemporaryFolder folder;
    const std::string make =
        "localedef -i tr_TR -f ISO-8859-9 '" + folder.Path("tr_TR.ISO-8859-9") + "' >/dev/null 2>&1";
    if (std::system(make.c_str()) != 0)
        GTEST_SKIP() << "no Turkish locale can be made";
    const ToolkitTest::ScopedEnvironment path("LOCPATH", folder.Path().c_str());
    EXPECT_TRUE(InChild(
        []
        {
            std::setlocale(LC_ALL, "tr_TR.ISO-8859-9");
            const Bytes upper("a text of more bytes: I");
            const Bytes lower("A TEXT OF MORE BYTES: i");
            return upper.compareNoCase(lower) != 0 &&
                   upper.compareNoCase(lower) == PlainCompareNoCase(upper, lower);
        }));
}

TEST(TString, IgnoresCaseAsThePlainFormsDoInAnEightBitLocale)
{
    const ToolkitTest::TemporaryFolder folder;
    const std::string make =
        "localedef -i en_US -f ISO-8859-1 '" + folder.Path("en_US.ISO-8859-1") + "' >/dev/null 2>&1";
    if (std::system(make.c_str()) != 0)
        GTEST_SKIP() << "no eight-bit locale can be made";
    const ToolkitTest::ScopedEnvironment path("LOCPATH", folder.Path().c_str());
    EXPECT_TRUE(CompareEverythingIn("en_US.ISO-8859-1"));
    EXPECT_TRUE(InChild(
        []
        {
            std::setlocale(LC_ALL, "en_US.ISO-8859-1");
            const bool folds = Text(L"\u00E9").HasSubstring(L"\u00C9") && Bytes("\xE9").HasSubstring("\xC9");
            return std::string(folds ? "" : "an accented letter is not folded");
        }));
}

TEST(TString, CompareNoCaseTellsEveryPairOfBytesWithinLongText)
{
    for (const std::size_t place : {0UL, 9UL, 20UL, 33UL})
        for (int first = 0; first < 256; ++first)
            for (int second = 0; second < 256; ++second)
            {
                TString<char> a("AbcdefghIjklmnopQrstuvwxYz 0123456789");
                TString<char> b("aBCDEFGHiJKLMNOPqRSTUVWXyZ 0123456789");
                a[place] = static_cast<char>(first);
                b[place] = static_cast<char>(second);
                ASSERT_EQ(PlainCompareNoCase(a, b), a.compareNoCase(b))
                    << place << " " << first << " " << second;
            }
}

TEST(TString, ReplaceReplacesEveryOccurrence)
{
    struct Row
    {
        const wchar_t* text;
        const wchar_t* what;
        const wchar_t* with;
        const wchar_t* expected;
    };
    const Row rows[] = {
        {L"aXaXa", L"a", L"b", L"bXbXb"},
        {L"abc", L"x", L"y", L"abc"},
        {L"", L"x", L"y", L""},
        {L"a b c", L" ", L"", L"abc"},
        {L"aaa", L"aa", L"b", L"ba"},
        {L"<>", L"<", L"&lt;", L"&lt;>"},
        {L"aabb", L"ab", L"", L""},
        {L"x", L"x", L"", L""},
        {L"ab", L"ab", L"cdef", L"cdef"},
        {L"abab", L"ab", L"ba", L"bbaa"},
        {L"\r\r\n\n", L"\r\n", L"\n", L"\n\n"},
    };
    for (const Row& row : rows)
    {
        Text text(row.text);
        text.Replace(row.what, row.with);
        EXPECT_EQ(row.expected, text);
    }
}

TEST(TString, ReplaceReplacesWhatAReplacementCreates)
{
    Text text(L"aaaabbbb");
    text.Replace(L"ab", L"");
    EXPECT_EQ(L"", text);
    text = L"aab";
    text.Replace(L"ab", L"bba");
    EXPECT_EQ(L"bbbbaa", text);
}

TEST(TString, ReplaceTakesItsOwnStringAsArgument)
{
    Text text(L"abc");
    text.Replace(text, L"x");
    EXPECT_EQ(L"x", text);
    text.Replace(L"y", text);
    EXPECT_EQ(L"x", text);
}

TEST(TString, ReplaceGoesOnBehindAZero)
{
    Text text(std::wstring(L"a\0a", 3));
    text.Replace(std::wstring(1, L'\0'), L"-");
    EXPECT_EQ(L"a-a", text);
}

TEST(TString, ReplacementThatHoldsWhatItReplacesGrowsUntilTheMemoryEnds)
{
    if (ToolkitTest::s_bSanitized)
        return;
    EXPECT_TRUE(InChild(
        []
        {
            const struct rlimit limit = {512U << 20, 512U << 20};
            setrlimit(RLIMIT_AS, &limit);
            Text text(L"a");
            try
            {
                text.Replace(L"a", std::wstring(1U << 20, L'b') + L"a");
            }
            catch (const std::bad_alloc&)
            {
                return text.size() > 10 * (1U << 20) && text.back() == L'a';
            }
            return false;
        }));
}

TEST(TString, ReplaceDoesWhatThePlainFormDoes)
{
    const std::vector<std::wstring> patterns = EveryText(3);
    unsigned int endless = 0;
    for (const std::wstring& text : EveryText(7))
        for (const std::wstring& what : patterns)
            for (const std::wstring& with : patterns)
            {
                std::wstring plain = text;
                const bool ended = PlainReplace(plain, what, with, 200);
                const bool recreated = with.find(what) != with.npos && text.find(what) != text.npos;
                ASSERT_EQ(ended, !recreated);
                endless += recreated;
                if (!ended)
                    continue;
                Text fast(text);
                fast.Replace(what, with);
                ASSERT_EQ(plain, fast);
            }
    EXPECT_GT(endless, 0U);
}

TEST(TString, ReplaceDoesWhatThePlainFormDoesWithRandomText)
{
    std::mt19937 random(42);
    const auto make = [&](std::size_t longest)
    {
        std::wstring text(random() % (longest + 1), L'a');
        for (wchar_t& element : text)
            element = static_cast<wchar_t>(L'a' + random() % 3);
        return text;
    };
    for (int round = 0; round < 60000; ++round)
    {
        std::wstring plain = make(24);
        const std::wstring what = make(4);
        const std::wstring with = make(5);
        Text fast(plain);
        if (!PlainReplace(plain, what, with, 500))
            continue;
        fast.Replace(what, with);
        ASSERT_EQ(plain, fast) << round;
    }
}

TEST(TString, ReplaceDoesWhatThePlainFormDoesWithLongRandomText)
{
    std::mt19937 random(43);
    const auto make = [&](std::size_t longest, unsigned int letters)
    {
        std::wstring text(random() % (longest + 1), L'a');
        for (wchar_t& element : text)
            element = static_cast<wchar_t>(L'a' + random() % letters);
        return text;
    };
    for (int round = 0; round < 4000; ++round)
    {
        const unsigned int letters = 2 + static_cast<unsigned int>(round) % 8;
        std::wstring plain = make(400, letters);
        const std::wstring what = make(3, letters);
        const std::wstring with = make(random() % 8 == 0 ? 300 : 9, letters + 2);
        Text fast(plain);
        if (with.find(what) != with.npos || !PlainReplace(plain, what, with, 2000))
            continue;
        fast.Replace(what, with);
        ASSERT_EQ(plain, fast) << round;
    }
}

TEST(TString, ReplaceOfLongTextDoesWhatThePlainFormDoes)
{
    std::mt19937 random(4711);
    for (int round = 0; round < 3000; ++round)
    {
        // Repeats itself, with a fault now and then.
        std::wstring what = EveryText(3)[1 + random() % 14];
        while (what.size() < 80)
            what += what;
        what.resize(60 + random() % 10);
        what[random() % what.size()] = static_cast<wchar_t>(L'a' + random() % 3);
        const std::wstring with = what.substr(random() % 60, random() % 60);
        // Matches within matches, which appear when the inner ones go.
        std::wstring plain = what;
        for (int i = 0; i < 6; ++i)
            plain.insert(random() % plain.size(), random() % 3 == 0 ? what.substr(random() % 60) : what);
        Text fast(plain);
        ASSERT_TRUE(PlainReplace(plain, what, with, 5000));
        fast.Replace(what, with);
        ASSERT_EQ(plain, fast) << round;
    }
}

TEST(TString, ReplaceFindsEveryPlace)
{
    for (std::size_t length = 3; length < 40; ++length)
        for (std::size_t at = 0; at + 3 <= length; ++at)
            for (const std::wstring with : {L"", L"x", L"xyz", L"wvxyz"})
            {
                std::wstring expected(length, L'.');
                Text text(expected.substr(3));
                text.insert(at, L"abc");
                expected.replace(at, 3, with);
                text.Replace(L"abc", with);
                ASSERT_EQ(expected, text) << length << " at " << at;
            }
}

TEST(TString, FindsLongTextAsThePlainFormsDo)
{
    std::mt19937 random(4711);
    for (int round = 0; round < 3000; ++round)
    {
        std::string text(300 + random() % 2000, 'a');
        for (std::size_t i = 0; i < random() % 5; ++i)
            text[random() % text.size()] = static_cast<char>(random() % 2 == 0 ? 'b' : 'A');
        std::string part = text.substr(random() % 200, 30 + random() % 300);
        if (random() % 2 == 0)
            part[random() % part.size()] = static_cast<char>(random() % 2 == 0 ? 'B' : 'c');
        const Text wideText(std::wstring(text.begin(), text.end()));
        const Text widePart(std::wstring(part.begin(), part.end()));
        const bool contains = text.find(part) != text.npos;
        const bool has = PlainHasSubstring(Bytes(text), Bytes(part));
        ASSERT_EQ(contains, Bytes(text).Contains(part)) << round;
        ASSERT_EQ(contains, wideText.Contains(widePart)) << round;
        ASSERT_EQ(has, Bytes(text).HasSubstring(part)) << round;
        ASSERT_EQ(has, wideText.HasSubstring(widePart)) << round;
    }
}

// Quadratic searches would take hours.
TEST(TString, IsAKeyOfUnorderedContainers)
{
    std::unordered_map<TString<wchar_t>, int> wide{{L"one", 1}, {L"two", 2}};
    EXPECT_EQ(2, wide[L"two"]);
    std::unordered_set<TString<char>> narrow{"one", "one", std::string("on\0e", 4)};
    EXPECT_EQ(2U, narrow.size());
    EXPECT_EQ(std::hash<std::string>()("text"), std::hash<TString<char>>()("text"));
    EXPECT_EQ(std::hash<std::wstring>()(L"text"), std::hash<TString<wchar_t>>()(L"text"));
}

TEST(TString, WhatNearlyOccursEverywhereIsSearchedInLinearTime)
{
    const std::size_t length = 4000000;
    std::string part(length / 2, 'a');
    part[length / 4] = 'b';
    const Bytes text(std::string(length, 'a'));
    EXPECT_FALSE(text.Contains(part));
    EXPECT_FALSE(text.HasSubstring(part));
    Text wide(std::wstring(length, L'a'));
    const Text widePart(std::wstring(part.begin(), part.end()));
    EXPECT_FALSE(wide.Contains(widePart));
    EXPECT_FALSE(wide.HasSubstring(widePart));
    wide += widePart;
    wide.Replace(widePart, L"c");
    EXPECT_EQ(length + 1, wide.size());
}

TEST(TString, ReplaceTakesNoLongerThanTheTextIsLong)
{
    const std::size_t count = 500000;
    std::wstring pairs;
    for (std::size_t i = 0; i < count; ++i)
        pairs += L"x ";
    struct Row
    {
        const wchar_t* what;
        const wchar_t* with;
        std::size_t length;
    };
    for (const Row& row : {Row{L" ", L"", count}, Row{L"x ", L"x", count}, Row{L" ", L"__", 3 * count}})
    {
        Text text(pairs);
        text.Replace(row.what, row.with);
        EXPECT_EQ(row.length, text.size());
    }
    Text nested(std::wstring(count, L'a') + std::wstring(count, L'b'));
    nested.Replace(L"ab", L"");
    EXPECT_TRUE(nested.empty());
}

TEST(TString, ReplaceNeverEndsWhenTheReplacementHoldsWhatIsReplaced)
{
    EXPECT_EQ(c_strStoppedByAlarm, ReplaceForAWhile(L"aXaXa", L"a", L"aa"));
    EXPECT_EQ(c_strStoppedByAlarm, ReplaceForAWhile(L"b", L"b", L"b"));
    EXPECT_EQ(c_strStoppedByAlarm, ReplaceForAWhile(L"ab", L"ab", L"xabx"));
}

TEST(TString, ReplaceNeverEndsForAnEmptyPattern)
{
    EXPECT_EQ(c_strStoppedByAlarm, ReplaceForAWhile(L"abc", L"", L"x"));
    EXPECT_EQ(c_strStoppedByAlarm, ReplaceForAWhile(L"", L"", L""));
}
