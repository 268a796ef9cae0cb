// SPDX-License-Identifier: MIT
#include "toolkit/core/Failure.h"

#include <string>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using Toolkit::Errc;
using Toolkit::Failure;
using Toolkit::FailureError;

namespace
{

const Failure s_denied(std::make_error_code(std::errc::permission_denied),
                       "cannot read a: Permission denied");

static_assert(std::is_nothrow_copy_constructible_v<Failure> && std::is_nothrow_move_constructible_v<Failure>);
static_assert(std::is_nothrow_copy_constructible_v<FailureError>);
static_assert(!std::is_default_constructible_v<Failure>);
static_assert(sizeof(Failure) == sizeof(void*));

} // namespace

TEST(Failure, HasItsCodeAndItsMessage)
{
    EXPECT_EQ(s_denied.Code(), std::errc::permission_denied);
    EXPECT_EQ(s_denied.Message(), "cannot read a: Permission denied");
}

TEST(Failure, TakesACodeOfTheLibrary)
{
    const Failure failure(Errc::Malformed, "cannot read a.ini: line 3 has no name");

    EXPECT_TRUE(failure.Code() == Errc::Malformed);
    EXPECT_TRUE(failure.Code() != Errc::Refused);
    EXPECT_STREQ(failure.Code().category().name(), "toolkit");
    EXPECT_EQ(failure.Message(), "cannot read a.ini: line 3 has no name");
}

TEST(Failure, HasAMessageForEachCodeOfTheLibrary)
{
    const std::pair<Errc, const char*> rows[] = {
        {Errc::ChangedByOther, "changed by another program"},
        {Errc::LimitReached, "a limit was reached"},
        {Errc::WrongInterface, "made for another interface"},
        {Errc::NotAnswered, "not answered"},
        {Errc::Malformed, "malformed"},
        {Errc::Refused, "refused"},
        {static_cast<Errc>(77), "unknown failure 77"},
    };
    for (const auto& [code, message] : rows)
        EXPECT_EQ(make_error_code(code).message(), message);
}

TEST(Failure, KeepsItsCopiesIndependent)
{
    Failure copy(s_denied);
    Failure other(Errc::Refused, "no");
    other = copy;
    copy = Failure(Errc::LimitReached, "too much");

    EXPECT_EQ(other.Message(), s_denied.Message());
    EXPECT_EQ(copy.Message(), "too much");
    const Failure& itself = copy;
    copy = itself;
    EXPECT_EQ(copy.Code(), Errc::LimitReached);
}

TEST(Failure, IsEmptyOnceItWasMovedFrom)
{
    Failure source(Errc::Refused, "no");
    const Failure target(std::move(source));

    EXPECT_EQ(target.Message(), "no");
    EXPECT_EQ(source.Message(), ""); // The header says what it is.
    EXPECT_FALSE(source.Code());
    const Failure copy(source);
    EXPECT_EQ(copy.Message(), "");
    source = s_denied;
    EXPECT_EQ(source.Message(), s_denied.Message());
}

TEST(Failure, IsCopiedByManyThreadsAtOnce)
{
    const Failure shared(Errc::Refused, "no");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [&shared]
            {
                for (int round = 0; round < 1000; ++round)
                {
                    Failure copy(shared);
                    copy = Failure(shared);
                    ASSERT_EQ(copy.Message(), "no");
                }
            });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(FailureError, IsASystemErrorThatSaysTheMessage)
{
    try
    {
        throw FailureError(s_denied);
    }
    catch (const std::system_error& error)
    {
        EXPECT_STREQ(error.what(), "cannot read a: Permission denied");
        EXPECT_EQ(error.code(), std::errc::permission_denied);
    }
}

TEST(FailureError, OutlivesItsFailure)
{
    FailureError error(Failure(Errc::Refused, "no"));
    error = FailureError(Failure(Errc::Malformed, "bad"));
    const FailureError copy(error);

    EXPECT_STREQ(copy.what(), "bad");
    EXPECT_EQ(copy.Error().Code(), Errc::Malformed);
}
