// SPDX-License-Identifier: MIT
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"

using ToolkitTest::ProgramResult;
using ToolkitTest::Quoted;
using ToolkitTest::RunInShell;
using ToolkitTest::TemporaryFolder;

TEST(SecondCopy, LeavesTheStaticsOfTheFirstAlone)
{
    const TemporaryFolder folder;
    const std::string copy = folder.Path("copy.so");
    std::filesystem::copy_file(TOOLKIT_LIBRARY, copy);
    // A second copy is what AddressSanitizer calls a violation of the rule of one definition.
    const ProgramResult result =
        RunInShell("ASAN_OPTIONS=\"$ASAN_OPTIONS:detect_odr_violation=0\" HOME=" + Quoted(folder.Path("")) +
                   " " + Quoted(SECOND_COPY) + " " + Quoted(copy));
    EXPECT_EQ("whole\n", result.m_strOutput);
    EXPECT_EQ(0, result.m_iExitCode);
}
