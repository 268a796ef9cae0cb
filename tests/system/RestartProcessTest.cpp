// SPDX-License-Identifier: MIT
#include <filesystem>
#include <regex>
#include <string>

#include <gmock/gmock.h>
#include <wx/utils.h>

#include "tests/support/Rounds.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using ToolkitTest::ProgramResult;
using ToolkitTest::Quoted;
using ToolkitTest::ReadBytes;
using ToolkitTest::RunInShell;
using ToolkitTest::ScopedEnvironment;
using ToolkitTest::TemporaryFolder;
using ToolkitTest::WaitUntil;
using ToolkitTest::WriteBytes;

namespace
{

// A copy of the program in a folder of its own, and its temporary folder.
class RestartProcess : public testing::Test
{
protected:
    void Install(const std::string& name = "Tool")
    {
        m_strProgram = m_folder.Path(name);
        std::filesystem::create_directories(std::filesystem::path(m_strProgram).parent_path());
        std::filesystem::copy_file(TOOLKIT_RESTART_ITSELF, m_strProgram);
    }

    // Runs the program and those that it starts to their ends. Arguments are words of the shell.
    ProgramResult Run(const std::string& arguments)
    {
        return RunInShell("exec " + Quoted(m_strProgram) + " " + arguments);
    }

    std::string Lock(const TemporaryFolder& folder) const
    {
        return folder.Path(std::filesystem::path(m_strProgram).stem().string() + wxGetUserId().utf8_string() +
                           ".restart");
    }

    // What the process of that name saw, once it is done, without what differs each time.
    std::string Report(const std::string& name) const
    {
        const std::string path = m_reports.Path(name);
        EXPECT_TRUE(WaitUntil([&path] { return std::filesystem::exists(path); })) << name;
        const std::string numbers =
            std::regex_replace(ReadBytes(path), std::regex("2 [0-9]+ : [0-9]+ : "), "");
        return std::regex_replace(numbers, std::regex("descriptors [0-9]+\n"), "");
    }
    std::string Descriptors(const std::string& name) const
    {
        Report(name);
        const std::string bytes = ReadBytes(m_reports.Path(name));
        return bytes.substr(0, bytes.find('\n'));
    }

    std::string ArgumentsOf(const std::string& name) const
    {
        const std::string report = Report(name);
        return report.substr(0, report.rfind("]\n") + 2);
    }

    TemporaryFolder m_folder;
    TemporaryFolder m_temporary;
    TemporaryFolder m_reports;
    std::string m_strProgram;
    const ScopedEnvironment m_tmpdir{"TMPDIR", m_temporary.Path().c_str()};
    const ScopedEnvironment m_tmp{"TMP", nullptr};
    const ScopedEnvironment m_temp{"TEMP", nullptr};
    const ScopedEnvironment m_restarts{"TOOLKIT_TEST_RESTARTS", "1"};
    const ScopedEnvironment m_done{"TOOLKIT_TEST_DONE", nullptr};
    const ScopedEnvironment m_reportFolder{"TOOLKIT_TEST_REPORTS", m_reports.Path().c_str()};
};

} // namespace

TEST_F(RestartProcess, NewProcessSeesTheLockAndRemovesIt)
{
    Install();
    EXPECT_EQ(0, Run("a -culture fr-FR b").m_iExitCode);
    EXPECT_EQ("[" + m_strProgram + "]\n[a]\n[-culture]\n[fr-FR]\n[b]\nstarted\n" +
                  "ActivateRestartProcess : >>> ActivateRestartProcess()\n" +
                  "ActivateRestartProcess : <<< ActivateRestartProcess(" + m_strProgram + " a b -restart)\n" +
                  "ActivateRestartProcess : <<< ActivateRestartProcess()=1\n",
              Report("old"));
    EXPECT_EQ("[" + m_strProgram + "]\n[a]\n[b]\n[-restart]\nlocked\n" +
                  "WaitingForPreviousProcessFinish : >>> WaitingForPreviousProcessFinish()\n" +
                  "WaitingForPreviousProcessFinish : <<< WaitingForPreviousProcessFinish()\n" +
                  "RemoveLock : Remove lock file: " + Lock(m_temporary) + "\n" +
                  "RestartProcessFinish : >>> RestartProcessFinish()\n" +
                  "RestartProcessFinish : <<< RestartProcessFinish()=0\n",
              Report("restarted1"));
    EXPECT_TRUE(std::filesystem::is_empty(m_temporary.Path()));
}

TEST_F(RestartProcess, WithoutArgumentsTheSwitchIsAlone)
{
    Install();
    Run("");
    EXPECT_EQ("[" + m_strProgram + "]\n[-restart]\n", ArgumentsOf("restarted1"));
}

TEST_F(RestartProcess, SwitchesDoNotPileUp)
{
    Install();
    const ScopedEnvironment restarts("TOOLKIT_TEST_RESTARTS", "4");
    Run("a -RESTART -Culture de b");
    for (const char* const name : {"restarted1", "restarted2", "restarted3", "restarted4"})
        EXPECT_EQ("[" + m_strProgram + "]\n[a]\n[b]\n[-restart]\n", ArgumentsOf(name));
    EXPECT_TRUE(std::filesystem::is_empty(m_temporary.Path()));
}

