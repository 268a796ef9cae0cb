// SPDX-License-Identifier: MIT
#include "tests/support/TalkingProgram.h"

#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ToolkitTest
{

namespace
{

// A pair of which no other child gets an end.
void MakePair(int (&ends)[2])
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::runtime_error("no pair of sockets");
}

} // namespace

TalkingProgram::TalkingProgram(const std::string& path, const std::vector<std::string>& arguments)
    : m_iId(-1), m_iInput(-1), m_iOutput(-1)
{
    std::vector<std::string> texts(arguments);
    texts.insert(texts.begin(), path);
    std::vector<char*> vector;
    for (std::string& text : texts)
        vector.push_back(text.data());
    vector.push_back(nullptr);
    int input[2];
    int output[2];
    MakePair(input);
    MakePair(output);
    m_iId = fork();
    if (m_iId == 0)
    {
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        execv(vector[0], vector.data());
        _exit(errno);
    }
    close(input[0]);
    close(output[1]);
    m_iInput = input[1];
    m_iOutput = output[0];
}

TalkingProgram::~TalkingProgram()
{
    End();
    close(m_iOutput);
}

void TalkingProgram::Tell(const std::string& line)
{
    const std::string whole = line + "\n";
    // A program that has ended is no reason for a signal.
    for (std::size_t sent = 0; sent < whole.size();)
    {
        const ssize_t count = send(m_iInput, whole.data() + sent, whole.size() - sent, MSG_NOSIGNAL);
        if (count == -1 && errno != EINTR)
            return;
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

std::string TalkingProgram::Answer()
{
    std::string line;
    char character = '\0';
    for (;;)
    {
        const ssize_t count = read(m_iOutput, &character, 1);
        if (count == -1 && errno == EINTR)
            continue;
        if (count <= 0 || character == '\n')
            return line;
        line += character;
    }
}

std::string TalkingProgram::Ask(const std::string& line)
{
    Tell(line);
    return Answer();
}

int TalkingProgram::End()
{
    if (m_iInput != -1)
        close(m_iInput);
    m_iInput = -1;
    return Wait();
}

void TalkingProgram::Kill()
{
    if (m_iId > 0)
        kill(m_iId, SIGKILL);
    Wait();
}

int TalkingProgram::Wait()
{
    int status = -1;
    if (m_iId <= 0)
        return -1;
    while (waitpid(m_iId, &status, 0) == -1 && errno == EINTR)
        continue;
    m_iId = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace ToolkitTest
