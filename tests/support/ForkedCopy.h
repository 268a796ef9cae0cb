// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_FORKEDCOPY_H
#define TOOLKIT_TESTS_SUPPORT_FORKEDCOPY_H

#include <functional>
#include <string>

#include <sys/types.h>

namespace ToolkitTest
{

// What went wrong in a child, or nothing; from a function that only knows whether something did, too.
struct ChildAnswer
{
    ChildAnswer(bool right) : m_strWrong(right ? "" : "the child answered false") {}
    ChildAnswer(const char* wrong) : m_strWrong(wrong) {}
    ChildAnswer(const std::string& wrong) : m_strWrong(wrong) {}

    std::string m_strWrong;
};

using ChildWork = std::function<ChildAnswer()>;

// A forked copy of the test program that runs one function and ends, for a test that has to do with it
// meanwhile; every other test takes what InChild.h offers. Made before the test starts any thread.
class ForkedCopy
{
public:
    explicit ForkedCopy(const ChildWork& work);
    // Kills the child if it is still there.
    ~ForkedCopy();

    ForkedCopy(const ForkedCopy&) = delete;
    ForkedCopy& operator=(const ForkedCopy&) = delete;

    pid_t Id() const { return m_iId; }

    // Waits for the end: what went wrong in the child, or how else it ended.
    std::string Wait();
    // Sends SIGKILL and waits.
    void Kill();

private:
    pid_t m_iId;
    int m_iAnswer;
};

} // namespace ToolkitTest

#endif
