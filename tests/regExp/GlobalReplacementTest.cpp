// SPDX-License-Identifier: MIT
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/PlainReplacement.h"
#include "tests/support/RegExpSupport.h"

using namespace Toolkit;
using namespace ToolkitTest;

namespace
{

using Words = std::vector<std::string>;

// Makes random patterns, replacements and texts that touch everything a search can look at.
class Generator
{
public:
    explicit Generator(unsigned int seed) : m_random(seed) {}

    std::size_t Below(std::size_t count) { return m_random() % count; }
    const std::string& Any(const Words& words) { return words[Below(words.size())]; }

    std::string MakePattern()
    {
        static const Words s_prefixes = {"(?i)", "(?m)", "(?s)", "(*CRLF)", "(*ANYCRLF)", "(*ANY)", "(*UCP)"};
        const std::string prefix = Below(6) == 0 ? Any(s_prefixes) : "";
        return prefix + MakeAlternatives(2);
    }

    std::string MakeText(std::size_t most)
    {
        static const Words s_usual = {"a", "b", "c", "ab", "\xC3\xA4", "-"};
        static const Words s_rare = {
            " ",        "\n", "\r",       "\r\n",         "\xE2\x82\xAC",      "\xF0\x9F\x98\x80",
            "\xC3\xB6", "A",  "\xCC\x88", "\xE2\x80\xA8", std::string(1, '\0')};
        std::string text;
        for (std::size_t count = Below(most + 1); count > 0; --count)
            text += Below(6) == 0 ? Any(s_rare) : Any(s_usual);
        if (Below(200) == 0)
            text.insert(Below(text.size() + 1), "\xC3");
        return text;
    }

    std::string MakeReplacement()
    {
        static const Words s_words = {
            "",         "",   "a",    "b", "c",  "ab", "ba", "aab", "-", "\xC3\xA4", "\xE2\x82\xAC",
            "\xC3\xB6", "\n", "bbbb", "(", "\\1"};
        static const Words s_broken = {"\xC3", "\xA4", "\xA4\xC3", "\xB6", "\xA4\xC3\xB6\xC3",
                                       "\xFF", "a\xC3"};
        return Below(12) == 0 ? Any(s_broken) : Any(s_words);
    }

private:
    std::string MakeAlternatives(int depth)
    {
        std::string pattern = MakeSequence(depth);
        while (Below(4) == 0)
            pattern += "|" + MakeSequence(depth);
        return pattern;
    }

    std::string MakeSequence(int depth)
    {
        std::string pattern;
        for (std::size_t count = 1 + Below(3); count > 0; --count)
            pattern += MakeAtom(depth) + MakeQuantifier();
        return pattern;
    }

    std::string MakeQuantifier()
    {
        static const Words s_quantifiers = {"*", "+", "?", "*?", "+?", "{2}", "{1,2}", "*+"};
        return Below(4) == 0 ? Any(s_quantifiers) : "";
    }

    std::string MakeAtom(int depth)
    {
        static const Words s_plain = {"a", "b", "c", "ab", "\xC3\xA4", ".", "[ab]", "[^a]", "\\w", "-"};
        static const Words s_special = {"\\C",  "\\b",  "\\B", "\\K",     "^",   "$",   "\\A",
                                        "\\z",  "\\Z",  "\\G", "\\X",     "\\R", "\\n", "\\s",
                                        "(?1)", "(?R)", "\\1", "(*SKIP)", "\\W", "\\N", "\\p{L}"};
        static const Words s_opening = {"(", "(?:", "(?=", "(?!", "(?<=", "(?<!", "(?<=", "(?<!", "(?>"};
        const std::size_t kind = Below(10);
        if (kind < 5 || depth == 0)
            return Below(6) == 0 ? Any(s_special) : Any(s_plain);
        if (kind < 7)
            return Any(s_special);
        return Any(s_opening) + MakeAlternatives(depth - 1) + ")";
    }

