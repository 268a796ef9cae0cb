// SPDX-License-Identifier: MIT
#include "toolkit/internal/system/Transfer.h"

#include <cerrno>
#include <csignal>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"
#include "toolkit/internal/system/Descriptor.h"

using Toolkit::Descriptor;
using Toolkit::ReadUpTo;
using Toolkit::WriteAll;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WriteBytes;

namespace
{

// More than a pipe holds.
const std::size_t s_uMuch = 1 << 20;

struct Pipe
{
    Pipe()
    {
        int ends[2];
        EXPECT_EQ(0, pipe2(ends, O_CLOEXEC));
        m_reader = Descriptor(ends[0]);
        m_writer = Descriptor(ends[1]);
    }

    Descriptor m_reader;
    Descriptor m_writer;
};

} // namespace

TEST(Transfer, WritesAndReadsAllWhateverSignalsArrive)
{
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, &before);
    Pipe pipe;
    bool written = false;
    std::thread writer(
        [&] { written = WriteAll(pipe.m_writer.Get(), std::string(s_uMuch, 'x').data(), s_uMuch); });
    std::string read(s_uMuch, ' ');
    for (std::size_t done = 0; done < s_uMuch; done += 4096)
    {
        pthread_kill(writer.native_handle(), SIGUSR1);
        ASSERT_EQ(4096U, ReadUpTo(pipe.m_reader.Get(), &read[done], 4096));
    }
    writer.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_TRUE(written);
    EXPECT_EQ(std::string(s_uMuch, 'x'), read);
}

TEST(Transfer, EndOfTheFileIsNoError)
{
    const TemporaryFolder folder;
    WriteBytes(folder.Path("file"), "abc");
    const Descriptor file(open(folder.Path("file").c_str(), O_RDONLY | O_CLOEXEC));
    char bytes[8] = "";
    errno = EIO;
    EXPECT_EQ(3U, ReadUpTo(file.Get(), bytes, 8));
    EXPECT_EQ(0, errno);
    EXPECT_EQ(2U, ReadUpTo(file.Get(), bytes, 8, 1));
    EXPECT_EQ(0, errno);
    EXPECT_STREQ("bcc", bytes);
}

TEST(Transfer, ErrorIsTold)
{
    char bytes[8] = "";
    EXPECT_EQ(0U, ReadUpTo(-1, bytes, 8));
    EXPECT_EQ(EBADF, errno);
    EXPECT_FALSE(WriteAll(-1, bytes, 8));
    EXPECT_EQ(EBADF, errno);
    const Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
    EXPECT_FALSE(WriteAll(full.Get(), bytes, 8));
    EXPECT_EQ(ENOSPC, errno);
}

TEST(Transfer, NothingIsAlwaysTransferred)
{
    EXPECT_TRUE(WriteAll(-1, nullptr, 0));
    EXPECT_EQ(0U, ReadUpTo(-1, nullptr, 0));
}
