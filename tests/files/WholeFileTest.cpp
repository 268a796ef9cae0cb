// SPDX-License-Identifier: MIT
#include "toolkit/files/WholeFile.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/EndChild.h"
#include "tests/support/FolderEntries.h"
#include "tests/support/InChild.h"
#include "tests/support/Resources.h"
#include "tests/support/TemporaryFolder.h"

using Toolkit::Errc;
using Toolkit::Failure;
using Toolkit::ReadFile;
using Toolkit::Result;
using Toolkit::WriteFile;
using ToolkitTest::ChildAnswer;
using ToolkitTest::CountEntries;
using ToolkitTest::ReadBytes;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

std::string ToRead(const std::string& path)
{
    const Result<std::string> text = ReadFile(path);
    return text ? "read" : text.error().Message();
}

std::string ToWrite(const std::string& path, const std::string& content = "new")
{
    const Result<void> done = WriteFile(path, content);
    return done ? "written" : done.error().Message();
}

// What a child reports whose two failures are not as they should be.
ChildAnswer Compare(const std::string& expected, const std::string& got)
{
    return expected == got ? std::string() : "got: " + got;
}

} // namespace

TEST(ReadFile, ReturnsEveryByte)
{
    const TemporaryFolder folder;
    for (const std::size_t size : {0U, 1U, 4095U, 65536U, 1000003U})
    {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<char>(i * 7);
        WriteBytes(folder.Path("file"), bytes);
        const Result<std::string> read = ReadFile(folder.Path("file"));
        ASSERT_TRUE(read);
        EXPECT_TRUE(bytes == *read) << size;
    }
}

TEST(ReadFile, FollowsLinks)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "text");
    std::filesystem::create_symlink("file", folder.Path("link"));
    EXPECT_EQ("text", ReadFile(folder.Path("link")).value_or("none"));
}

TEST(ReadFile, ReadsAFileWhoseLengthTheSystemDoesNotTell)
{
    EXPECT_NE(std::string::npos, ReadFile("/proc/self/status").value_or("").find("Pid:"));
}

TEST(ReadFile, ReadsANameThatIsNoUtf8)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("\xFF\xFE"), "text");
    EXPECT_EQ("text", ReadFile(folder.Path("\xFF\xFE")).value_or("none"));
    EXPECT_TRUE(WriteFile(folder.Path("\xFF\xFD"), "more"));
    EXPECT_EQ("more", ReadBytes(folder.Path("\xFF\xFD")));
}

TEST(ReadFile, HasALargestSize)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "12345");
    EXPECT_EQ("12345", ReadFile(folder.Path("file"), 5).value_or("none"));
    const Result<std::string> read = ReadFile(folder.Path("file"), 4);
    ASSERT_FALSE(read);
    EXPECT_EQ(Errc::LimitReached, read.error().Code());
    EXPECT_EQ("cannot read " + folder.Path("file") + ": it is longer than 4 bytes", read.error().Message());
    // One that tells no length.
    EXPECT_EQ(Errc::LimitReached, ReadFile("/proc/self/status", 4).error().Code());
    EXPECT_EQ("", ReadFile(folder.Path("file"), 0).value_or(""));
    ASSERT_EQ(0, truncate(folder.Path("file").c_str(), off_t{1} << 40));
    EXPECT_EQ(Errc::LimitReached, ReadFile(folder.Path("file")).error().Code());
}

TEST(ReadFile, TakesNoFifoAndNoDevice)
{
    const TemporaryFolder folder;
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    for (const std::string& path : {folder.Path("fifo"), std::string("/dev/zero"), std::string("/dev/ptmx")})
    {
        const Result<std::string> read = ReadFile(path);
        ASSERT_FALSE(read) << path;
        EXPECT_EQ(Errc::Refused, read.error().Code());
        EXPECT_EQ("cannot read " + path + ": it is no regular file", read.error().Message());
    }
}

TEST(ReadFile, SaysWhyItCannot)
{
    const TemporaryFolder folder;
    std::filesystem::create_symlink("loop", folder.Path("loop"));
    WriteBytes(folder.Path("file"), "text");
    const std::string name(300, 'n');
    const struct
    {
        std::string name;
        std::errc code;
        std::string reason;
    } rows[] = {
        {"missing", std::errc::no_such_file_or_directory, "No such file or directory"},
        {"missing/file", std::errc::no_such_file_or_directory, "No such file or directory"},
        {"file/file", std::errc::not_a_directory, "Not a directory"},
        {"", std::errc::is_a_directory, "Is a directory"},
        {"loop", std::errc::too_many_symbolic_link_levels, "Too many levels of symbolic links"},
        {name, std::errc::filename_too_long, "File name too long"},
        {std::string("file\0x", 6), std::errc::invalid_argument, "Invalid argument"},
    };
    for (const auto& row : rows)
    {
        const std::string path = folder.Path(row.name);
        const Result<std::string> read = ReadFile(path);
        ASSERT_FALSE(read) << path;
        EXPECT_EQ(row.code, read.error().Code());
        EXPECT_EQ("cannot read " + path + ": " + row.reason, read.error().Message());
    }
    EXPECT_EQ(std::errc::no_such_file_or_directory, ReadFile("").error().Code());
}

