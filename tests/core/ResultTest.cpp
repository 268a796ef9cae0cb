// SPDX-License-Identifier: MIT
#include "toolkit/core/Result.h"

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using Toolkit::Errc;
using Toolkit::Failure;
using Toolkit::FailureError;
using Toolkit::Result;

namespace
{

struct Base
{
    virtual ~Base() = default;
};

struct Derived : Base
{
};

struct Wrapped
{
    explicit Wrapped(int value) : m_iValue(value) {}

    int m_iValue;
};

const Failure s_refused(Errc::Refused, "cannot open a: refused");

static_assert(std::is_convertible_v<int, Result<int>>);
static_assert(std::is_convertible_v<const char*, Result<std::string>>);
static_assert(std::is_convertible_v<Failure, Result<int>> && std::is_convertible_v<Failure, Result<void>>);
static_assert(!std::is_convertible_v<int, Result<Wrapped>> && std::is_constructible_v<Result<Wrapped>, int>);
static_assert(!std::is_default_constructible_v<Result<int>> && std::is_default_constructible_v<Result<void>>);
static_assert(!std::is_convertible_v<Result<int>, bool> && !std::is_convertible_v<Result<void>, bool>);
static_assert(!std::is_constructible_v<Result<Wrapped>, Result<int>>);
static_assert(!std::is_copy_constructible_v<Result<std::unique_ptr<int>>>);
static_assert(std::is_same_v<Result<int>::value_type, int> &&
              std::is_same_v<Result<void>::error_type, Failure>);

Result<std::unique_ptr<int>> MakeNumber(bool works)
{
    if (!works)
        return s_refused;
    return std::make_unique<int>(7);
}

Result<void> Do(bool works)
{
    if (!works)
        return Failure(Errc::Refused, "no");
    return {};
}

} // namespace

TEST(Result, HasAValueAfterASuccess)
{
    Result<std::string> text = "abc";

    ASSERT_TRUE(text);
    EXPECT_TRUE(text.has_value());
    EXPECT_EQ(*text, "abc");
    EXPECT_EQ(text->size(), 3U);
    EXPECT_EQ(text.value(), "abc");
    EXPECT_EQ(text.value_or("other"), "abc");
    *text += "d";
    EXPECT_EQ(std::as_const(text).value(), "abcd");
    EXPECT_EQ(*std::as_const(text), "abcd");
    EXPECT_EQ(std::as_const(text)->back(), 'd');
}

TEST(Result, HasAReasonAfterAFailure)
{
    const Result<std::string> text = s_refused;

    ASSERT_FALSE(text);
    EXPECT_FALSE(text.has_value());
    EXPECT_EQ(text.error().Code(), Errc::Refused);
    EXPECT_EQ(text.error().Message(), "cannot open a: refused");
    EXPECT_EQ(text.value_or("other"), "other");
}

TEST(Result, ThrowsItsFailureWhenAskedForTheValue)
{
    Result<int> number = s_refused;
    const Result<void> nothing = s_refused;

    EXPECT_THROW(number.value(), FailureError);
    EXPECT_THROW(std::as_const(number).value(), FailureError);
    EXPECT_THROW(std::move(number).value(), FailureError);
    try
    {
        nothing.value();
        FAIL();
    }
    catch (const std::system_error& error)
    {
        EXPECT_STREQ(error.what(), "cannot open a: refused");
        EXPECT_EQ(error.code(), Errc::Refused);
    }
}

TEST(Result, HoldsWhatCanOnlyBeMoved)
{
    Result<std::unique_ptr<int>> number = MakeNumber(true);
    ASSERT_TRUE(number);
    EXPECT_EQ(**number, 7);

    const std::unique_ptr<int> taken = *std::move(number);
    EXPECT_EQ(*taken, 7);
    EXPECT_EQ(*MakeNumber(true).value(), 7);
    EXPECT_EQ(MakeNumber(false).value_or(nullptr), nullptr);
    EXPECT_EQ(MakeNumber(false).error().Code(), Errc::Refused);
}

TEST(Result, KeepsTheValueOfATemporaryInALoop)
{
    const auto make = []() -> Result<std::vector<int>> {
        return std::vector<int>{1, 2, 3};
    };
    int sum = 0;
    for (const int each : *make())
        sum += each;
    EXPECT_EQ(sum, 6);
}

TEST(Result, ConvertsWithItsValue)
{
    const auto make = [](bool works) -> Result<std::shared_ptr<Derived>>
    {
        if (!works)
            return s_refused;
        return std::make_shared<Derived>();
    };
    const Result<std::shared_ptr<Base>> good = make(true);
    const Result<std::shared_ptr<Base>> bad = make(false);

    ASSERT_TRUE(good);
    EXPECT_NE(*good, nullptr);
    ASSERT_FALSE(bad);
    EXPECT_EQ(bad.error().Message(), s_refused.Message());
}

TEST(Result, HoldsAValueThatIsFalseOrMissing)
{
    const Result<bool> no = false;
    const Result<std::optional<int>> nothing = std::nullopt;
    const Result<std::optional<int>> number = 5;

    ASSERT_TRUE(no);
    EXPECT_FALSE(*no);
    ASSERT_TRUE(nothing);
    EXPECT_FALSE(nothing->has_value());
    ASSERT_TRUE(number);
    EXPECT_EQ(*number, 5);
}

TEST(Result, IsAssignedEitherWay)
{
    Result<std::string> result = "first";
    result = s_refused;
    EXPECT_FALSE(result);
    result = std::string("second");
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, "second");
    const Result<std::string> copy = result;
    EXPECT_EQ(*copy, "second");
}

TEST(Result, KeepsItsKindWhenItWasMovedFrom)
{
    Result<void> failed = Do(false);
    const Result<void> taken = std::move(failed);
    EXPECT_FALSE(failed); // The header says what it is.
    EXPECT_EQ(taken.error().Message(), "no");

    Result<std::string> text = s_refused;
    const Result<std::string> other = std::move(text);
    EXPECT_FALSE(text); // As above.
    EXPECT_EQ(other.error().Message(), s_refused.Message());
}

TEST(Result, TellsSuccessWithoutAValue)
{
    const Result<void> good = Do(true);
    ASSERT_TRUE(good);
    EXPECT_TRUE(good.has_value());
    *good;
    EXPECT_NO_THROW(good.value());
    EXPECT_EQ(Do(false).error().Code(), Errc::Refused);
}

TEST(ResultDeathTest, EndsTheProcessWithTheMessageWhenAFailureIsRead)
{
    Result<std::string> text = s_refused;
    const Result<void> nothing = s_refused;

    EXPECT_DEATH(static_cast<void>(*text), "cannot open a: refused");
    EXPECT_DEATH(static_cast<void>(text->size()), "cannot open a: refused");
    EXPECT_DEATH(static_cast<void>(*std::as_const(text)), "cannot open a: refused");
    EXPECT_DEATH(*nothing, "cannot open a: refused");
}

TEST(ResultDeathTest, EndsTheProcessWhenASuccessIsAskedForItsFailure)
{
    const Result<int> number = 1;
    const Result<void> nothing;

    EXPECT_DEATH(static_cast<void>(number.error()), "the failure of a success");
    EXPECT_DEATH(static_cast<void>(nothing.error()), "the failure of a success");
}
