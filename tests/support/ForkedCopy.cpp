// SPDX-License-Identifier: MIT
#include "tests/support/ForkedCopy.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/EndChild.h"

namespace ToolkitTest
{

namespace
{

[[noreturn]] void RunAndEnd(const ChildWork& work, int answer)
{
    std::string text;
    try
    {
        text = work().m_strWrong;
    }
    catch (const std::exception& exception)
    {
        text = exception.what();
    }
    const bool told = write(answer, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    EndChild(told ? 0 : 1);
}

} // namespace

ForkedCopy::ForkedCopy(const ChildWork& work) : m_iId(-1), m_iAnswer(-1)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    std::cout.flush();
    std::fflush(nullptr);
    m_iId = fork();
    if (m_iId == 0)
    {
        close(ends[0]);
        RunAndEnd(work, ends[1]);
    }
    close(ends[1]);
    m_iAnswer = ends[0];
}

ForkedCopy::~ForkedCopy()
{
    Kill();
    close(m_iAnswer);
}

std::string ForkedCopy::Wait()
{
    std::string text;
    char buffer[4096];
    for (ssize_t count; (count = read(m_iAnswer, buffer, sizeof(buffer))) != 0;)
        if (count > 0)
            text.append(buffer, static_cast<std::size_t>(count));
        else if (errno != EINTR)
            break;
    int status = 0;
    while (waitpid(m_iId, &status, 0) == -1 && errno == EINTR)
        continue;
    m_iId = -1;
    if (status != 0)
        text += " (the child ended with status " + std::to_string(status) + ")";
    return text;
}

void ForkedCopy::Kill()
{
    if (m_iId <= 0)
        return;
    kill(m_iId, SIGKILL);
    while (waitpid(m_iId, nullptr, 0) == -1 && errno == EINTR)
        continue;
    m_iId = -1;
}

} // namespace ToolkitTest
