#ifndef TOOLKIT_TESTS_SUPPORT_CHILDPROCESS_H
#define TOOLKIT_TESTS_SUPPORT_CHILDPROCESS_H

#include <functional>
#include <string>

#include <sys/types.h>

namespace ToolkitTest
{

// A forked copy of the test program that runs one function and ends. The function answers what went wrong in
// it, or nothing. Made before the test starts any thread.
class ChildProcess
{
public:
    explicit ChildProcess(const std::function<std::string()>& function);
    // Kills the child if it is still there.
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Id() const { return m_iId; }

    // Waits for the end: what the function answered, or how else the child ended.
    std::string Wait();
    // Sends SIGKILL and waits.
    void Kill();

private:
    pid_t m_iId;
    int m_iAnswer;
};

// Runs `function` in a child whose /tmp is a new file system of `size` bytes. Where the system does not let
// us make one, says so on the standard output and answers nothing.
std::string RunWithOwnTmp(unsigned int size, const std::function<std::string()>& function);

// Mounts the child's own /tmp anew, for reading only or for both; false when the system refuses.
bool RemountOwnTmp(bool readOnly);

// True once `condition` holds; asked every few milliseconds for at most ten seconds.
bool WaitUntil(const std::function<bool()>& condition);

} // namespace ToolkitTest

#endif