TEST(ReadFile, SaysThatPermissionIsDenied)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("x.ini"), "text");
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0755));
    ASSERT_EQ(0, chmod(folder.Path("x.ini").c_str(), 0));
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]
        {
            return Compare("cannot read " + folder.Path("x.ini") + ": Permission denied",
                           ToRead(folder.Path("x.ini")));
        }));
}

TEST(ReadFile, SaysThatNoDescriptorIsLeft)
{
    EXPECT_TRUE(ToolkitTest::InChild(
        []
        {
            // A sanitizer that meets a type for the first time looks at it through a pipe: let it be now.
            if (ReadFile("").error().Code() == std::errc::too_many_files_open)
                return ChildAnswer("too early");
            rlimit limit = {3, 3};
            setrlimit(RLIMIT_NOFILE, &limit);
            const Result<std::string> read = ReadFile("/etc/passwd");
            return !read && read.error().Code() == std::errc::too_many_files_open
                       ? Compare("cannot read /etc/passwd: Too many open files", read.error().Message())
                       : ChildAnswer("another code");
        }));
}

TEST(WriteFile, MakesAFileWithItsFolders)
{
    const TemporaryFolder folder;
    const mode_t before = umask(027);
    const Result<void> done = WriteFile(folder.Path("a/b/c/file"), std::string("a\0b", 3));
    umask(before);
    ASSERT_TRUE(done) << done.error().Message();
    EXPECT_EQ(std::string("a\0b", 3), ReadBytes(folder.Path("a/b/c/file")));
    struct stat status = {};
    ASSERT_EQ(0, stat(folder.Path("a/b/c/file").c_str(), &status));
    EXPECT_EQ(0640U, status.st_mode & 07777);
    EXPECT_EQ(1U, CountEntries(folder.Path("a/b/c")));
    for (const char* const made : {"a", "a/b", "a/b/c"})
    {
        ASSERT_EQ(0, stat(folder.Path(made).c_str(), &status));
        EXPECT_EQ(0700U, status.st_mode & 07777) << made;
    }
}

TEST(WriteFile, ReplacesTheContentAndKeepsThePermissions)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "a long old content");
    ASSERT_EQ(0, chmod(folder.Path("file").c_str(), 0604));
    EXPECT_TRUE(WriteFile(folder.Path("file"), "new"));
    EXPECT_EQ("new", ReadBytes(folder.Path("file")));
    EXPECT_TRUE(WriteFile(folder.Path("file"), ""));
    EXPECT_EQ("", ReadBytes(folder.Path("file")));
    struct stat status = {};
    ASSERT_EQ(0, stat(folder.Path("file").c_str(), &status));
    EXPECT_EQ(0604U, status.st_mode & 07777);
    EXPECT_EQ(1U, CountEntries(folder.Path()));
}

TEST(WriteFile, FollowsLinks)
{
    const TemporaryFolder folder;
    const TemporaryFolder other;
    WriteBytes(other.Path("file"), "old");
    std::filesystem::create_symlink(other.Path("file"), folder.Path("link"));
    std::filesystem::create_symlink("link", folder.Path("second"));
    std::filesystem::create_symlink(other.Path("missing"), folder.Path("dangling"));
    EXPECT_EQ("written", ToWrite(folder.Path("second")));
    EXPECT_EQ("new", ReadBytes(other.Path("file")));
    EXPECT_EQ("written", ToWrite(folder.Path("dangling")));
    EXPECT_EQ("new", ReadBytes(other.Path("missing")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("second")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("dangling")));
}

TEST(WriteFile, WritesInTheWorkingFolder)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::InChild(
        [&]
        {
            std::filesystem::current_path(folder.Path());
            return WriteFile("file", "1").has_value() && WriteFile("./file", "2").has_value() &&
                   WriteFile("a/file", "3").has_value();
        }));
    EXPECT_EQ("2", ReadBytes(folder.Path("file")));
    EXPECT_EQ("3", ReadBytes(folder.Path("a/file")));
}

