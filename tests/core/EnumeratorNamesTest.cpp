// SPDX-License-Identifier: MIT
#include "toolkit/Toolkit.h"

#include <type_traits>

#include <gtest/gtest.h>

// Names of a host. Each would be ambiguous below if the library had one of that name in its namespace.
namespace
{

enum class Host
{
    Value
};

const Host Error = Host::Value;
const Host Warning = Host::Value;
const Host Info = Host::Value;
const Host Debug = Host::Value;
const Host Verbose = Host::Value;
const Host Ok = Host::Value;
const Host Empty = Host::Value;
const Host Failed = Host::Value;
const Host NotOpen = Host::Value;
const Host ShortTransfer = Host::Value;
const Host LengthWriteFailed = Host::Value;
const Host LengthReadFailed = Host::Value;
const Host Files = Host::Value;
const Host Folders = Host::Value;
const Host All = Host::Value;
const Host ModeRead = Host::Value;
const Host PlatformUnix = Host::Value;
const Host EndianLittle = Host::Value;
const Host Default = Host::Value;

} // namespace

using namespace Toolkit;

TEST(EnumeratorNames, AreTheHostsAfterAUsingDirective)
{
    for (const Host value :
         {Error, Warning, Info, Debug, Verbose, Ok, Empty, Failed, NotOpen, ShortTransfer, LengthWriteFailed,
          LengthReadFailed, Files, Folders, All, ModeRead, PlatformUnix, EndianLittle, Default})
        EXPECT_EQ(Host::Value, value);
}

TEST(EnumeratorNames, AreReachedThroughTheirEnumeration)
{
    EXPECT_EQ(2U, LogSeverity::Info);
    EXPECT_EQ(2U, ::Toolkit::LogSeverity::Info);
    EXPECT_EQ(0x01000000U, StreamResult::Empty);
    EXPECT_EQ(3U, ArchiveEntriesFlags::All);
    EXPECT_EQ(3U, ArchiveEntriesFlags::ArchiveEntriesType::All);
}

TEST(EnumeratorNames, ConvertToNumbersWithoutACast)
{
    const unsigned int severity = LogSeverity::Debug;
    const unsigned int result = StreamResult::NotOpen;
    EXPECT_EQ(3U, severity);
    EXPECT_EQ(0x10000002U, result);
    EXPECT_TRUE((std::is_convertible_v<LogSeverity, unsigned int>));
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<StreamResult>, unsigned int>));
}

TEST(EnumeratorNames, LeaveTheErrorTestToBeFoundByItsArgument)
{
    const auto test = [](auto result) { return IsError(result); };
    EXPECT_TRUE(test(Toolkit::StreamResult::Failed));
    EXPECT_FALSE(Toolkit::IsError(Toolkit::StreamResult::Ok));
}
