// SPDX-License-Identifier: MIT
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/soak/Loads.h"
#include "tests/support/RegExpSupport.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::MatchResult;
using Toolkit::RegExp;
using Toolkit::smart_ptr;
using Toolkit::TString;

namespace ToolkitTest
{

namespace
{

// So many matches for each pattern that is none, and for each search that the stack has no room for.
const unsigned long s_uBrokenEvery = 50;
const unsigned long s_uDeepEvery = 2000;
const std::size_t s_uDeep = 200000;

const std::vector<std::string>& Words()
{
    static const std::vector<std::string> words = {
        "key", "gr\xC3\xB6\xC3\x9F\x65", "\xE6\x89\x93\xE5\xBC\x80", "\xCE\xA3\xCE\xAF\xCF\x83\xCF\x85", "a"};
    return words;
}

// The settings of a line, "<word>=<number>; " over and over, and what replacements make of it.
struct Line
{
    explicit Line(unsigned long number)
        : m_strWord(Words()[number % Words().size()]), m_strValue(std::to_string(number))
    {
        const std::string junk(number % 30, '-');
        m_strSubject = junk + m_strWord + "=" + m_strValue + "; ";
        m_strByName = junk + "name=value; ";
        m_strCleared = junk + m_strWord + "=#; ";
        for (unsigned long i = 0; i < number % 10; ++i)
        {
            m_strSubject += "b=" + std::to_string(i) + "; ";
            m_strByName += "b=" + std::to_string(i) + "; ";
            m_strCleared += "b=#; ";
        }
        m_uWordBegin = junk.size();
    }

    const std::string m_strWord;
    const std::string m_strValue;
    std::string m_strSubject;
    std::string m_strByName;
    std::string m_strCleared;
    std::size_t m_uWordBegin;
};

void MatchLine(const RegExp& setting, const RegExp& digits, unsigned long number)
{
    const Line line(number);
    const TString<char> subject(line.m_strSubject);
    const smart_ptr<MatchResult> match = setting.Match(subject);
    ASSERT_EQ(3U, match->GetCount()) << subject;
    EXPECT_EQ(line.m_strWord, match->Find("word")->GetValue());
    EXPECT_EQ(line.m_strValue, match->Find("value")->GetValue());
    EXPECT_EQ(static_cast<int>(line.m_uWordBegin), match->GetOffsets()[0]);
    EXPECT_TRUE(setting.IsMatch(Toolkit::UTF8::ToUNICODE(subject)));
    EXPECT_FALSE(setting.IsMatch(TString<char>(line.m_strSubject.substr(0, line.m_uWordBegin))));
    RegExp::ReplacementMappedStrings replacements{{"word", "name"}, {"value", "value"}};
    EXPECT_EQ(line.m_strByName, setting.Replace(replacements, subject));
    EXPECT_EQ(line.m_strCleared, digits.Replace("#", subject, 0));
}

void FailToMatch(unsigned long number)
{
    if (number % s_uBrokenEvery == 0)
    {
        EXPECT_NE("nothing was thrown", MessageOf([] { Pattern("(unclosed").IsMatch(TString<char>("x")); }));
    }
    if (number % s_uDeepEvery == s_uDeepEvery - 1)
    {
        const TString<char> deep(Repeat("a", s_uDeep));
        EXPECT_EQ(ExecutionMessage("-21"), MessageOf([&deep] { Pattern("(a|b)*").IsMatch(deep); }));
    }
}

} // namespace

void MatchExpressions(unsigned long matches)
{
    const RegExp setting = Pattern("(?<word>\\p{L}+)=(?<value>\\d+);");
    const RegExp digits = Pattern("\\d+");
    for (unsigned long number = 0; number < matches && !testing::Test::HasFailure(); ++number)
    {
        MatchLine(setting, digits, number);
        FailToMatch(number);
    }
}

} // namespace ToolkitTest