TEST(WriteFile, SaysWhyItCannot)
{
    const TemporaryFolder folder;
    std::filesystem::create_symlink("loop", folder.Path("loop"));
    WriteBytes(folder.Path("file"), "text");
    const std::string name(300, 'n');
    const struct
    {
        std::string name;
        std::errc code;
        std::string message;
    } rows[] = {
        {"", std::errc::is_a_directory, "cannot write @: Is a directory"},
        {"new/", std::errc::is_a_directory, "cannot write @: Is a directory"},
        {"file/file", std::errc::not_a_directory, "cannot write @: Not a directory"},
        {"loop", std::errc::too_many_symbolic_link_levels,
         "cannot write @: Too many levels of symbolic links"},
        {name, std::errc::filename_too_long, "cannot write @: File name too long"},
        {std::string("file\0x", 6), std::errc::invalid_argument, "cannot write @: Invalid argument"},
    };
    for (const auto& row : rows)
    {
        const std::string path = folder.Path(row.name);
        const Result<void> done = WriteFile(path, "new");
        ASSERT_FALSE(done) << path;
        EXPECT_EQ(row.code, done.error().Code()) << path;
        std::string message = row.message;
        EXPECT_EQ(message.replace(message.find('@'), 1, path), done.error().Message());
    }
    EXPECT_EQ(std::errc::no_such_file_or_directory, WriteFile("", "new").error().Code());
    EXPECT_EQ(2U, CountEntries(folder.Path()));
    EXPECT_EQ("text", ReadBytes(folder.Path("file")));
}

TEST(WriteFile, TakesNoFifoAndNoDevice)
{
    const TemporaryFolder folder;
    ASSERT_EQ(0, mkfifo(folder.Path("fifo").c_str(), 0600));
    for (const std::string& path : {folder.Path("fifo"), std::string("/dev/null"), std::string("/dev/ptmx")})
    {
        const Result<void> done = WriteFile(path, "new");
        ASSERT_FALSE(done) << path;
        EXPECT_EQ(Errc::Refused, done.error().Code());
        EXPECT_EQ("cannot write " + path + ": it is no regular file", done.error().Message());
    }
}

TEST(WriteFile, SaysThatPermissionIsDenied)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "text");
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0555));
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]
        {
            return Compare("cannot write " + folder.Path("file") + ": Permission denied",
                           ToWrite(folder.Path("file")));
        }));
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]
        {
            return Compare("cannot make the folder " + folder.Path("a/b") + ": Permission denied",
                           ToWrite(folder.Path("a/b/file")));
        }));
    EXPECT_EQ("text", ReadBytes(folder.Path("file")));
    EXPECT_EQ(1U, CountEntries(folder.Path()));
}

TEST(WriteFile, SaysThatTheDiskIsFull)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(
        folder.Path(), 64,
        [&]() -> ChildAnswer
        {
            const std::string path = folder.Path("file");
            if (ToWrite(path, "old") != "written")
                return "the old content";
            const Result<void> done = WriteFile(path, std::string(100000, 'x'));
            if (done || done.error().Code() != std::errc::no_space_on_device ||
                done.error().Message() != "cannot write " + path + ": No space left on device")
                return "another answer";
            return ReadBytes(path) == "old" && CountEntries(folder.Path()) == 1;
        }));
}

TEST(WriteFile, SaysThatTheDiskIsReadOnly)
{
    const TemporaryFolder folder;
    EXPECT_TRUE(ToolkitTest::OnSmallDisk(
        folder.Path(), 64,
        [&]() -> ChildAnswer
        {
            const std::string path = folder.Path("file");
            if (ToWrite(path, "old") != "written" || !ToolkitTest::RemountSmallDisk(folder.Path(), true))
                return "no old content";
            for (const std::string& name : {path, folder.Path("other")})
            {
                const Result<void> done = WriteFile(name, "new");
                if (done || done.error().Code() != std::errc::read_only_file_system ||
                    done.error().Message() != "cannot write " + name + ": Read-only file system")
                    return "another answer";
            }
            return ReadBytes(path) == "old";
        }));
}

