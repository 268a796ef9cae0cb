// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/SystemCodes.h"

#include "toolkit/app/SystemInfo.h"

#include <gtest/gtest.h>

namespace SystemCodes = Toolkit::SystemCodes;
using Toolkit::SystemInfo;

TEST(SystemCodes, TranslatesOperatingSystemIds)
{
    const struct
    {
        unsigned int id;
        unsigned int platform;
    } rows[] = {
        {1, 2},   {2, 2},   {3, 2},    {4, 1},    {8, 1},    {60, 1},    {64, 3},         {128, 3},
        {256, 3}, {512, 3}, {1024, 3}, {2048, 3}, {4096, 3}, {8128, 3},  {0, 0},          {16, 0},
        {32, 0},  {5, 0},   {12, 0},   {192, 0},  {8192, 0}, {65536, 0}, {0xFFFFFFFF, 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(static_cast<unsigned int>(SystemCodes::PlatformOf(row.id)), row.platform) << row.id;
}

// As SystemInfo hands it on.
SystemInfo::Endian EndianOf(unsigned int endianness)
{
    return static_cast<SystemInfo::Endian>(SystemCodes::ByteOrderOf(endianness));
}

TEST(SystemCodes, TranslatesByteOrders)
{
    EXPECT_EQ(EndianOf(0), SystemInfo::EndianBig);
    EXPECT_EQ(EndianOf(1), SystemInfo::EndianLittle);
    EXPECT_EQ(EndianOf(2), SystemInfo::EndianMiddle);
    EXPECT_EQ(EndianOf(3), SystemInfo::EndianUnknown);
    EXPECT_EQ(EndianOf(0xFFFFFFFF), SystemInfo::EndianUnknown);
}

TEST(SystemCodes, CombinesVersionNumbers)
{
    EXPECT_EQ(SystemCodes::CombinedId(10, 4), 1040U);
    EXPECT_EQ(SystemCodes::CombinedId(10, 5), 1050U);
    EXPECT_EQ(SystemCodes::CombinedId(10, 10), 1100U);
    EXPECT_EQ(SystemCodes::CombinedId(11, 0), 1100U);
    EXPECT_EQ(SystemCodes::CombinedId(0, 0), 0U);
}

TEST(SystemCodes, ReadsTheReleaseOfTheKernel)
{
    const struct
    {
        const char* text;
        unsigned int major;
        unsigned int minor;
    } rows[] = {
        {"6.1.0-13-amd64", 6, 1},
        {"10.15", 10, 15},
        {"7", 7, 0},
        {"7-rc1", 7, 0},
        {"", 0, 0},
        {"x.1", 0, 0},
        {".1", 0, 0},
        {"7.", 7, 0},
        {"7.x", 7, 0},
        {"99999999999.1", 0, 1},
    };
    for (const auto& row : rows)
    {
        const SystemCodes::Release release = SystemCodes::ReleaseOf(row.text);
        EXPECT_EQ(release.m_uMajor, row.major) << row.text;
        EXPECT_EQ(release.m_uMinor, row.minor) << row.text;
    }
}

TEST(SystemCodes, KnowsTheKernelThatItIsBuiltFor)
{
    EXPECT_EQ(SystemCodes::SystemIdOf("Linux"), 64U);
    EXPECT_EQ(SystemCodes::SystemIdOf("linux"), 0U);
    EXPECT_EQ(SystemCodes::SystemIdOf(""), 0U);
}
