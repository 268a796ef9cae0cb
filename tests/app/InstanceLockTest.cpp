// SPDX-License-Identifier: MIT
// Who is the first instance when locks are left behind, and when many come and go at once.

#include <atomic>
#include <csignal>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/ForkedCopy.h"
#include "tests/support/Rounds.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/SingleApplicationInstance.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::PathManager;
using Toolkit::SingleApplicationInstance;
using Toolkit::smart_ptr;
using Toolkit::UTF8;
using ToolkitTest::ChildAnswer;
using ToolkitTest::ForkedCopy;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TemporaryFolder;

namespace
{

// Shared with the children.
struct Shared
{
    std::atomic<int> m_iFirsts{0};
    std::atomic<int> m_iOverlaps{0};
    std::atomic<int> m_iThread{0};
};

class InstanceLock : public testing::Test
{
protected:
    InstanceLock()
        : m_pShared(new (mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1,
                              0)) Shared)
    {
        PathManager::s_pInstance = new smart_ptr<PathManager>(new PathManager);
    }
    ~InstanceLock() override
    {
        delete PathManager::s_pInstance;
        PathManager::s_pInstance = nullptr;
        munmap(m_pShared, sizeof(Shared));
    }

    std::string LockPath() const
    {
        return m_home.Path(UTF8::ToUTF8((*PathManager::s_pInstance)->GetUniqueInstanceName()));
    }

    // As an instance of that process leaves it, so many seconds ago.
    void LeaveLock(pid_t process, long age = 0) const
    {
        ToolkitTest::WriteBytes(LockPath(), std::to_string(process) + std::string(1, '\0'));
        timespec now = {};
        clock_gettime(CLOCK_REALTIME, &now);
        now.tv_sec -= age;
        const timespec times[] = {now, now};
        ASSERT_EQ(0, chmod(LockPath().c_str(), 0600));
        ASSERT_EQ(0, utimensat(AT_FDCWD, LockPath().c_str(), times, 0));
    }

    static bool IsFirst() { return !SingleApplicationInstance().IsAlreadyRunning(); }

    // What several processes find that make, ask and drop an instance over and over.
    void ComeAndGo(int processes, unsigned long rounds) const
    {
        const auto work = [this, rounds]() -> ChildAnswer
        {
            for (unsigned long i = 0; i < rounds; ++i)
            {
                const SingleApplicationInstance instance;
                if (instance.IsAlreadyRunning())
                    continue;
                if (++m_pShared->m_iFirsts != 1)
                    ++m_pShared->m_iOverlaps;
                --m_pShared->m_iFirsts;
            }
            return true;
        };
        std::vector<std::unique_ptr<ForkedCopy>> children;
        for (int i = 0; i < processes; ++i)
            children.push_back(std::make_unique<ForkedCopy>(work));
        for (const auto& child : children)
            EXPECT_EQ("", child->Wait());
        EXPECT_EQ(0, m_pShared->m_iOverlaps);
    }

    TemporaryFolder m_home;
    const ScopedEnvironment m_environment{"HOME", m_home.Path().c_str()};
    Shared* const m_pShared;
};

} // namespace

TEST_F(InstanceLock, ProcessesThatComeAndGoAreNeverFirstAtOnce)
{
    ToolkitTest::Rounds rounds("looks for the first instance", "TOOLKIT_TEST_LOOKS", 16000);
    while (rounds.GoOn())
    {
        const unsigned long looks = rounds.Size(80000);
        ComeAndGo(8, looks / 8);
        rounds.Did(looks);
    }
    EXPECT_FALSE(std::filesystem::exists(LockPath()));
}

// As where the file system has no locks at all.
TEST_F(InstanceLock, ProcessesThatComeAndGoWithoutATurnAreNeverFirstAtOnce)
{
    std::filesystem::create_directory(LockPath() + ".turn");
    ComeAndGo(4, 2000);
}

TEST_F(InstanceLock, NumberOfAThreadIsNobodys)
{
    ForkedCopy other(
        [this]() -> ChildAnswer
        {
            std::thread(
                [this]
                {
                    m_pShared->m_iThread = gettid();
                    pause();
                })
                .join();
            return true;
        });
    ASSERT_TRUE(ToolkitTest::WaitUntil([this] { return m_pShared->m_iThread != 0; }));
    LeaveLock(m_pShared->m_iThread);
    EXPECT_TRUE(IsFirst());
    EXPECT_FALSE(std::filesystem::exists(LockPath())) << "it was taken over, and removed";
    LeaveLock(other.Id());
    EXPECT_FALSE(IsFirst());
    other.Kill();
}

TEST_F(InstanceLock, ProcessWhoseFirstThreadHasEndedLivesOn)
{
    const pid_t other = fork();
    if (other == 0)
    {
        std::thread(
            [this]
            {
                m_pShared->m_iThread = gettid();
                pause();
            })
            .detach();
        syscall(SYS_exit, 0);
    }
    const std::string stat = "/proc/" + std::to_string(other) + "/stat";
    EXPECT_TRUE(ToolkitTest::WaitUntil(
        [&] {
            return m_pShared->m_iThread != 0 &&
                   ToolkitTest::ReadBytes(stat).find(") Z ") != std::string::npos;
        }));
    LeaveLock(other);
    EXPECT_FALSE(IsFirst());
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
}

TEST_F(InstanceLock, ZombieHoldsNothing)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    siginfo_t info = {};
    ASSERT_EQ(0, waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT));
    LeaveLock(child);
    EXPECT_TRUE(IsFirst());
    EXPECT_FALSE(std::filesystem::exists(LockPath()));
    waitpid(child, nullptr, 0);
}

TEST_F(InstanceLock, NumberThatWasGivenAgainIsNobodys)
{
    ForkedCopy other(
        []() -> ChildAnswer
        {
            pause();
            return true;
        });
    LeaveLock(other.Id());
    EXPECT_FALSE(IsFirst());
    EXPECT_TRUE(std::filesystem::exists(LockPath()));
    LeaveLock(other.Id(), 3600);
    EXPECT_TRUE(IsFirst());
    EXPECT_FALSE(std::filesystem::exists(LockPath()));
    // The number is this process's own by now.
    LeaveLock(getpid(), 365L * 24 * 3600);
    const SingleApplicationInstance instance;
    ForkedCopy third([]() -> ChildAnswer { return !IsFirst(); });
    EXPECT_EQ("", third.Wait());
    other.Kill();
}

// The clock may have been wrong when the lock was written: the living process keeps it all the same.
TEST_F(InstanceLock, LockOfALivingInstanceHoldsWhateverItsDate)
{
    const SingleApplicationInstance instance;
    const timespec longAgo[] = {{1, 0}, {1, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, LockPath().c_str(), longAgo, 0));
    ForkedCopy other([]() -> ChildAnswer { return !IsFirst(); });
    EXPECT_EQ("", other.Wait());
    EXPECT_TRUE(std::filesystem::exists(LockPath()));
}
