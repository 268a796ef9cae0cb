// SPDX-License-Identifier: MIT
#include "toolkit/core/MacAutoreleasePool.h"

#include <type_traits>

#include <gtest/gtest.h>

TEST(MacAutoreleasePool, IsAGuardThatNests)
{
    const MacAutoreleasePool outer;
    {
        const MacAutoreleasePool inner;
        EXPECT_NE(&outer, &inner);
    }
    EXPECT_FALSE(std::is_copy_constructible_v<MacAutoreleasePool>);
    EXPECT_FALSE(std::is_copy_assignable_v<MacAutoreleasePool>);
}
