// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_WORKER_H
#define TOOLKIT_TESTS_SUPPORT_WORKER_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>

#include "toolkit/threading/Thread.h"

namespace ToolkitTest
{

using Work = std::function<wxThread::ExitCode(Toolkit::Thread&)>;

inline wxThread::ExitCode Code(int value)
{
    return reinterpret_cast<wxThread::ExitCode>(static_cast<std::intptr_t>(value));
}

// Does what it is told and waits as every leaf class does.
class Worker : public Toolkit::Thread
{
public:
    Worker() = default;
    explicit Worker(Work work) : m_work(std::move(work)) {}
    ~Worker() override { StopAndWait(); }

protected:
    ExitCode DoWork() override { return m_work ? m_work(*this) : nullptr; }

private:
    const Work m_work;
};

// Counts its rounds; its exit code is 5.
inline Work LoopUntilStopped(std::atomic<int>& rounds)
{
    return [&rounds](Toolkit::Thread& thread)
    {
        while (!thread.TestDestroy())
        {
            ++rounds;
            Toolkit::Thread::Sleep(1);
        }
        return Code(5);
    };
}

} // namespace ToolkitTest

#endif
