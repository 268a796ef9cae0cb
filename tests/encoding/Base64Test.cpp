// SPDX-License-Identifier: MIT
#include "toolkit/encoding/Base64.h"

#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/reference/PlainBase64.h"

using namespace std::string_literals;
using Toolkit::Base64;
using Toolkit::Errc;
using Toolkit::Result;

namespace
{

std::string Noise(std::mt19937& random, std::size_t size)
{
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

} // namespace

TEST(Base64, EncodesAndDecodesTheVectorsOfTheStandard)
{
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"\x14\xFB\x9C\x03\xD9\x7E", "FPucA9l+"},
        {"\x14\xFB\x9C\x03\xD9", "FPucA9k="},
        {"\x14\xFB\x9C\x03", "FPucAw=="},
        {"\0\0\0"s, "AAAA"},
        {"\xFF\xFF\xFE", "///+"},
    };
    for (const auto& [bytes, text] : rows)
    {
        EXPECT_EQ(text, Base64::Encode(bytes));
        EXPECT_EQ(bytes, Base64::Decode(text).value_or("failed"));
        EXPECT_EQ(bytes, Base64::DecodeMime(text).value_or("failed"));
    }
}

TEST(Base64, SaysWhatIsWrongAndWhere)
{
    const char* const foreign = "is no character of the alphabet";
    const char* const misplaced = "is padding at the wrong place";
    const char* const missing = "is missing: the text ends within a group of four";
    const char* const leftOver = "has bits set that are part of no byte";
    const struct
    {
        std::string text;
        std::size_t position;
        const char* reason;
    } rows[] = {
        {"Zm 9v", 2, foreign},      {"Zm9v\n", 4, foreign},     {" Zm9v", 0, foreign},
        {"Zm9v\0"s, 4, foreign},    {"Zm9\xC3", 3, foreign},    {"Zm-v", 2, foreign},
        {"Zm_v", 2, foreign},       {"Z!==", 1, foreign},       {"!m9vZg=", 0, foreign},
        {"=", 0, misplaced},        {"==", 0, misplaced},       {"====", 0, misplaced},
        {"Z=", 1, misplaced},       {"Z==", 1, misplaced},      {"Z===", 1, misplaced},
        {"Zg===", 2, misplaced},    {"Zm8==", 4, misplaced},    {"Zm9v=", 4, misplaced},
        {"Zm9v==", 4, misplaced},   {"Zm9v====", 4, misplaced}, {"Zg==Zg==", 2, misplaced},
        {"Zg==Zm9v", 2, misplaced}, {"Z", 1, missing},          {"Zg", 2, missing},
        {"Zg=", 3, missing},        {"Zm8", 3, missing},        {"Zm9vZ", 5, missing},
        {"Zh==", 1, leftOver},      {"Z/==", 1, leftOver},      {"Zm9=", 2, leftOver},
        {"Zm9vZm+=", 6, leftOver},
    };
    for (const auto& row : rows)
    {
        const Result<std::string> decoded = Base64::Decode(row.text);
        ASSERT_FALSE(decoded) << row.text;
        EXPECT_EQ(Errc::Malformed, decoded.error().Code());
        EXPECT_EQ("cannot decode Base64: byte " + std::to_string(row.position) + " " + row.reason,
                  decoded.error().Message());
    }
}

TEST(Base64, SkipsLineEndsOfMailsAndTakesABrokenEnd)
{
    EXPECT_EQ("foobar", Base64::DecodeMime("Zm9v\r\nYmFy\r\n").value_or("failed"));
    EXPECT_EQ("foob", Base64::DecodeMime("\n\rZ\nm9\r\rvYg\r\n=\n=\n\n").value_or("failed"));
    EXPECT_EQ("", Base64::DecodeMime("\r\n\r\n").value_or("failed"));
    for (const char* const text :
         {"Zm9v Zm9v", "Zm9v\tZm9v", "Zm9v\fZm9v", "Zm9v\vZm9v", "Zm9v--", "Zm9v \r\n"})
        EXPECT_EQ(Errc::Malformed, Base64::DecodeMime(text).error().Code()) << text;
    for (const char* const text : {"=", "Z=", "Zg===", "Zm9v=", "Zg==Zm9v", "Z", "Zm9vZ"})
        EXPECT_EQ(Errc::Malformed, Base64::DecodeMime(text).error().Code()) << text;
    for (const char* const text : {"Zg", "Zg=", "Zg\n=\n=\n", "Zh==", "Zv"})
        EXPECT_EQ("f", Base64::DecodeMime(text).value_or("failed")) << text;
    const Result<std::string> decoded = Base64::DecodeMime("Zm9v\r\nYm\nFy\r\nZ!==");
    ASSERT_FALSE(decoded);
    EXPECT_EQ("cannot decode Base64: byte 14 is no character of the alphabet", decoded.error().Message());
    EXPECT_EQ("cannot decode Base64: byte 7 is missing: the text ends within a group of four",
              Base64::DecodeMime("Zm9v\r\nY").error().Message());
}

TEST(Base64, AcceptsExactlyWhatItEncodes)
{
    std::mt19937 random(4648);
    const std::string_view characters = "AQgwZm8+/=0=\n";
    for (int round = 0; round < 20000; ++round)
    {
        std::string text(random() % 13, '\0');
        for (char& character : text)
            character = characters[random() % characters.size()];
        const Result<std::string> decoded = Base64::Decode(text);
        ASSERT_EQ(decoded.has_value(), text == ToolkitTest::PlainBase64::Encode(
                                                   decoded.value_or(ToolkitTest::PlainBase64::Decode(text))))
            << text;
    }
}

TEST(Base64, DecodesWhateverItEncodes)
{
    std::mt19937 random(1);
    for (std::size_t size = 0; size < 300; ++size)
    {
        const std::string bytes = Noise(random, size);
        const std::string text = Base64::Encode(bytes);
        ASSERT_EQ(ToolkitTest::PlainBase64::Encode(bytes), text);
        ASSERT_EQ(bytes, Base64::Decode(text).value_or("failed"));
        std::string lines;
        for (std::size_t i = 0; i < text.size(); i += 76)
            lines += text.substr(i, 76) + "\r\n";
        ASSERT_EQ(bytes, Base64::DecodeMime(lines).value_or("failed"));
    }
    const std::string bytes = Noise(random, 1 << 20);
    EXPECT_EQ(bytes, Base64::Decode(Base64::Encode(bytes)).value_or("failed"));
}
