// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_SCOPEDSIGNAL_H
#define TOOLKIT_TESTS_SUPPORT_SCOPEDSIGNAL_H

#include <csignal>

namespace ToolkitTest
{

// A signal has that handler for as long as this object lives.
class ScopedSignal
{
public:
    ScopedSignal(int number, void (*handler)(int)) : m_iNumber(number)
    {
        struct sigaction action = {};
        action.sa_handler = handler;
        sigaction(number, &action, &m_before);
    }
    ~ScopedSignal() { sigaction(m_iNumber, &m_before, nullptr); }
    ScopedSignal(const ScopedSignal&) = delete;
    ScopedSignal& operator=(const ScopedSignal&) = delete;

private:
    const int m_iNumber;
    struct sigaction m_before = {};
};

} // namespace ToolkitTest

#endif
