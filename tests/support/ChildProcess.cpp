#include "tests/support/ChildProcess.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ToolkitTest
{

namespace
{

const char c_strNotAllowed[] = "not allowed: ";

[[noreturn]] void RunAndEnd(const std::function<std::string()>& function, int answer)
{
    std::string text;
    try
    {
        text = function();
    }
    catch (const std::exception& exception)
    {
        text = exception.what();
    }
    const bool told = write(answer, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    _exit(told ? 0 : 1);
}

std::string MakeOwnTmp(unsigned int size)
{
    const std::string options = "mode=1777,size=" + std::to_string(size);
    if (unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
        mount("tmpfs", "/tmp", "tmpfs", 0, options.c_str()) == 0)
        return "";
    return std::string(c_strNotAllowed) + std::strerror(errno);
}

} // namespace

ChildProcess::ChildProcess(const std::function<std::string()>& function) : m_iId(-1), m_iAnswer(-1)
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
        RunAndEnd(function, ends[1]);
    }
    close(ends[1]);
    m_iAnswer = ends[0];
}

ChildProcess::~ChildProcess()
{
    Kill();
    close(m_iAnswer);
}

std::string ChildProcess::Wait()
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

void ChildProcess::Kill()
{
    if (m_iId <= 0)
        return;
    kill(m_iId, SIGKILL);
    while (waitpid(m_iId, nullptr, 0) == -1 && errno == EINTR)
        continue;
    m_iId = -1;
}

std::string RunWithOwnTmp(unsigned int size, const std::function<std::string()>& function)
{
    ChildProcess child(
        [size, &function]
        {
            const std::string refused = MakeOwnTmp(size);
            return refused.empty() ? function() : refused;
        });
    const std::string answer = child.Wait();
    if (answer.rfind(c_strNotAllowed, 0) != 0)
        return answer;
    std::cout << "[ NOT RUN  ] a /tmp of its own is " << answer << std::endl;
    return "";
}

bool RemountOwnTmp(bool readOnly)
{
    const unsigned long flags = readOnly ? MS_REMOUNT | MS_RDONLY : MS_REMOUNT;
    return mount("tmpfs", "/tmp", nullptr, flags, nullptr) == 0;
}

bool WaitUntil(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

} // namespace ToolkitTest