    std::mt19937 m_random;
};

struct Outcome
{
    std::string text;
    std::string message;
    bool endless = false;
};

template <class Work>
Outcome OutcomeOf(const Work& work)
{
    Outcome outcome;
    outcome.message = MessageOf(
        [&]
        {
            try
            {
                outcome.text = work();
            }
            catch (const TooManyReplacements&)
            {
                outcome.endless = true;
            }
        });
    return outcome;
}

struct Case
{
    std::string pattern;
    std::string replacement;
    std::string input;
};

std::string Describe(const Case& it)
{
    return testing::PrintToString(it.pattern) + " by " + testing::PrintToString(it.replacement) + " in " +
           testing::PrintToString(it.input.size() < 200 ? it.input : it.input.substr(0, 100) + "...");
}

// What became of the plain form.
enum class Ending
{
    Unchanged,
    Changed,
    Thrown,
    Endless
};

// Compares both forms, unless the plain one had to be stopped.
Ending Compare(const Case& it, int mostReplacements)
{
    const RegExp regExp = Pattern(it.pattern);
    const TString<char> replacement(it.replacement);
    const TString<char> input(it.input);
    const Outcome plain =
        OutcomeOf([&] { return PlainReplace(regExp, replacement, input, mostReplacements); });
    if (plain.endless)
        return Ending::Endless;
    const Outcome fast = OutcomeOf([&] { return regExp.Replace(replacement, input, 0); });
    EXPECT_EQ(plain.text, fast.text) << Describe(it);
    EXPECT_EQ(plain.message, fast.message) << Describe(it);
    if (plain.message != OutcomeOf([] { return std::string(); }).message)
        return Ending::Thrown;
    return plain.text == it.input ? Ending::Unchanged : Ending::Changed;
}

class GlobalReplacementRandom : public testing::TestWithParam<unsigned int>
{
};

class GlobalReplacementLong : public testing::TestWithParam<unsigned int>
{
};

} // namespace

TEST_P(GlobalReplacementRandom, GivesWhatThePlainFormGives)
{
    Generator generator(GetParam());
    std::map<Ending, int> endings;
    for (int i = 0; i < 70000 && !HasFailure(); ++i)
    {
        const Case it = {generator.MakePattern(), generator.MakeReplacement(), generator.MakeText(12)};
        const Ending ending = Compare(it, 200);
        ++endings[ending];
        if (ending != Ending::Endless)
            continue;
        const RegExp regExp = Pattern(it.pattern);
        const TString<char> replacement(it.replacement);
        const TString<char> input(it.input);
        EXPECT_EQ(ExecutionMessage("-8"), MessageOf([&] { regExp.Replace(replacement, input, 0); }))
            << Describe(it);
    }
    EXPECT_GT(endings[Ending::Changed], 14000);
    EXPECT_GT(endings[Ending::Thrown], 1000);
    EXPECT_LT(endings[Ending::Endless], 500);
}

INSTANTIATE_TEST_SUITE_P(Seeds, GlobalReplacementRandom, testing::Range(0U, 16U));

TEST_P(GlobalReplacementLong, GivesWhatThePlainFormGivesAbove65536Bytes)
{
    // None of them runs through the filler, which would take the plain form minutes.
    static const Words s_patterns = {"a",
                                     "ab",
                                     "aa",
                                     "aa|bb",
                                     "a+",
                                     "[ab]+c?",
                                     "(?<=a)b",
                                     "(?<!a)b",
                                     "(?<=b)a|c",
                                     "\\ba",
                                     "a\\b",
                                     ".\\b",
                                     "\\b.",
                                     "a\\Kb",
                                     "b(?=a)",
                                     "b(?!a)",
                                     "a(?=.b)",
                                     "a\\C",
                                     "\\Ca",
                                     "\\C\\Kb",
                                     "(?<=\\Ka)b",
                                     "(?m)^a",
                                     "a(?m)$",
                                     "(?m)a$|^b",
                                     "a\\z",
                                     "a\\Z|b",
                                     "\\Aa",
                                     "\\Aa|b\\b",
                                     "\\Ga|b",
                                     "(*SKIP)a|b",
                                     "a(*SKIP)b|a",
                                     "(*CRLF)a|^b",
                                     "(a)(b)?",
                                     "(?i)A[^-]*b",
                                     "b(?R)?a",
                                     "(?=b\\Ka)a",
                                     "(?<=(?<=a)b)a",
                                     "\xC3\xA4",
                                     "[^-]a",
                                     "(?>a|ab)b",
                                     "\\w+",
                                     "\\w{2}",
                                     "(?=ab\\K)",
                                     "--a",
                                     "a--|b",
                                     "(?<=--)a|b",
                                     "(?(?=a)ab|bc)"};
    Generator generator(GetParam());
    int changed = 0;
    for (int i = 0; i < 60 && !HasFailure(); ++i)
    {
        const std::string filler = Repeat("-", 65480 + generator.Below(60));
        const Case it = {generator.Any(s_patterns), generator.MakeReplacement(),
                         generator.MakeText(8) + filler + generator.MakeText(60)};
        changed += Compare(it, 60) == Ending::Changed ? 1 : 0;
    }
    EXPECT_GT(changed, 20);
}

INSTANTIATE_TEST_SUITE_P(Seeds, GlobalReplacementLong, testing::Range(100U, 116U));

