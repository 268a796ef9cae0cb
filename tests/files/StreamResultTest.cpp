// SPDX-License-Identifier: MIT
#include "toolkit/files/StreamResult.h"

#include <gtest/gtest.h>

using Toolkit::IsError;
using Toolkit::StreamResult;

TEST(StreamResult, ValuesAreFixed)
{
    EXPECT_EQ(static_cast<unsigned int>(StreamResult::Ok), 0x00000000U);
    EXPECT_EQ(static_cast<unsigned int>(StreamResult::Empty), 0x01000000U);
    EXPECT_EQ(static_cast<unsigned int>(StreamResult::Failed), 0x10000000U);
    EXPECT_EQ(static_cast<unsigned int>(StreamResult::NotOpen), 0x10000002U);
    EXPECT_EQ(static_cast<unsigned int>(StreamResult::ShortTransfer), 0x10000003U);
    EXPECT_EQ(static_cast<unsigned int>(StreamResult::LengthWriteFailed), 0x10000005U);
    EXPECT_EQ(static_cast<unsigned int>(StreamResult::LengthReadFailed), 0x10000006U);
}

TEST(StreamResult, OnlyTheErrorBitMakesAnError)
{
    EXPECT_FALSE(IsError(StreamResult::Ok));
    EXPECT_FALSE(IsError(StreamResult::Empty));
    for (const StreamResult result :
         {StreamResult::Failed, StreamResult::NotOpen, StreamResult::ShortTransfer,
          StreamResult::LengthWriteFailed, StreamResult::LengthReadFailed})
        EXPECT_TRUE(IsError(result)) << result;
}
