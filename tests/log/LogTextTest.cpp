// SPDX-License-Identifier: MIT
#include "toolkit/log/LogText.h"

#include <climits>
#include <cmath>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "toolkit/log/LogSeverity.h"

using Toolkit::LogSeverity;
using Toolkit::LogText;
using Toolkit::TString;

namespace
{

// Groups every two digits, so that a number written in the global locale shows.
class Grouping : public std::numpunct<wchar_t>
{
protected:
    wchar_t do_thousands_sep() const override { return L','; }
    wchar_t do_decimal_point() const override { return L';'; }
    std::string do_grouping() const override { return "\2"; }
    std::wstring do_truename() const override { return L"yes"; }
};

class GroupingGlobalLocale
{
public:
    GroupingGlobalLocale() : m_before(std::locale::global(std::locale(std::locale::classic(), new Grouping)))
    {
    }
    ~GroupingGlobalLocale() { std::locale::global(m_before); }
    GroupingGlobalLocale(const GroupingGlobalLocale&) = delete;
    GroupingGlobalLocale& operator=(const GroupingGlobalLocale&) = delete;

private:
    const std::locale m_before;
};

// The plain form: a fresh wide stream with default flags in the classic locale.
template <class T>
std::wstring Streamed(const T& value)
{
    std::wostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

template <class T>
void ExpectAsStreamed(const T& value)
{
    const GroupingGlobalLocale global;
    EXPECT_EQ(Streamed(value), LogText::Of(value)) << testing::PrintToString(value);
}

template <class T>
void ExpectExtremesAsStreamed()
{
    using Limits = std::numeric_limits<T>;
    for (const T value : {Limits::min(), Limits::max(), T(0), T(1), T(-1), T(10), T(99), T(100), T(12345)})
        ExpectAsStreamed(value);
}

enum Unscoped
{
    First = -7,
    Second = 70000
};
enum WideUnscoped : unsigned long long
{
    Large = ULLONG_MAX
};
enum class Scoped : short
{
    Low = -5
};

struct Streamable
{
    int value;
};

std::wostream& operator<<(std::wostream& stream, const Streamable& streamable)
{
    return stream << L'<' << streamable.value << L'>';
}

} // namespace

TEST(LogText, TheGlobalLocaleOfTheseTestsGroupsDigits)
{
    const GroupingGlobalLocale global;
    std::wostringstream stream;
    stream << 12345 << std::boolalpha << true;
    EXPECT_EQ(L"1,23,45yes", stream.str());
}

TEST(LogText, IntegersAreAsAClassicStreamWritesThem)
{
    ExpectExtremesAsStreamed<short>();
    ExpectExtremesAsStreamed<int>();
    ExpectExtremesAsStreamed<long>();
    ExpectExtremesAsStreamed<long long>();
    ExpectExtremesAsStreamed<unsigned short>();
    ExpectExtremesAsStreamed<unsigned int>();
    ExpectExtremesAsStreamed<unsigned long>();
    ExpectExtremesAsStreamed<unsigned long long>();
    ExpectExtremesAsStreamed<signed char>();
    ExpectExtremesAsStreamed<unsigned char>();
}

TEST(LogText, EveryShortIsAsAClassicStreamWritesIt)
{
    std::wostringstream stream;
    stream.imbue(std::locale::classic());
    TString<wchar_t> text;
    for (int value = SHRT_MIN; value <= SHRT_MAX; ++value)
    {
        stream << static_cast<short>(value) << L' ' << static_cast<unsigned short>(value) << L' ';
        LogText::Append(text, static_cast<short>(value));
        LogText::Append(text, L' ');
        LogText::Append(text, static_cast<unsigned short>(value));
        LogText::Append(text, L' ');
    }
    EXPECT_EQ(stream.str(), text);
}

TEST(LogText, NumbersOfEveryLengthAreAsAClassicStreamWritesThem)
{
    unsigned long long power = 1;
    for (int digits = 1; digits <= 20; ++digits, power *= 10)
        for (const unsigned long long value : {power - 1, power, power + 1, power * 9})
        {
            ExpectAsStreamed(value);
            ExpectAsStreamed(static_cast<long long>(value));
            ExpectAsStreamed(-static_cast<long long>(value >> 1));
        }
    std::mt19937_64 random(20090307);
    for (int i = 0; i < 10000; ++i)
    {
        const unsigned long long value = random() >> i % 64;
        ExpectAsStreamed(value);
        ExpectAsStreamed(static_cast<long long>(value));
    }
}

TEST(LogText, FloatingPointIsAsAClassicStreamWritesIt)
{
    for (const double value : {0.0, -0.0, 1.5, -2.25, 12345.678, 1e300, 1e-300, 123456789.0,
                               std::numeric_limits<double>::infinity(), std::nan("")})
    {
        ExpectAsStreamed(value);
        ExpectAsStreamed(static_cast<float>(value));
        ExpectAsStreamed(static_cast<long double>(value));
    }
}

TEST(LogText, BoolIsADigitInEveryLocale)
{
    ExpectAsStreamed(true);
    ExpectAsStreamed(false);
    EXPECT_EQ(L"1", LogText::Of(true));
}

TEST(LogText, SingleCharactersAreCharacters)
{
    for (int value = 0; value < 256; ++value)
        ExpectAsStreamed(static_cast<char>(value));
    for (const wchar_t value : {L'\0', L'a', L'\u00E9', L'\u20AC', L'\U0010FFFF', static_cast<wchar_t>(-1)})
        ExpectAsStreamed(value);
}

TEST(LogText, UnscopedEnumerationsAreTheirNumbers)
{
    ExpectAsStreamed(First);
    ExpectAsStreamed(Second);
    ExpectAsStreamed(Large);
    ExpectAsStreamed(LogSeverity::Verbose);
    EXPECT_EQ(L"4", LogText::Of(LogSeverity::Verbose));
}

TEST(LogText, ScopedEnumerationsAreTheirNumbers)
{
    EXPECT_EQ(L"-5", LogText::Of(Scoped::Low));
}

TEST(LogText, NarrowBytesAreWidenedOneByOne)
{
    char bytes[256];
    for (int value = 1; value < 256; ++value)
        bytes[value - 1] = static_cast<char>(value);
    bytes[255] = '\0';
    const GroupingGlobalLocale global;
    EXPECT_EQ(Streamed(static_cast<const char*>(bytes)), LogText::Of(bytes));
    EXPECT_EQ(255U, LogText::Of(bytes).size());
}

TEST(LogText, LongNarrowTextIsWidenedWhereverItIsCut)
{
    const auto& facet = std::use_facet<std::ctype<wchar_t>>(std::locale::classic());
    for (std::size_t length = 0; length < 400; ++length)
        for (std::size_t place = 0; place <= length; place += 37)
        {
            std::string text(length, 'a');
            if (place < length)
                text[place] = '\xE9';
            std::wstring widened;
            for (const char byte : text)
                widened += facet.widen(byte);
            EXPECT_EQ(widened, LogText::Of(text.c_str())) << length << " " << place;
        }
}

TEST(LogText, ArraysAreAsAClassicStreamWritesThem)
{
    ExpectAsStreamed("");
    ExpectAsStreamed(L"");
    ExpectAsStreamed("plain");
    ExpectAsStreamed(L"wide \u20AC");
    ExpectAsStreamed("cut\0off");
    ExpectAsStreamed(L"cut\0off");
    char changeable[16] = "changeable";
    EXPECT_EQ(L"changeable", LogText::Of(changeable));
    char* const pointer = changeable;
    EXPECT_EQ(L"changeable", LogText::Of(pointer));
}

TEST(LogText, ArraysWithoutATerminatorEndWithTheArray)
{
    const char narrow[3] = {'a', 'b', 'c'};
    const wchar_t wide[3] = {L'a', L'b', L'c'};
    EXPECT_EQ(L"abc", LogText::Of(narrow));
    EXPECT_EQ(L"abc", LogText::Of(wide));
}

TEST(LogText, NullPointersAreEmpty)
{
    EXPECT_EQ(L"", LogText::Of(static_cast<const char*>(nullptr)));
    EXPECT_EQ(L"", LogText::Of(static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(L"", LogText::Of(static_cast<char*>(nullptr)));
    EXPECT_EQ(L"", LogText::Of(static_cast<wchar_t*>(nullptr)));
}

TEST(LogText, OtherPointersAreAddresses)
{
    const int value = 0;
    ExpectAsStreamed(static_cast<const void*>(&value));
    ExpectAsStreamed(&value);
}

TEST(LogText, StandardStringsAreTakenAsTStrings)
{
    EXPECT_EQ(L"wide \u20AC", LogText::Of(std::wstring(L"wide \u20AC")));
    EXPECT_EQ(L"\u20AC", LogText::Of(std::string("\xE2\x82\xAC")));
    EXPECT_EQ(L"\u20AC", LogText::Of(TString<char>("\xE2\x82\xAC")));
    EXPECT_EQ(L"\u20AC", LogText::Of(std::string_view("\xE2\x82\xAC")));
    EXPECT_EQ(L"", LogText::Of(std::string_view()));
    EXPECT_EQ(L"", LogText::Of(std::string("\xE2\x82")));
    EXPECT_EQ(L"cut", LogText::Of(std::string("cut\0off", 7)));
}

TEST(LogText, AnyOtherStreamableTypeIsStreamedInTheClassicLocale)
{
    ExpectAsStreamed(Streamable{12345});
    EXPECT_EQ(L"<12345>", LogText::Of(Streamable{12345}));
}

TEST(LogText, AppendKeepsWhatIsThere)
{
    TString<wchar_t> text(L"kept ");
    LogText::Append(text, 12);
    LogText::Append(text, " narrow ");
    LogText::Append(text, TString<wchar_t>(L"wide"));
    EXPECT_EQ(L"kept 12 narrow wide", text);
}
