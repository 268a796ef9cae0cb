// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/LinearSearch.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using Toolkit::LinearSearch;

namespace
{

struct Folded
{
    char operator()(char element) const { return element == 'A' ? 'a' : element; }
};

// What the plain search finds in the folded texts.
std::size_t PlainFind(std::string text, std::string what)
{
    for (char& element : text)
        element = Folded()(element);
    for (char& element : what)
        element = Folded()(element);
    return text.find(what);
}

std::size_t Find(const std::string& text, const std::string& what)
{
    return LinearSearch<char, Folded>(what.data(), what.size(), Folded()).Find(text.data(), text.size());
}

// Every text over these elements of at most `longest` of them.
std::vector<std::string> EveryText(const std::string& elements, std::size_t longest)
{
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size(); ++i)
        if (texts[i].size() < longest)
            for (const char element : elements)
                texts.push_back(texts[i] + element);
    return texts;
}

void CompareAll(const std::vector<std::string>& texts, const std::vector<std::string>& parts)
{
    for (const std::string& text : texts)
        for (const std::string& what : parts)
        {
            if (what.empty())
                continue;
            ASSERT_EQ(PlainFind(text, what), Find(text, what)) << what << " in " << text;
        }
}

} // namespace

TEST(LinearSearch, FindsInEveryShortTextWhatThePlainSearchFinds)
{
    CompareAll(EveryText("ab", 10), EveryText("ab", 7));
    CompareAll(EveryText("aAb", 6), EveryText("abA", 4));
}

TEST(LinearSearch, FindsInTextsThatRepeatThemselvesWhatThePlainSearchFinds)
{
    std::mt19937 random(4711);
    for (int round = 0; round < 20000; ++round)
    {
        // Periods of periods, with a fault now and then.
        std::string text = EveryText("ab", 4)[1 + random() % 30];
        while (text.size() < 100)
            text += random() % 8 == 0 ? text + "b" : text;
        text[random() % text.size()] = 'c';
        const std::size_t begin = random() % (text.size() / 2);
        std::string what = text.substr(begin, 1 + random() % (text.size() - begin));
        if (random() % 2 == 0)
            what[random() % what.size()] = 'A';
        ASSERT_EQ(PlainFind(text, what), Find(text, what)) << what << " in " << text;
    }
}

TEST(LinearSearch, FindsNothingInAShorterText)
{
    EXPECT_EQ((LinearSearch<char, Folded>::s_uNone), Find("ab", "abc"));
    EXPECT_EQ((LinearSearch<char, Folded>::s_uNone), Find("", "a"));
}
