// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/WrittenText.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

using Toolkit::AppendWritten;
using Toolkit::WriteText;

TEST(WrittenText, IsAppendedAsFarAsItWasWritten)
{
    std::string text;
    std::string expected;
    for (std::size_t round = 0; round < 40; ++round)
    {
        // From within the text's own object to one that is moved again and again, used up to its end or not.
        const std::size_t room = round * round * 7;
        const std::size_t used = round % 3 == 0 ? 0 : round % 3 == 1 ? room : room / 2;
        const char letter = static_cast<char>('a' + round % 26);
        const WriteText write = [&](char* memory, std::size_t size)
        {
            EXPECT_EQ(room, size);
            std::fill_n(memory, used, letter);
            return used;
        };
        AppendWritten(text, room, write);
        expected.append(used, letter);
        ASSERT_EQ(expected, text) << round;
        ASSERT_EQ('\0', text.c_str()[text.size()]) << round;
    }
}

TEST(WrittenText, MayBeWrittenIntoRoomThatWasReserved)
{
    std::string text = "before ";
    text.reserve(100);
    const char* const memory = text.data();
    AppendWritten(text, 50, [](char* place, std::size_t) { return std::string("after").copy(place, 5); });
    EXPECT_EQ("before after", text);
    EXPECT_EQ(memory, text.data());
}