TEST(GlobalReplacement, GivesWhatThePlainFormGivesForManyPlacesBehindByte65535)
{
    const std::string text = Repeat("-", 65500) + Repeat("a dog, \xC3\xA4 wolf\n", 15);
    for (const char* const pattern : {"dog|fox", "\\bdog\\b", "(?<=(?<=a) )dog", "(?i)[a-z]+g", "dog.*"})
        for (const char* const replacement : {"cat", "horse", "", "\xE2\x82\xAC", "dog", "a dog", " "})
            Compare({pattern, replacement, text}, 40);
}

TEST(GlobalReplacement, GivesWhatThePlainFormGivesForAllSmallTexts)
{
    const Words patterns = {"a",      "ab",        "(?<=a)b",   "(?<!a)b",       "\\ba",   "a\\Kb",
                            "b(?=a)", "\\C",       "(?<=\\Ka)", "(?<=(?<=a)b)a", "(?m)^a", "^a",
                            "a|b",    "(?=ab\\K)", "\\Aa",      "\\C\\K\\C"};
    const Words replacements = {"", "a", "b", "ab", "\n", "\xA4", "\xC3"};
    const Words pieces = {"a", "b", "\n", "\xC3\xA4"};
    for (const std::string& pattern : patterns)
        for (const std::string& replacement : replacements)
            for (unsigned int number = 0; number < 1024 && !HasFailure(); ++number)
            {
                std::string input;
                for (unsigned int rest = number; rest > 0; rest /= 4)
                    input += pieces[rest % 4];
                Compare({pattern, replacement, input}, 50);
            }
}

TEST(GlobalReplacement, GivesWhatThePlainFormGivesForPatternsWithoutGroups)
{
    const Words items = {
        "a", "b", "[ab]", "[^a]", ".",   "\\d", "\\b", "\\w", "\xC3\xA4", "[\xC3\xA4-\xC3\xB6]",
        "|", "^", "\\K",  "\\X",  "\\R", "$"};
    const Words quantifiers = {"", "", "", "+", "*", "?", "+?", "*+"};
    Generator generator(7);
    for (int i = 0; i < 60000 && !HasFailure(); ++i)
    {
        std::string pattern;
        for (std::size_t count = 1 + generator.Below(4); count > 0; --count)
            pattern += generator.Any(items) + generator.Any(quantifiers);
        Compare({pattern, generator.MakeReplacement(), generator.MakeText(12)}, 200);
    }
}

TEST(GlobalReplacement, LookBehindSeesWhatWasWritten)
{
    const Words patterns = {"(?<=aaaa)b",
                            "(?<=(?<=(?<=a)a)a)b",
                            "(?<=^|ab)b",
                            "(?<=\\bab)b",
                            "(?<n>\\b|(?<=(?=(?&n))a))b",
                            "(?<!aaaaaaaaaaaaaaaaaaaa)b",
                            "(?<=\xE2\x82\xAC\xC3\xA4)b",
                            "(?<=(?<=(?<=\xF0\x9F\x98\x80)\xF0\x9F\x98\x80)\xF0\x9F\x98\x80)b"};
    const Words texts = {Repeat("a", 30) + Repeat("b", 30),
                         Repeat("ab", 30),
                         "aaaabbbb\nb b",
                         Repeat("b", 40),
                         "\xE2\x82\xAC\xC3\xA4" + Repeat("b", 9),
                         Repeat("\xF0\x9F\x98\x80", 3) + "bbbb"};
    for (const std::string& pattern : patterns)
        for (const char* const replacement :
             {"a", "", "ab", "\xC3\xA4", "\xF0\x9F\x98\x80", "aaaaaaaaaaaaaaaaaaaa", " "})
            for (const std::string& text : texts)
                EXPECT_NE(Ending::Endless, Compare({pattern, replacement, text}, 1000)) << pattern;
}

TEST(GlobalReplacement, TakesForUtf8WhatPcreTakesForIt)
{
    const Words replacements = {"\xEF\xBB\xBF", "\xEF\xBF\xBE",    "\xEF\xB7\x90",     "\xF4\x8F\xBF\xBF",
                                "\xED\x9F\xBF", "\xED\xA0\x80",    "\xED\xBF\xBF",     "\xF4\x90\x80\x80",
                                "\xC0\x80",     "\xE0\x80\x80",    "\xF0\x80\x80\x80", "\xF8\x88\x80\x80\x80",
                                "\xFE",         "\xF5\x80\x80\x80"};
    std::map<Ending, int> endings;
    for (const std::string& replacement : replacements)
        for (const char* const pattern : {"a", "(?<=.)a"})
            ++endings[Compare({pattern, replacement, "xaxa"}, 100)];
    EXPECT_EQ((std::map<Ending, int>{{Ending::Changed, 10}, {Ending::Thrown, 18}}), endings);
}
