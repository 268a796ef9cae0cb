// SPDX-License-Identifier: MIT
// Who may read and write a text file that was written anew, and what else of it is kept.
#include "toolkit/files/TextFile.h"

#include <cstring>
#include <filesystem>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

using Toolkit::TextFile;
using ToolkitTest::ChildAnswer;
using ToolkitTest::ReadBytes;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

const char c_strAccess[] = "system.posix_acl_access";
const char c_strDefault[] = "system.posix_acl_default";
const unsigned int s_uNobody = 65534;
const unsigned int s_uStranger = 12345;

// An access control list in the kernel's form: the owner, a stranger, the group, the mask and the others.
std::string AccessList(unsigned int owner, unsigned int stranger, unsigned int group, unsigned int mask,
                       unsigned int others)
{
    std::string list("\2\0\0\0", 4);
    const auto add = [&list](unsigned int tag, unsigned int permissions, unsigned int id)
    {
        for (const unsigned int value : {tag, permissions})
            list += {static_cast<char>(value), '\0'};
        for (int i = 0; i < 4; ++i)
            list += static_cast<char>(id >> (8 * i));
    };
    const unsigned int none = 0xFFFFFFFF;
    add(0x01, owner, none);
    add(0x02, stranger, s_uStranger);
    add(0x04, group, none);
    add(0x10, mask, none);
    add(0x20, others, none);
    return list;
}

std::string Attribute(const std::string& path, const char* name)
{
    char value[256];
    const ssize_t size = getxattr(path.c_str(), name, value, sizeof value);
    return std::string(value, size > 0 ? static_cast<std::size_t>(size) : 0);
}

mode_t ModeOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(0, stat(path.c_str(), &status));
    return status.st_mode & 07777;
}

class TextFileRights : public testing::Test
{
protected:
    TextFileRights() : m_strPath(m_folder.Path("text"))
    {
        WriteBytes(m_strPath, "one\n");
        chmod(m_strPath.c_str(), 0600);
    }

    // False, and the test is skipped, where the file system keeps no such thing.
    bool Set(const std::string& path, const char* name, const std::string& value)
    {
        if (setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0)
            return true;
        [name] { GTEST_SKIP() << "not allowed: " << name; }();
        return false;
    }

    void WriteAnew()
    {
        TextFile file;
        ASSERT_TRUE(file.Open(m_folder.Wide("text")));
        file.AddLine(L"two");
        EXPECT_TRUE(file.Write());
        EXPECT_EQ("one\ntwo\n", ReadBytes(m_strPath));
    }

    const TemporaryFolder m_folder;
    const std::string m_strPath;
};

} // namespace

TEST_F(TextFileRights, KeepsTheAccessControlList)
{
    const std::string list = AccessList(6, 6, 0, 6, 0);
    if (!Set(m_strPath, c_strAccess, list))
        return;
    WriteAnew();
    EXPECT_EQ(list, Attribute(m_strPath, c_strAccess));
    EXPECT_EQ(0660U, ModeOf(m_strPath));
}

TEST_F(TextFileRights, KeepsExtendedAttributes)
{
    if (!Set(m_strPath, "user.note", std::string("a\0b", 3)) || !Set(m_strPath, "user.empty", ""))
        return;
    WriteAnew();
    EXPECT_EQ(std::string("a\0b", 3), Attribute(m_strPath, "user.note"));
    EXPECT_EQ(0, getxattr(m_strPath.c_str(), "user.empty", nullptr, 0));
}

TEST_F(TextFileRights, FoldersDefaultListDoesNotReachTheNewFile)
{
    if (!Set(m_folder.Path(), c_strDefault, AccessList(7, 7, 7, 7, 7)))
        return;
    for (const mode_t mode : {0600U, 0640U, 0644U})
    {
        WriteBytes(m_strPath, "one\n");
        removexattr(m_strPath.c_str(), c_strAccess);
        ASSERT_EQ(0, chmod(m_strPath.c_str(), mode));
        WriteAnew();
        EXPECT_EQ("", Attribute(m_strPath, c_strAccess));
        EXPECT_EQ(mode, ModeOf(m_strPath));
    }
}

TEST_F(TextFileRights, RemovedFileComesBackWithItsPermissions)
{
    TextFile file;
    ASSERT_TRUE(file.Open(m_folder.Wide("text")));
    std::filesystem::remove(m_strPath);
    EXPECT_TRUE(file.Write());
    EXPECT_EQ(0600U, ModeOf(m_strPath));
    if (!Set(m_folder.Path(), c_strDefault, AccessList(7, 7, 7, 7, 7)))
        return;
    std::filesystem::remove(m_strPath);
    EXPECT_TRUE(file.Write());
    EXPECT_EQ(0600U, ModeOf(m_strPath));
    EXPECT_EQ("", Attribute(m_strPath, c_strAccess));
}

TEST_F(TextFileRights, GroupThatCannotBeKeptGrantsNobodyMore)
{
    const struct
    {
        mode_t before;
        mode_t after;
    } rows[] = {{0660, 0600}, {0640, 0600}, {0664, 0644}, {0666, 0666}, {0606, 0600}, {02770, 0700}};
    ASSERT_EQ(0, chmod(m_folder.Path().c_str(), 0777));
    for (const auto& row : rows)
    {
        WriteBytes(m_strPath, "one\n");
        if (chown(m_strPath.c_str(), s_uNobody, s_uStranger) != 0)
            GTEST_SKIP() << "not allowed: another owner";
        ASSERT_EQ(0, chmod(m_strPath.c_str(), row.before));
        EXPECT_TRUE(ToolkitTest::AsNobody(
            [&]
            {
                WriteAnew();
                return !HasFailure();
            }));
        EXPECT_EQ(row.after, ModeOf(m_strPath)) << std::oct << row.before;
    }
}

