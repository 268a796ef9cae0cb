// SPDX-License-Identifier: MIT
#include "toolkit/encoding/B64.h"

#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/reference/PlainBase64.h"
#include "tests/support/BytesContent.h"
#include "toolkit/encoding/Bytes.h"

using Toolkit::B64;
using Toolkit::b64_decode_binary;
using Toolkit::b64_encode_binary;
using Toolkit::Bytes;
using Toolkit::GetCodeLength;
using Toolkit::GetDataLength;
using Toolkit::smart_ptr;
using Toolkit::TString;
using ToolkitTest::ContentOf;
using ToolkitTest::Raw;
namespace PlainBase64 = ToolkitTest::PlainBase64;

namespace
{

using Conversion = int (*)(const unsigned char*, unsigned int, unsigned char**, unsigned int*);

struct Answer
{
    int result;
    std::string bytes;
};

// Runs one of the two functions from an input in an array of exactly its size.
Answer Convert(Conversion convert, const std::string& input)
{
    const std::vector<unsigned char> exact(input.begin(), input.end());
    unsigned char* out = nullptr;
    unsigned int size = 0;
    const int result = convert(exact.data(), static_cast<unsigned int>(exact.size()), &out, &size);
    const std::unique_ptr<unsigned char[]> owner(out);
    return {result, std::string(out, out + size)};
}

std::string Encoded(const std::string& bytes)
{
    return Convert(b64_decode_binary, bytes).bytes;
}

std::string Decoded(const std::string& text)
{
    return Convert(b64_encode_binary, text).bytes;
}

smart_ptr<Bytes> BytesOf(const std::string& bytes)
{
    return smart_ptr<Bytes>(new Bytes(Raw(bytes), static_cast<unsigned int>(bytes.size())));
}

} // namespace

TEST(B64, GetCodeLengthRoundsUpToWholeGroups)
{
    const int rows[][2] = {
        {0, 0}, {1, 4}, {2, 4}, {3, 4}, {4, 8}, {5, 8}, {6, 8}, {7, 12}, {1048576, 1398104}};
    for (const auto& row : rows)
        EXPECT_EQ(GetCodeLength(row[0]), row[1]) << row[0];
}

TEST(B64, GetCodeLengthAnswersZeroWhenAnIntCannotHoldIt)
{
    const int largest = std::numeric_limits<int>::max();
    EXPECT_EQ(GetCodeLength(1610612733), 2147483644);
    EXPECT_EQ(GetCodeLength(1610612734), 0);
    EXPECT_EQ(GetCodeLength(largest), 0);
    EXPECT_EQ(GetCodeLength(std::numeric_limits<int>::min()), 0);
}

TEST(B64, GetCodeLengthTruncatesTowardZeroBelowZero)
{
    const int rows[][2] = {{-1, 0}, {-2, 0}, {-3, -4}, {-4, -4}};
    for (const auto& row : rows)
        EXPECT_EQ(GetCodeLength(row[0]), row[1]) << row[0];
}

TEST(B64, GetDataLengthIsThreeQuartersRoundedUp)
{
    const int rows[][2] = {{0, 0}, {1, 1}, {2, 2},   {3, 3},   {4, 3},
                           {5, 4}, {8, 6}, {-4, -3}, {-5, -4}, {2147483647, 1610612736}};
    for (const auto& row : rows)
        EXPECT_EQ(GetDataLength(row[0]), row[1]) << row[0];
}

TEST(B64, EncodesBytesToText)
{
    const char* const rows[][2] = {{"Man", "TWFu"},          {"M", "TQ=="},
                                   {"Ma", "TWE="},           {"Many", "TWFueQ=="},
                                   {"\xFF\xFF\xFF", "////"}, {"\xFB\xEF\xBE", "++++"}};
    for (const auto& row : rows)
        EXPECT_EQ(Encoded(row[0]), row[1]);
}

TEST(B64, DecodesTextToBytes)
{
    EXPECT_EQ(Decoded("TWFu"), "Man");
    EXPECT_EQ(Decoded("TQ=="), "M");
    EXPECT_EQ(Decoded("TWFuTWFu"), "ManMan");
}

TEST(B64, GroupWithOnePadGivesThreeBytesTheLastOfThemZero)
{
    EXPECT_EQ(Decoded("TWE="), std::string("Ma\0", 3));
}

TEST(B64, CharactersOutsideTheAlphabetCountAsZero)
{
    EXPECT_EQ(Decoded("TW F"), Decoded("TWAF"));
    EXPECT_EQ(Decoded("TW Fu"), std::string("M\x60\x05", 3));
    EXPECT_EQ(Decoded("TWFu\r\nTW"), std::string("Man\0\x04\xD6", 6));
    EXPECT_EQ(Decoded("-_\xFF."), std::string(3, '\0'));
}

TEST(B64, LastIncompleteGroupIsDropped)
{
    EXPECT_EQ(Decoded("TWFuTQ"), "Man");
    const Answer one = Convert(b64_encode_binary, "T");
    EXPECT_EQ(one.result, 1);
    EXPECT_EQ(one.bytes, "");
}

TEST(B64, FirstPadEndsTheText)
{
    EXPECT_EQ(Decoded("TQ==TWFu"), "M");
    EXPECT_EQ(Decoded("TWFu="), std::string("Man\0", 4));
    EXPECT_EQ(Decoded("="), std::string(1, '\0'));
    EXPECT_EQ(Decoded("T="), std::string("L", 1));
    EXPECT_EQ(Decoded("===="), std::string(1, '\0'));
}

