// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/ParseNumber.h"

#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace ParseNumber = Toolkit::ParseNumber;

namespace
{

// What a real stream makes of the text, and where it stands afterwards.
template <class Number>
void ExpectPlain(const std::wstring& text)
{
    std::wistringstream stream(text);
    stream.imbue(std::locale::classic());
    Number plain = 77;
    const bool plainRead = static_cast<bool>(stream >> plain);
    stream.clear();
    const auto plainRest = static_cast<std::size_t>(stream.rdbuf()->in_avail());

    Number number = 77;
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    const bool read = ParseNumber::Read(next, end, number);
    ASSERT_EQ(read, plainRead) << testing::PrintToString(text);
    ASSERT_EQ(number, plain) << testing::PrintToString(text);
    ASSERT_EQ(static_cast<std::size_t>(end - next), plainRest) << testing::PrintToString(text);
}

void ExpectPlainNumbers(const std::wstring& text)
{
    ExpectPlain<int>(text);
    ExpectPlain<unsigned int>(text);
    ExpectPlain<short>(text);
}

} // namespace

TEST(ParseNumber, ReadsShortTextsAsAStreamDoes)
{
    const std::wstring characters(L"019 +-.,x\0", 10);
    std::size_t count = 1;
    for (std::size_t length = 0; length <= 5; ++length, count *= characters.size())
        for (std::size_t number = 0; number < count; ++number)
        {
            std::wstring text;
            for (std::size_t rest = number; text.size() < length; rest /= characters.size())
                text += characters[rest % characters.size()];
            ExpectPlainNumbers(text);
        }
}

TEST(ParseNumber, ReadsNumbersAroundTheLimitsAsAStreamDoes)
{
    for (const long long limit : {32767LL, 65535LL, 2147483647LL, 4294967295LL, 9223372036854775800LL})
        for (long long distance = -3; distance <= 3; ++distance)
            for (const wchar_t* const sign : {L"", L"+", L"-"})
                for (const wchar_t* const more : {L"", L"0", L"00000000000000000000000", L" ", L"x"})
                    ExpectPlainNumbers(sign + std::to_wstring(limit + distance) + more);
}

TEST(ParseNumber, SkipsTheWhiteSpaceThatAStreamSkips)
{
    for (wchar_t character = 0; character < 0x11000; ++character)
        ExpectPlainNumbers(character + std::wstring(L"5"));
}
