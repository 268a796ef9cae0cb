// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_SHELLCOMMAND_H
#define TOOLKIT_TESTS_SUPPORT_SHELLCOMMAND_H

#include <string>

namespace ToolkitTest
{

struct ProgramResult
{
    int m_iExitCode;
    // What it wrote to its standard output and its standard error output.
    std::string m_strOutput;
};

// Runs a command of the shell to its end; an exit code of -1 tells that a signal ended it.
ProgramResult RunInShell(const std::string& command);

// The text as one word of the shell.
std::string Quoted(const std::string& text);

} // namespace ToolkitTest

#endif
