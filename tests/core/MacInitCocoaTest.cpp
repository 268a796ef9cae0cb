// SPDX-License-Identifier: MIT
#include "toolkit/core/MacInitCocoa.h"

#include <gtest/gtest.h>

TEST(MacInitCocoa, AnswersFalseWithoutTheDesktop)
{
    EXPECT_FALSE(MacInitCocoa());
}