TEST_F(RestartProcess, DescriptorsDoNotPileUp)
{
    Install();
    const ScopedEnvironment restarts("TOOLKIT_TEST_RESTARTS", "3");
    Run("");
    EXPECT_THAT(Descriptors("old"), StartsWith("descriptors "));
    EXPECT_EQ(Descriptors("restarted1"), Descriptors("old"));
    EXPECT_EQ(Descriptors("restarted3"), Descriptors("old"));
}

TEST_F(RestartProcess, ManyRestartsInARowLoseNothingAndLeaveNothing)
{
    Install();
    ToolkitTest::Rounds rounds("restarts", "TOOLKIT_TEST_RESTARTED", 20);
    while (rounds.GoOn())
    {
        const unsigned long count = rounds.Size(10);
        const ScopedEnvironment restarts("TOOLKIT_TEST_RESTARTS", std::to_string(count).c_str());
        EXPECT_EQ(0, Run("a -culture de b").m_iExitCode);
        for (unsigned long restart = 1; restart <= count; ++restart)
        {
            const std::string name = "restarted" + std::to_string(restart);
            EXPECT_EQ("[" + m_strProgram + "]\n[a]\n[b]\n[-restart]\n", ArgumentsOf(name));
            EXPECT_THAT(Report(name), HasSubstr("\nlocked\n"));
            EXPECT_EQ(Descriptors(name), Descriptors("old"));
        }
        EXPECT_TRUE(std::filesystem::is_empty(m_temporary.Path()));
        for (const auto& report : std::filesystem::directory_iterator(m_reports.Path()))
            std::filesystem::remove_all(report.path());
        rounds.Did(count);
    }
}

TEST_F(RestartProcess, ArgumentWithSpacesArrivesSplit)
{
    Install();
    Run("'two words' '\"one text\"'");
    EXPECT_EQ("[" + m_strProgram + "]\n[two]\n[words]\n[one text]\n[-restart]\n", ArgumentsOf("restarted1"));
}

TEST_F(RestartProcess, ArgumentsAndFoldersMayHoldAnyCharacters)
{
    Install("f\xC3\xB6lder/T\xC3\xB6\xC3\xB6l");
    const TemporaryFolder parent;
    std::filesystem::create_directory(parent.Path("\xE6\x97\xA5"));
    for (const char* const locale : {"C", "C.UTF-8"})
    {
        SCOPED_TRACE(locale);
        const ScopedEnvironment tmpdir("TMPDIR", parent.Path("\xE6\x97\xA5").c_str());
        const ScopedEnvironment lcAll("LC_ALL", locale);
        std::filesystem::remove(m_reports.Path("restarted1"));
        Run("\xF0\x9F\x98\x80");
        EXPECT_THAT(Report("restarted1"),
                    StartsWith("[" + m_strProgram + "]\n[\xF0\x9F\x98\x80]\n[-restart]\nlocked\nWaiting"));
        EXPECT_TRUE(std::filesystem::is_empty(parent.Path("\xE6\x97\xA5")));
    }
}

TEST_F(RestartProcess, LockLiesInTheFirstFolderThatTheEnvironmentNames)
{
    Install();
    const TemporaryFolder other;
    const struct
    {
        const char* tmpdir;
        const char* tmp;
        const char* temp;
    } rows[] = {{other.Path().c_str(), "/nowhere", "/nowhere"},
                {"", other.Path().c_str(), "/nowhere"},
                {nullptr, nullptr, other.Path().c_str()}};
    for (const auto& row : rows)
    {
        const ScopedEnvironment tmpdir("TMPDIR", row.tmpdir);
        const ScopedEnvironment tmp("TMP", row.tmp);
        const ScopedEnvironment temp("TEMP", row.temp);
        std::filesystem::remove(m_reports.Path("restarted1"));
        Run("");
        EXPECT_THAT(Report("restarted1"), HasSubstr("Remove lock file: " + Lock(other) + "\n"));
    }
}

TEST_F(RestartProcess, PlantedLinkIsNeitherFollowedNorTrusted)
{
    Install();
    WriteBytes(m_folder.Path("precious"), "precious");
    std::filesystem::create_symlink(m_folder.Path("precious"), Lock(m_temporary));
    Run("");
    EXPECT_THAT(Report("restarted1"), HasSubstr("[-restart]\nnot locked\n"));
    EXPECT_THAT(Report("restarted1"), Not(HasSubstr("Remove")));
    EXPECT_EQ("precious", ReadBytes(m_folder.Path("precious")));
    EXPECT_TRUE(std::filesystem::is_symlink(Lock(m_temporary)));
}

TEST_F(RestartProcess, ExtensionOfTheExecutableIsLeftOut)
{
    Install("Tool.bin");
    std::filesystem::copy_file(m_strProgram, m_folder.Path("Tool"));
    Run("");
    EXPECT_EQ("[" + m_folder.Path("Tool") + "]\n[-restart]\n", ArgumentsOf("restarted1"));
    EXPECT_THAT(Report("restarted1"), HasSubstr("\nlocked\n"));
}

TEST_F(RestartProcess, SaysNothingOnTheTerminal)
{
    Install();
    std::filesystem::create_directory(Lock(m_temporary));
    const ProgramResult result = Run("");
    EXPECT_EQ(0, result.m_iExitCode);
    Report("restarted1");
    EXPECT_EQ("", result.m_strOutput);
}
