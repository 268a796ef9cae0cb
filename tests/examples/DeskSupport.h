// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_EXAMPLES_DESKSUPPORT_H
#define TOOLKIT_TESTS_EXAMPLES_DESKSUPPORT_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/ShellCommand.h"
#include "tests/support/TalkingProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

namespace ToolkitTest
{

// A desk in a home of its own.
class DeskHome : public testing::Test
{
protected:
    explicit DeskHome(const std::string& program)
        : m_strProgram(program),
          m_home("HOME", m_folder.Path().c_str()),
          m_temporary("TMPDIR", m_folder.Path().c_str()),
          m_strLog(std::filesystem::path(m_folder.Path()).filename().string() + "-log")
    {
    }
    ~DeskHome() override { std::filesystem::remove(LogPath()); }

    std::string LogPath() const { return "/tmp/" + m_strLog + ".vxlog"; }
    static std::string Data(const std::string& name) { return std::string(DESK_DATA) + "/" + name; }

    // The first desk, over the sample bundle.
    std::unique_ptr<TalkingProgram> StartFirst(const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments = {"-data", DESK_DATA, "-log", m_strLog};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return std::make_unique<TalkingProgram>(m_strProgram, arguments);
    }

    // Another start, to its end.
    ProgramResult Start(const std::string& option, const std::string& value) const
    {
        return RunInShell(Quoted(m_strProgram) + " " + option + " " + Quoted(value));
    }
    int Send(const std::string& command) const { return Start("-send", command).m_iExitCode; }

    const std::string m_strProgram;
    const TemporaryFolder m_folder;
    const ScopedEnvironment m_home;
    const ScopedEnvironment m_temporary;
    const std::string m_strLog;
};

} // namespace ToolkitTest

#endif
