// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/FolderLock.h"

#include <csignal>
#include <filesystem>
#include <optional>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

using Toolkit::FolderLock;
using ToolkitTest::TemporaryFolder;

namespace
{

const std::chrono::milliseconds s_atOnce(0);

} // namespace

TEST(FolderLock, IsHeldByOneAtATime)
{
    const TemporaryFolder folder;
    std::optional<FolderLock> lock(std::in_place, folder.Path("file"), s_atOnce);
    EXPECT_FALSE(lock->IsBusy());
    EXPECT_TRUE(FolderLock(folder.Path("other"), s_atOnce).IsBusy());
    lock.reset();
    EXPECT_FALSE(FolderLock(folder.Path("other"), s_atOnce).IsBusy());
}

TEST(FolderLock, FollowsTheLinkToTheFile)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.Path("a"));
    ToolkitTest::WriteBytes(folder.Path("a/file"), "");
    std::filesystem::create_symlink("a/file", folder.Path("link"));
    const FolderLock lock(folder.Path("link"), s_atOnce);
    EXPECT_TRUE(FolderLock(folder.Path("a/file"), s_atOnce).IsBusy());
    EXPECT_FALSE(FolderLock(folder.Path("file"), s_atOnce).IsBusy());
}

TEST(FolderLock, MissingFolderIsNoHindrance)
{
    EXPECT_FALSE(FolderLock("/nowhere/at/all", s_atOnce).IsBusy());
}

TEST(FolderLock, IsNotKeptByAForkedChild)
{
    const TemporaryFolder folder;
    int ready[2];
    ASSERT_EQ(0, pipe2(ready, O_CLOEXEC));
    pid_t child = -1;
    {
        const FolderLock lock(folder.Path("file"), s_atOnce);
        child = fork();
        if (child == 0)
        {
            const char byte = 'r';
            static_cast<void>(write(ready[1], &byte, 1) == 1);
            pause();
            _exit(0);
        }
        char byte = 0;
        EXPECT_EQ(1, read(ready[0], &byte, 1));
    }
    EXPECT_FALSE(FolderLock(folder.Path("file"), s_atOnce).IsBusy());
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
}