TEST_F(TextFileRights, ListOfAGroupThatCannotBeKeptGrantsNobodyMore)
{
    ASSERT_EQ(0, chmod(m_folder.Path().c_str(), 0777));
    if (!Set(m_strPath, c_strAccess, AccessList(6, 4, 6, 6, 4)))
        return;
    if (chown(m_strPath.c_str(), s_uNobody, s_uStranger) != 0)
        GTEST_SKIP() << "not allowed: another owner";
    EXPECT_TRUE(ToolkitTest::AsNobody(
        [&]
        {
            WriteAnew();
            return !HasFailure();
        }));
    EXPECT_EQ(AccessList(6, 4, 4, 6, 4), Attribute(m_strPath, c_strAccess));
}

TEST_F(TextFileRights, FileThatIsMountedOnIsWrittenInPlace)
{
    WriteBytes(m_folder.Path("other"), "one\n");
    EXPECT_TRUE(ToolkitTest::InChild(
        [&]() -> ChildAnswer
        {
            if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0 ||
                mount(m_folder.Path("other").c_str(), m_strPath.c_str(), "none", MS_BIND, nullptr) != 0)
                return ToolkitTest::NotAllowed("a mount");
            WriteAnew();
            TextFile file;
            file.Open(m_folder.Wide("text"));
            file.Clear();
            file.AddLine(L"x");
            return file.Write() && ReadBytes(m_strPath) == "x\n" && !HasFailure();
        }));
    EXPECT_TRUE(IsSkipped() || ReadBytes(m_folder.Path("other")) == "x\n");
    EXPECT_EQ("one\n", ReadBytes(m_strPath));
}

namespace
{

// The number of a process that has ended.
pid_t EndedProcess()
{
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    waitpid(child, nullptr, 0);
    return child;
}

} // namespace

TEST_F(TextFileRights, RemovesWhatAKilledWriterLeft)
{
    const std::string left = m_folder.Path(".toolkit-" + std::to_string(EndedProcess()) + "-");
    WriteBytes(left + "1", "left behind");
    WriteBytes(left + "4294967295", "left behind");
    // What cannot be one, or is still being written.
    const std::string begin = m_folder.Path(".toolkit-");
    const std::vector<std::string> others = {
        left + "x",     left + "1x",   left,
        begin,          begin + "-1",  begin + "0-1",
        begin + "-1-1", begin + "x-1", begin + std::to_string(getppid()) + "-1"};
    for (const std::string& other : others)
        WriteBytes(other, "of others");
    std::filesystem::create_symlink("text", left + "2");
    ASSERT_EQ(0, mkfifo((left + "3").c_str(), 0600));
    WriteBytes(left + "5", "of a writer in another container");
    const int lock = open((left + "5").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(0, flock(lock, LOCK_EX | LOCK_NB));
    WriteAnew();
    EXPECT_FALSE(std::filesystem::exists(left + "1"));
    EXPECT_FALSE(std::filesystem::exists(left + "4294967295"));
    for (const std::string& other : others)
        EXPECT_EQ("of others", ReadBytes(other)) << other;
    EXPECT_TRUE(std::filesystem::is_symlink(left + "2"));
    EXPECT_TRUE(std::filesystem::is_fifo(left + "3"));
    EXPECT_TRUE(std::filesystem::exists(left + "5"));
    close(lock);
}

// The number is another one's by now: a zombie's, a thread's, a later process's.
TEST_F(TextFileRights, RemovesWhatAKilledWriterLeftWhoseNumberWasGivenAgain)
{
    const pid_t zombie = fork();
    if (zombie == 0)
        _exit(0);
    siginfo_t info = {};
    ASSERT_EQ(0, waitid(P_PID, static_cast<id_t>(zombie), &info, WEXITED | WNOWAIT));
    std::promise<pid_t> number;
    std::promise<void> end;
    std::thread other(
        [&]
        {
            number.set_value(gettid());
            end.get_future().wait();
        });
    const auto pathOf = [this](pid_t process)
    { return m_folder.Path(".toolkit-" + std::to_string(process) + "-1"); };
    const std::string paths[] = {pathOf(zombie), pathOf(number.get_future().get()), pathOf(getpid())};
    for (const std::string& path : paths)
        WriteBytes(path, "left behind");
    const timespec longAgo[] = {{1, 0}, {1, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, paths[2].c_str(), longAgo, 0));
    WriteAnew();
    for (const std::string& path : paths)
        EXPECT_FALSE(std::filesystem::exists(path)) << path;
    end.set_value();
    other.join();
    waitpid(zombie, nullptr, 0);
}

TEST_F(TextFileRights, RemovesWhatAKilledWriterLeftInALargeFolder)
{
    for (int i = 0; i < 1000; ++i)
        WriteBytes(m_folder.Path(std::to_string(i)), "");
    TextFile file;
    ASSERT_TRUE(file.Open(m_folder.Wide("text")));
    EXPECT_TRUE(file.Write());
    const std::string left = m_folder.Path(".toolkit-" + std::to_string(EndedProcess()) + "-1");
    WriteBytes(left, "left behind");
    int writes = 0;
    while (std::filesystem::exists(left) && ++writes < 10)
        EXPECT_TRUE(file.Write());
    EXPECT_FALSE(std::filesystem::exists(left));
}
