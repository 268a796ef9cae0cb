// SPDX-License-Identifier: MIT
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/Sanitized.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"

using ToolkitTest::Quoted;
using ToolkitTest::RunInShell;
using ToolkitTest::TemporaryFolder;

// The part of the library that is linked with ICU is loaded when it is first needed. Each test asks a program
// of its own, which uses a copy of the library.

namespace
{

const char c_strDate[] = "2. M\u00E4rz 2026 um 14:05:09 UTC\n";
const char c_strDateWithoutIcu[] = "2026-03-02T14:05:09+00:00\n";

class IcuPart : public testing::Test
{
protected:
    IcuPart()
    {
        std::filesystem::create_directories(Part().substr(0, Part().rfind('/')));
        std::filesystem::create_directory(m_folder.Path("home"));
        std::filesystem::copy_file(TOOLKIT_LIBRARY, m_folder.Path("lib/libtoolkit.so.1"));
    }

    // Where the library looks for its part, and where the part is that was built.
    std::string Part() const
    {
        const std::string built = TOOLKIT_ICU_PART;
        return m_folder.Path("lib/toolkit") + built.substr(built.rfind('/'));
    }
    void GivePart() const { std::filesystem::copy_file(TOOLKIT_ICU_PART, Part()); }

    // What the program prints for the steps.
    std::string Ask(const std::vector<std::string>& steps) const { return Ask(steps, m_folder.Path("lib")); }
    std::string Ask(const std::vector<std::string>& steps, const std::string& searched) const
    {
        std::string command =
            "cd " + Quoted(m_folder.Path("home")) + " && HOME=" + Quoted(m_folder.Path("home")) +
            " TZ=UTC LC_ALL=de_DE.UTF-8 LD_LIBRARY_PATH=" + Quoted(searched) + " " + Quoted(TOOLKIT_ASK_ICU);
        for (const std::string& step : steps)
            command += " " + Quoted(step);
        const ToolkitTest::ProgramResult result = RunInShell(command);
        EXPECT_EQ(0, result.m_iExitCode) << result.m_strOutput;
        return result.m_strOutput;
    }

    // What the library says of a part that it cannot load.
    std::string CannotLoad(const std::string& why) const { return "cannot load " + Part() + ": " + why; }

private:
    TemporaryFolder m_folder;
};

} // namespace

TEST_F(IcuPart, IsNotLoadedBeforeItIsNeeded)
{
    GivePart();
    EXPECT_EQ("done\n0 without ICU\n" + std::string(c_strDate) + "1 with ICU\n",
              Ask({"session", "maps", "date", "maps"}));
}

TEST_F(IcuPart, IsLoadedOnceByManyThreads)
{
    GivePart();
    EXPECT_EQ("8\n1 with ICU\n", Ask({"threads", "maps"}));
}

TEST_F(IcuPart, IsReplacedByDocumentedAnswersWhereItIsMissing)
{
    const std::string why = CannotLoad("No such file or directory");
    EXPECT_EQ("done\n" + std::string(c_strDateWithoutIcu) +
                  "MM/dd/yy HH:mm\n"
                  "not supported: cannot convert from iso-8859-1 to utf-8: " +
                  why +
                  "\n"
                  "1 cannot extract gr\u00FCn.txt: its name is not compared with the others: " +
                  why + "\n0 without ICU\n",
              Ask({"session", "date", "pattern", "charset", "names", "maps"}));
}

TEST_F(IcuPart, IsLookedForAgainAtTheNextCall)
{
    EXPECT_EQ("MM/dd/yy HH:mm\n" + std::string(c_strDateWithoutIcu) + "done\ndd.MM.yy HH:mm\n" + c_strDate +
                  "gr\u00FCn\n2\n",
              Ask({"pattern", "date", "copy=" + std::string(TOOLKIT_ICU_PART) + "=" + Part(), "pattern",
                   "date", "charset", "names"}));
}

TEST_F(IcuPart, FailsWithTheReasonWhereItsFileIsNoPart)
{
    ToolkitTest::WriteBytes(Part(), "a text");
    EXPECT_EQ("not supported: cannot convert from iso-8859-1 to utf-8: " + CannotLoad("it is no library") +
                  "\n",
              Ask({"charset"}));
    std::filesystem::remove(Part());
    std::filesystem::copy_file(TOOLKIT_ANSWER, Part());
    EXPECT_EQ("not supported: cannot convert from iso-8859-1 to utf-8: " +
                  CannotLoad("it is no part of this library") + "\n",
              Ask({"charset"}));
}

TEST_F(IcuPart, IsLoadedWhenThereIsMemoryAgain)
{
    if (ToolkitTest::s_bSanitized)
        GTEST_SKIP() << "a sanitizer needs all of the address space";
    GivePart();
    const std::string said = Ask({"short", "charset", "date", "full", "charset", "date"});
    EXPECT_EQ(0U,
              said.find("done\nnot supported: cannot convert from iso-8859-1 to utf-8: " + CannotLoad("")))
        << said;
    EXPECT_NE(said.npos, said.find(c_strDateWithoutIcu + std::string("done\ngr\u00FCn\n") + c_strDate))
        << said;
}

TEST_F(IcuPart, IsFoundFromARelativePathAfterAChangeOfFolder)
{
    GivePart();
    EXPECT_EQ("done\n" + std::string(c_strDate), Ask({"folder=/", "date"}, "../lib"));
}
