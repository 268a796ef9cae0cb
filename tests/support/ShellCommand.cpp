// SPDX-License-Identifier: MIT
#include "tests/support/ShellCommand.h"

#include <cstdio>
#include <stdexcept>

#include <sys/wait.h>

namespace ToolkitTest
{

ProgramResult RunInShell(const std::string& command)
{
    std::FILE* const pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "re");
    if (pipe == nullptr)
        throw std::runtime_error("no shell can be started");
    ProgramResult result = {-1, ""};
    char buffer[4096];
    for (std::size_t count = 0; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        result.m_strOutput.append(buffer, count);
    const int status = pclose(pipe);
    if (WIFEXITED(status))
        result.m_iExitCode = WEXITSTATUS(status);
    return result;
}

std::string Quoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    return quoted + "'";
}

} // namespace ToolkitTest
