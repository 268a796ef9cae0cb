// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/GapBuffer.h"

#include <algorithm>
#include <random>
#include <string>

#include <gtest/gtest.h>

using Toolkit::GapBuffer;
using Toolkit::TString;

namespace
{

std::string WindowOf(GapBuffer& text, std::size_t context)
{
    return std::string(text.GetWindow(context), context + text.GetRest());
}

} // namespace

TEST(GapBuffer, EqualsOnlyTheSameText)
{
    GapBuffer text("abcdef");
    for (const std::size_t position : {0U, 3U, 6U})
    {
        text.MoveTo(position);
        EXPECT_TRUE(text.Equals("abcdef")) << position;
        EXPECT_FALSE(text.Equals("Xbcdef")) << position;
        EXPECT_FALSE(text.Equals("abcdeX")) << position;
        EXPECT_FALSE(text.Equals("abcde")) << position;
        EXPECT_FALSE(text.Equals("abcdefg")) << position;
    }
}

TEST(GapBuffer, WindowHoldsTheContextAndTheRest)
{
    GapBuffer text("abcdef");
    EXPECT_EQ("abcdef", WindowOf(text, 0));
    text.MoveTo(4);
    EXPECT_EQ("ef", WindowOf(text, 0));
    EXPECT_EQ("cdef", WindowOf(text, 2));
    EXPECT_EQ("abcdef", WindowOf(text, 4));
    EXPECT_TRUE(text.Equals("abcdef"));
}

TEST(GapBuffer, WindowIsWholeWhenNoGapIsLeft)
{
    GapBuffer text("ab");
    // As much as the first gap holds.
    const std::string filling(256, '-');
    text.Replace(1, 1, filling);
    EXPECT_EQ("-b", WindowOf(text, 1));
    EXPECT_EQ("a" + filling + "b", WindowOf(text, 257));
}

TEST(GapBuffer, DoesWhatAPlainTextDoes)
{
    std::mt19937 random(1);
    const auto upTo = [&random](std::size_t most) { return random() % (most + 1); };
    std::string plain = "a text";
    GapBuffer text(plain);
    for (int i = 0; i < 20000; ++i)
    {
        const std::size_t begin = upTo(plain.size());
        const std::size_t end = begin + upTo(std::min<std::size_t>(plain.size() - begin, 8));
        // Long now and then, so that the gap widens; shorter once the text is long.
        const std::size_t most = plain.size() > 2000 ? 2 : random() % 50 == 0 ? 400 : 10;
        const std::string with(upTo(most), static_cast<char>('a' + upTo(25)));
        plain.replace(begin, end - begin, with);
        text.Replace(begin, end, TString<char>(with));
        ASSERT_EQ(plain.size(), text.GetLength());
        ASSERT_EQ(begin + with.size(), text.GetPosition());
        const std::size_t from = upTo(plain.size());
        const std::size_t to = from + upTo(plain.size() - from);
        ASSERT_EQ(plain.substr(from, to - from), text.GetText(from, to));
        ASSERT_TRUE(from == plain.size() || text.At(from) == plain[from]);
        text.MoveTo(from);
        const std::size_t context = upTo(from);
        ASSERT_EQ(plain.substr(from - context), WindowOf(text, context));
        ASSERT_TRUE(text.Equals(TString<char>(plain)));
    }
}
