// SPDX-License-Identifier: MIT
#include "toolkit/app/Network.h"

#include <filesystem>
#include <optional>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"

using ToolkitTest::ProgramResult;
using ToolkitTest::Quoted;
using ToolkitTest::RunInShell;
using ToolkitTest::TemporaryFolder;

namespace
{

const char* const c_callers[] = {"started", "plain", "thread"};

struct Probe
{
    bool m_bAnswer;
    long m_iMilliseconds;
    std::string m_strReceived;
};

// One probe inside a network of its own, never in that of this machine; nothing where none can be made.
// `environment` is what the shell sets for it.
std::optional<Probe> ProbeOf(const std::string& network, const std::string& caller, int seconds,
                             const std::string& environment = "")
{
    const TemporaryFolder folder;
    const ProgramResult result =
        RunInShell(environment + " " + Quoted(TOOLKIT_PROBE_NETWORK) + " " + network + " " + caller + " " +
                   std::to_string(seconds) + " " + Quoted(folder.Path()));
    if (result.m_iExitCode == 77)
    {
        [] { GTEST_SKIP() << "not allowed: a network of its own"; }();
        return std::nullopt;
    }
    EXPECT_EQ(result.m_iExitCode, 0) << result.m_strOutput;
    std::istringstream line(result.m_strOutput);
    Probe probe = {};
    std::string rest;
    line >> probe.m_bAnswer >> probe.m_iMilliseconds >> probe.m_strReceived;
    EXPECT_FALSE(line.fail()) << result.m_strOutput;
    EXPECT_FALSE(line >> rest) << result.m_strOutput;
    return probe;
}

void ExpectTimeoutOfASecond(const std::string& caller)
{
    if (const auto probe = ProbeOf("silent", caller, 1))
    {
        EXPECT_FALSE(probe->m_bAnswer);
        EXPECT_GE(probe->m_iMilliseconds, 1000);
        EXPECT_LT(probe->m_iMilliseconds, 3000);
    }
}

} // namespace

TEST(Network, IsThereWhenTheHostTakesAConnection)
{
    for (const char* const caller : c_callers)
        if (const auto probe = ProbeOf("reachable", caller, 5))
        {
            EXPECT_TRUE(probe->m_bAnswer) << caller;
            EXPECT_EQ(probe->m_strReceived, "0") << caller;
        }
}

// Where the part of the library cannot be loaded that has wxWidgets' sockets.
TEST(Network, IsAskedForWithoutWxWidgetsSockets)
{
    const TemporaryFolder folder;
    std::filesystem::copy_file(TOOLKIT_LIBRARY, folder.Path("libtoolkit.so.1"));
    const std::string alone = "LD_LIBRARY_PATH=" + Quoted(folder.Path());
    if (const auto probe = ProbeOf("reachable", "started", 5, alone))
    {
        EXPECT_TRUE(probe->m_bAnswer);
    }
    if (const auto probe = ProbeOf("refused", "started", 5, alone))
    {
        EXPECT_FALSE(probe->m_bAnswer);
    }
}

TEST(Network, IsNotThereWhenTheHostRefuses)
{
    for (const char* const caller : c_callers)
        if (const auto probe = ProbeOf("refused", caller, 5))
        {
            EXPECT_FALSE(probe->m_bAnswer) << caller;
        }
}

TEST(Network, IsNotThereWhenTheHostHasNoAddress)
{
    for (const char* const caller : c_callers)
        if (const auto probe = ProbeOf("unresolvable", caller, 5))
        {
            EXPECT_FALSE(probe->m_bAnswer) << caller;
        }
}

TEST(NetworkTiming, KeepsTheTimeout)
{
    ExpectTimeoutOfASecond("started");
}

TEST(NetworkTiming, KeepsTheTimeoutWithoutWxWidgets)
{
    ExpectTimeoutOfASecond("plain");
}

TEST(NetworkTiming, KeepsTheTimeoutOnAnotherThread)
{
    ExpectTimeoutOfASecond("thread");
}

TEST(NetworkTiming, DoesNotWaitWithoutATimeout)
{
    for (const char* const caller : c_callers)
        for (const int seconds : {0, -1, -2147483647 - 1})
            if (const auto probe = ProbeOf("silent", caller, seconds))
            {
                EXPECT_FALSE(probe->m_bAnswer) << caller;
                EXPECT_LT(probe->m_iMilliseconds, 900) << caller;
            }
}