TEST(B64, NothingGivenLeavesTheOutputsUntouched)
{
    unsigned char marker = 0;
    for (const Conversion convert : {b64_decode_binary, b64_encode_binary})
    {
        unsigned char* out = &marker;
        unsigned int size = 77;
        EXPECT_EQ(convert(&marker, 0, &out, &size), 0);
        EXPECT_EQ(convert(nullptr, 4, &out, &size), 0);
        EXPECT_EQ(convert(&marker, 1, nullptr, &size), 0);
        EXPECT_EQ(convert(&marker, 1, &out, nullptr), 0);
        EXPECT_EQ(out, &marker);
        EXPECT_EQ(size, 77U);
    }
}

TEST(B64, SizesThatAnIntCannotHoldAnswerZero)
{
    unsigned char marker = 0;
    unsigned char* out = &marker;
    unsigned int size = 77;
    for (const unsigned int huge : {2147483648U, 4294967295U})
    {
        EXPECT_EQ(b64_encode_binary(&marker, huge, &out, &size), 0);
        EXPECT_EQ(b64_decode_binary(&marker, huge, &out, &size), 0);
    }
    EXPECT_EQ(b64_decode_binary(&marker, 1610612734U, &out, &size), 0);
    EXPECT_EQ(out, &marker);
    EXPECT_EQ(size, 77U);
}

TEST(B64, WhatLiesBehindTheCountedBytesIsZero)
{
    const unsigned char text[] = "TWFuTQ==TWFuTWFu";
    unsigned char* out = nullptr;
    unsigned int size = 0;
    ASSERT_EQ(b64_encode_binary(text, 16, &out, &size), 1);
    const std::unique_ptr<unsigned char[]> owner(out);
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(std::string(out, out + GetDataLength(16)), std::string("ManM") + std::string(8, '\0'));
}

TEST(B64, DecodesEveryShortTextAsThePlainForm)
{
    const std::string characters = "AZaz09+/= \n";
    std::vector<std::string> inputs = {""};
    for (std::size_t i = 0; inputs[i].size() < 5; ++i)
        for (const char character : characters)
            inputs.push_back(inputs[i] + character);
    for (const std::string& input : inputs)
        ASSERT_EQ(Decoded(input), PlainBase64::Decode(input)) << input;
}

TEST(B64, EncodesEveryOneAndTwoBytesAsThePlainForm)
{
    for (unsigned int i = 0; i < 65536; ++i)
    {
        const std::string input = {static_cast<char>(i >> 8), static_cast<char>(i)};
        ASSERT_EQ(Encoded(input), PlainBase64::Encode(input)) << i;
        ASSERT_EQ(Encoded(input.substr(1)), PlainBase64::Encode(input.substr(1))) << i;
    }
}

TEST(B64, AgreesWithThePlainFormsOnRandomInput)
{
    std::mt19937 random(1);
    const std::string characters = "ABCxyz0189+/ABCxyz0189+/ABCxyz0189+/\r-=";
    for (int i = 0; i < 200000; ++i)
    {
        std::string bytes(random() % 24, '\0');
        std::string text(random() % 32, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        for (char& character : text)
            character = i % 4 == 0 ? static_cast<char>(random()) : characters[random() % characters.size()];
        ASSERT_EQ(Encoded(bytes), PlainBase64::Encode(bytes)) << i;
        ASSERT_EQ(Decoded(text), PlainBase64::Decode(text)) << text;
    }
}

TEST(B64, ToUnicodeAgreesWithThePlainFormAroundBlocks)
{
    std::string bytes;
    for (int i = 0; i < 9300; ++i)
        bytes += static_cast<char>(i * 7);
    for (const std::size_t size : {1U, 2U, 3U, 3071U, 3072U, 3073U, 6143U, 6144U, 6145U, 9300U})
    {
        const std::string text = PlainBase64::Encode(bytes.substr(0, size));
        EXPECT_EQ(B64::ToUNICODE(BytesOf(bytes.substr(0, size))), std::wstring(text.begin(), text.end()));
    }
}

TEST(B64, ToB64TurnsTextIntoBytes)
{
    EXPECT_EQ(ContentOf(*B64::ToB64(L"TWFu")), "Man");
    EXPECT_EQ(ContentOf(*B64::ToB64(L"TWE=")), std::string("Ma\0", 3));
    // Two bytes of UTF-8, each of the value 0.
    EXPECT_EQ(ContentOf(*B64::ToB64(L"T\u00E9u")), std::string("L\0\x2E", 3));
}

TEST(B64, ToB64IsNeverNull)
{
    const TString<wchar_t> invalid(std::wstring(1, static_cast<wchar_t>(0xD800)));
    for (const TString<wchar_t>& text : {TString<wchar_t>(), TString<wchar_t>(L"TW"), invalid})
    {
        const smart_ptr<Bytes> bytes = B64::ToB64(text);
        ASSERT_FALSE(bytes.IsNull());
        EXPECT_EQ(ContentOf(*bytes), "");
    }
}

TEST(B64, ToB64EndsAtTheFirstZero)
{
    EXPECT_EQ(ContentOf(*B64::ToB64(std::wstring(L"TWFu\0TWFu", 9))), "Man");
}

TEST(B64, ToUnicodeTurnsBytesIntoText)
{
    EXPECT_EQ(B64::ToUNICODE(BytesOf("Man")), L"TWFu");
    EXPECT_EQ(B64::ToUNICODE(BytesOf("Ma")), L"TWE=");
    EXPECT_EQ(B64::ToUNICODE(BytesOf(std::string("\0\0\0", 3))), L"AAAA");
}

TEST(B64, ToUnicodeOfNothingIsEmpty)
{
    EXPECT_EQ(B64::ToUNICODE(BytesOf("")), L"");
    EXPECT_EQ(B64::ToUNICODE(smart_ptr<Bytes>()), L"");
}
