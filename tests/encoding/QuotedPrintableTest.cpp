// SPDX-License-Identifier: MIT
#include "toolkit/encoding/QuotedPrintable.h"

#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

using namespace std::string_literals;
using Toolkit::QuotedPrintable;

namespace
{

std::string Random(std::mt19937& random, std::string_view characters, std::size_t size)
{
    std::string text(size, '\0');
    for (char& character : text)
        character = characters[random() % characters.size()];
    return text;
}

// What the standard asks of each line.
void CheckLines(std::string_view text)
{
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find("\r\n"), text.size());
        const std::string_view line = text.substr(0, end);
        ASSERT_LE(line.size(), 76U);
        for (const char character : line)
            ASSERT_TRUE((character >= ' ' && character <= '~') || character == '\t');
        ASSERT_TRUE(line.empty() || (line.back() != ' ' && line.back() != '\t'));
        text.remove_prefix(std::min(end + 2, text.size()));
    }
}

} // namespace

TEST(QuotedPrintable, EncodesByTheStandard)
{
    const std::string seventyFive(75, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"plain, text!", "plain, text!"},
        {"Caf\xC3\xA9", "Caf=C3=A9"},
        {"a=b", "a=3Db"},
        {"\0\x7F~\x80\xFF"s, "=00=7F~=80=FF"},
        {"two words\tand", "two words\tand"},
        {"end ", "end=20"},
        {"end\t", "end=09"},
        {"end  \r\nnext", "end =20\r\nnext"},
        {" \r\n\t\r\n", "=20\r\n=09\r\n"},
        {"a\r\nb\r\n", "a\r\nb\r\n"},
        {"a\nb\rc\n\r", "a=0Ab=0Dc=0A=0D"},
        {"a\r\r\nb", "a=0D\r\nb"},
        {seventyFive + "x", seventyFive + "x"},
        {seventyFive + "x\r\n", seventyFive + "x\r\n"},
        {seventyFive + "xx", seventyFive + "=\r\nxx"},
        {seventyFive + " ", seventyFive + "=\r\n=20"},
        {seventyFive + " x", seventyFive + "=\r\n x"},
        {std::string(73, 'x') + "\xFF", std::string(73, 'x') + "=FF"},
        {std::string(74, 'x') + "\xFF", std::string(74, 'x') + "=\r\n=FF"},
        {std::string(72, 'x') + "\xFF" + "y", std::string(72, 'x') + "=FFy"},
        {std::string(72, 'x') + "\xFF" + "yz", std::string(72, 'x') + "=FF=\r\nyz"},
        {std::string(73, 'x') + "\xFF" + "y", std::string(73, 'x') + "=\r\n=FFy"},
    };
    for (const auto& [bytes, text] : rows)
    {
        EXPECT_EQ(text, QuotedPrintable::Encode(bytes));
        EXPECT_EQ(bytes, QuotedPrintable::Decode(text));
    }
}

TEST(QuotedPrintable, DecodesWhatOthersWrite)
{
    const std::pair<std::string, std::string> rows[] = {
        {"=c3=A9", "\xC3\xA9"},
        {"soft=\r\nbreak", "softbreak"},
        {"soft=\nbreak", "softbreak"},
        {"soft=\rlost\nbreak", "softbreak"},
        {"soft=\rlost", "soft"},
        {"blank \r\n stays ", "blank \r\n stays "},
        {"soft= \r\nbreak", "soft= \r\nbreak"},
        {"=", ""},
        {"a=", "a"},
        {"==", "="},
        {"===41", "=A"},
        {"=4", "=4"},
        {"=G1=1G=-1", "=G1=1G=-1"},
        {"=4=41", "=4A"},
        {"a_b", "a_b"},
        {"\xE4\0="s, "\xE4\0"s},
        {"a\nb\rc\r\n", "a\nb\rc\r\n"},
    };
    for (const auto& [text, bytes] : rows)
        EXPECT_EQ(bytes, QuotedPrintable::Decode(text)) << text;
}

TEST(QuotedPrintable, DecodesWhateverItEncodes)
{
    std::mt19937 random(2045);
    for (int round = 0; round < 5000; ++round)
    {
        const std::string bytes =
            Random(random, round % 2 == 0 ? "xxxxxxxxxxxxx \t=\r\n\xE4" : "\r\n \tx", random() % 200);
        const std::string text = QuotedPrintable::Encode(bytes);
        CheckLines(text);
        ASSERT_EQ(bytes, QuotedPrintable::Decode(text)) << ::testing::PrintToString(bytes);
    }
    std::string every;
    for (int i = 0; i < 65536; ++i)
        every += static_cast<char>(i % 256 ^ i / 256);
    CheckLines(QuotedPrintable::Encode(every));
    EXPECT_EQ(every, QuotedPrintable::Decode(QuotedPrintable::Encode(every)));
}
