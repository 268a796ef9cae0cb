// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_EXAMPLES_DESKSUPPORT_H
#define TOOLKIT_TESTS_EXAMPLES_DESKSUPPORT_H

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
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
          m_runtime("XDG_RUNTIME_DIR", m_folder.Path().c_str())
    {
    }

    // The lines of the newest log.
    std::string Log() const
    {
        std::string newest;
        std::error_code error;
        for (const auto& file :
             std::filesystem::directory_iterator(m_folder.Path(".local/state/desk/logs"), error))
            newest = std::max(newest, file.path().string());
        return ReadBytes(newest);
    }
    std::string SettingsPath() const { return m_folder.Path(".config/desk/desk.ini"); }
    static std::string Data(const std::string& name) { return std::string(DESK_DATA) + "/" + name; }

    // The first desk, over the sample bundle.
    std::unique_ptr<TalkingProgram> StartFirst(const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments = {"-data", DESK_DATA};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return std::make_unique<TalkingProgram>(m_strProgram, arguments);
    }

    // The same with an index that is paused before its first mail.
    std::unique_ptr<TalkingProgram> StartPaused() const
    {
        auto first = StartFirst({"-paused"});
        EXPECT_EQ(first->Answer(), "takes commands");
        EXPECT_EQ(first->Answer(), "the index is paused before the first mail");
        return first;
    }

    // Another start, to its end: of the console's desk, as both are one application.
    static ProgramResult Start(const std::string& option, const std::string& value)
    {
        return RunInShell(Quoted(DESK_PROGRAM) + " " + option + " " + Quoted(value));
    }
    static int Send(const std::string& command) { return Start("-send", command).m_iExitCode; }
    static std::string Ask(const std::string& command) { return Start("-send", command).m_strOutput; }

    const std::string m_strProgram;
    const TemporaryFolder m_folder;
    const ScopedEnvironment m_home;
    const ScopedEnvironment m_temporary;
    const ScopedEnvironment m_runtime;
    const ScopedEnvironment m_zone{"TZ", "UTC"};
    const ScopedEnvironment m_config{"XDG_CONFIG_HOME", nullptr};
    const ScopedEnvironment m_state{"XDG_STATE_HOME", nullptr};
    const ScopedEnvironment m_cache{"XDG_CACHE_HOME", nullptr};
};

} // namespace ToolkitTest

#endif
