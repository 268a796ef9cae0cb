// SPDX-License-Identifier: MIT
// What the library opens in a process that was started without standard streams.
#include <chrono>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/app/Instance.h"
#include "toolkit/app/Process.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/ArchiveZip.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/FSStream.h"
#include "toolkit/files/Settings.h"
#include "toolkit/files/TextFile.h"
#include "toolkit/files/WholeFile.h"
#include "toolkit/files/ZipReader.h"
#include "toolkit/files/ZipWriter.h"
#include "toolkit/log/FileLogger.h"
#include "toolkit/log/RunLog.h"

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

// What has a descriptor for as long as it lives, of new code.
TEST(StandardDescriptors, StayFreeWhileObjectsOfNewCodeLive)
{
    const TemporaryFolder folder;
    const ToolkitTest::ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder.Path().c_str());
    EXPECT_TRUE(WithoutStandardStreams(
        [&]() -> ChildAnswer
        {
            Result<ZipWriter> writer = ZipWriter::Create(folder.Path("archive"));
            if (!writer || !writer->Add("name", "bytes") || !writer->Finish())
                return "no archive";
            Result<ZipWriter> other = ZipWriter::Create(folder.Path("other"));
            const Result<ZipReader> reader = ZipReader::Open(folder.Path("archive"));
            const Result<std::shared_ptr<RunLog>> log =
                RunLog::Open(RunLogOptions("run").Folder(folder.Path()));
            Result<Instance> first = Instance::Claim("org.example.standard");
            if (!other || !reader || !log || !first || !first->IsFirst())
                return "not opened";
            first->Serve([](const Instance::Command&) { return Instance::Answer(0, "done"); });
            Result<Instance> second = Instance::Claim("org.example.standard");
            const auto answer = second->Ask({"x"}, std::chrono::seconds(60));
            Result<Process> child = Process::Start({"cat"});
            if (!answer || answer->Text() != "done" || !child || !child->Write("a\n"))
                return "no answer";
            const auto line = child->ReadLine(std::chrono::seconds(60));
            return line ? TakenNumbers() : std::string("no line");
        }));
}

TEST(StandardDescriptors, StayFreeAfterNewCodeHasReadWrittenAndRun)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("ini"), "[a]\nb=c\n");
    EXPECT_TRUE(WithoutStandardStreams(
        [&]
        {
            Result<Settings> settings = Settings::Load(folder.Path("ini"));
            bool whole = settings && settings->Set("a", "b", 7) && settings->Save() &&
                         WriteFile(folder.Path("file"), "bytes") && *ReadFile(folder.Path("file")) == "bytes";
            const Result<ProcessResult> result = Process::Run({"cat"}, ProcessOptions().Input("input"));
            whole = whole && result && result->Output() == "input" && result->Errors().empty();
            return whole ? TakenNumbers() : std::string("not done");
        }));
    EXPECT_EQ("[a]\nb=7\n", ReadBytes(folder.Path("ini")));
    EXPECT_EQ("bytes", ReadBytes(folder.Path("file")));
}