TEST(WriteFile, SaysThatNoDescriptorIsLeft)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "old");
    for (const int left : {0, 1, 2})
        EXPECT_TRUE(ToolkitTest::InChild(
            [&]
            {
                if (ToWrite(folder.Path("file"), "old") != "written" ||
                    WriteFile("", "").error().Code() == std::errc::too_many_files_open)
                    return ChildAnswer("too early");
                int last = 0;
                while (last < 100)
                    last = dup(0);
                for (int i = 0; i < left; ++i)
                    close(last - i);
                const rlim_t most = static_cast<rlim_t>(last) + 1;
                const rlimit limit = {most, most};
                setrlimit(RLIMIT_NOFILE, &limit);
                const Result<void> done = WriteFile(folder.Path("file"), "new");
                if (done || done.error().Code() != std::errc::too_many_files_open)
                    return ChildAnswer("another answer");
                return Compare("cannot write " + folder.Path("file") + ": Too many open files",
                               done.error().Message());
            }))
            << left;
    EXPECT_EQ("old", ReadBytes(folder.Path("file")));
    EXPECT_EQ(1U, CountEntries(folder.Path()));
}

TEST(WriteFile, SeveralAtOnceLeaveTheContentOfOne)
{
    const TemporaryFolder folder;
    std::vector<std::thread> writers;
    for (char letter = 'a'; letter < 'e'; ++letter)
        writers.emplace_back(
            [&, letter]
            {
                for (int i = 0; i < 25; ++i)
                {
                    const Result<void> done = WriteFile(folder.Path("file"), std::string(50000, letter));
                    EXPECT_TRUE(done) << done.error().Message();
                }
            });
    for (int i = 0; i < 100; ++i)
    {
        const Result<std::string> read = ReadFile(folder.Path("file"));
        EXPECT_TRUE(!read || std::string(50000, read->front()) == *read);
    }
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(1U, CountEntries(folder.Path()));
}

TEST(WriteFile, IsNoAccessThatTheFolderNotes)
{
    const TemporaryFolder folder;
    const std::string path = folder.Path("file");
    WriteBytes(path, "old");
    // The system notes an access when it is a day old, or older than the last change.
    const timespec longAgo[] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, folder.Path().c_str(), longAgo, 0));
    EXPECT_EQ("written", ToWrite(path));
    struct stat status = {};
    ASSERT_EQ(0, stat(folder.Path().c_str(), &status));
    EXPECT_EQ(1000000000, status.st_atim.tv_sec);
    EXPECT_NE(1000000000, status.st_mtim.tv_sec);
}

// Whose folder it is not may not ask for that.
TEST(WriteFile, RemovesWhatAKilledWriterLeftInAnothersFolder)
{
    const TemporaryFolder folder;
    const pid_t ended = fork();
    if (ended == 0)
        _exit(0);
    ASSERT_EQ(ended, waitpid(ended, nullptr, 0));
    const std::string left = folder.Path(".toolkit-" + std::to_string(ended) + "-1");
    WriteBytes(left, "left behind");
    ASSERT_EQ(0, chmod(folder.Path().c_str(), 0777));
    EXPECT_TRUE(ToolkitTest::AsNobody([&] { return Compare("written", ToWrite(folder.Path("file"))); }));
    EXPECT_FALSE(std::filesystem::exists(left));
    EXPECT_EQ("new", ReadBytes(folder.Path("file")));
}

TEST(WriteFile, HoldsNoDescriptor)
{
    const TemporaryFolder folder;
    const long before = ToolkitTest::OpenDescriptors();
    ToWrite(folder.Path("file"));
    ToWrite(folder.Path("a/file"));
    ToWrite(folder.Path());
    ToRead(folder.Path("file"));
    ToRead(folder.Path("missing"));
    EXPECT_EQ(before, ToolkitTest::OpenDescriptors());
}

// As often as TOOLKIT_KILLS says: the content is the old or the new one, and nothing is left behind.
TEST(WriteFile, KilledProcessLeavesTheOldContentOrTheNew)
{
    const char* const often = std::getenv("TOOLKIT_KILLS");
    const int kills = often != nullptr ? std::atoi(often) : 40;
    const TemporaryFolder folder;
    const std::string path = folder.Path("file");
    const std::string contents[] = {std::string(200000, 'a'), std::string(300000, 'b')};
    std::mt19937 random(7);
    ASSERT_TRUE(WriteFile(path, contents[0]));
    for (int kill = 0; kill < kills; ++kill)
    {
        const pid_t child = fork();
        if (child == 0)
            for (int i = 0;; ++i)
                if (!WriteFile(path, contents[i % 2]))
                    ToolkitTest::EndChild(1);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        ASSERT_TRUE(WIFSIGNALED(status));
        const std::string left = ReadBytes(path);
        ASSERT_TRUE(left == contents[0] || left == contents[1]) << left.size();
    }
    EXPECT_TRUE(WriteFile(path, contents[0]));
    EXPECT_EQ(1U, CountEntries(folder.Path()));
}
