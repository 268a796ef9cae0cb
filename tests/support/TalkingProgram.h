// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_TALKINGPROGRAM_H
#define TOOLKIT_TESTS_SUPPORT_TALKINGPROGRAM_H

#include <string>
#include <vector>

#include <sys/types.h>

namespace ToolkitTest
{

// A program that runs beside the test: it is told by lines on its standard input and answers by lines on its
// standard output. Its error output is the test's own.
class TalkingProgram
{
public:
    // The path and what follows it in the argument vector.
    explicit TalkingProgram(const std::string& path, const std::vector<std::string>& arguments = {});
    // Closes the input and waits for the end.
    ~TalkingProgram();

    TalkingProgram(const TalkingProgram&) = delete;
    TalkingProgram& operator=(const TalkingProgram&) = delete;

    pid_t Id() const { return m_iId; }

    void Tell(const std::string& line);
    // The next line without its end; empty when the program has closed its output.
    std::string Answer();
    std::string Ask(const std::string& line);

    // Closes the input and waits: the exit code, or -1 when a signal ended the program.
    int End();
    // Sends SIGKILL and waits.
    void Kill();

private:
    int Wait();

    pid_t m_iId;
    int m_iInput;
    int m_iOutput;
};

} // namespace ToolkitTest

#endif
