// SPDX-License-Identifier: MIT
// What the library opens in a process that was started without standard streams.
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/FSStream.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/log/FileLogger.h"

using namespace Toolkit;
using ToolkitTest::ChildAnswer;
using ToolkitTest::ReadBytes;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

// Runs `work` in a child that has no standard streams; it must leave those numbers free.
testing::AssertionResult WithoutStandardStreams(const ToolkitTest::ChildWork& work)
{
    return ToolkitTest::InChild(
        [&]() -> ChildAnswer
        {
            for (int number = 0; number < 3; ++number)
                close(number);
            return work();
        });
}

std::string TakenNumbers()
{
    std::string taken;
    for (int number = 0; number < 3; ++number)
        if (fcntl(number, F_GETFD) != -1)
            taken += std::to_string(number) + " is open. ";
    return taken;
}

} // namespace

TEST(StandardDescriptors, StaysFreeWhileFilesAreOpen)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("archive"), std::string("PK\5\6") + std::string(18, '\0'));
    EXPECT_TRUE(WithoutStandardStreams(
        [&]
        {
            FFile file;
            const bool opened = file.Open(folder.Wide("file"), L"w");
            FSStream stream(folder.Wide("stream"), FSStream::ModeWrite);
            FSStream reader(folder.Wide("stream"), FSStream::ModeRead);
            ArchiveZip archive;
            archive.Open(folder.Wide("archive"));
            const bool whole = opened && stream.Write(7U) == StreamResult::Ok;
            return whole ? TakenNumbers() : std::string("not opened");
        }));
}

TEST(StandardDescriptors, NothingPrintedArrivesInAFile)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("text"), "one\n");
    EXPECT_TRUE(WithoutStandardStreams(
        [&]
        {
            FFile file;
            file.Open(folder.Wide("file"), L"w");
            FSStream stream(folder.Wide("stream"), FSStream::ModeWrite);
            TextFile text;
            const bool opened = text.Open(folder.Wide("text"));
            for (int number = 0; number < 3; ++number)
                static_cast<void>(write(number, "printed", 7) == 7);
            text.AddLine(L"two");
            return opened && text.Write();
        }));
    EXPECT_EQ("one\ntwo\n", ReadBytes(folder.Path("text")));
    EXPECT_EQ("", ReadBytes(folder.Path("file")));
    EXPECT_EQ("", ReadBytes(folder.Path("stream")));
}

TEST(StandardDescriptors, StayFreeWhileALoggerRuns)
{
    EXPECT_TRUE(WithoutStandardStreams(
        []
        {
            const std::string name = "toolkit-standard-descriptors-" + std::to_string(getpid());
            const std::string path = "/tmp/" + name + ".vxlog";
            FileLogger logger(LogSeverity::Info, UTF8::ToUNICODE(name), 1 << 20);
            const bool logs = ToolkitTest::WaitUntil([&] { return ToolkitTest::DescriptorOf(path) != -1; });
            const std::string taken = TakenNumbers();
            unlink(path.c_str());
            return logs ? taken : std::string("there is no log");
        }));
}

TEST(StandardDescriptors, StayFreeWhileAnEventPumpLives)
{
    EXPECT_TRUE(WithoutStandardStreams(
        []
        {
            const EventPump pump;
            return TakenNumbers();
        }));
}
