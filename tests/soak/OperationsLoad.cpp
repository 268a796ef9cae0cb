// SPDX-License-Identifier: MIT
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/soak/Loads.h"
#include "toolkit/threading/BackgroundOperation.h"
#include "toolkit/threading/Threadable.h"

using Toolkit::BackgroundOperation;
using Toolkit::BackgroundOperationHandler;
using Toolkit::smart_ptr;
using Toolkit::Threading::IRunnable;
using Toolkit::Threading::Threadable;

namespace ToolkitTest
{

namespace
{

const unsigned int s_uListeners = 3;
const unsigned long s_uAtOnce = 25;
const unsigned int s_uVisits = 20;

// What a listener was told; it outlives the listener.
struct Told
{
    std::atomic<unsigned int> m_started{0};
    std::atomic<unsigned int> m_ended{0};
};

class Listener : public BackgroundOperationHandler
{
public:
    explicit Listener(Told& told) : m_told(told) {}

    void OnOperationStarted() override { ++m_told.m_started; }
    void OnOperationEnded() override { ++m_told.m_ended; }

private:
    Told& m_told;
};

// Adds up the numbers to its value.
class Sum : public BackgroundOperation
{
public:
    using BackgroundOperation::BackgroundOperation;

    void DoOperation() override
    {
        for (unsigned int number = 1; number <= GetValue(); ++number)
        {
            m_uSum += number;
            UpdateLastOperationDate();
        }
    }

    unsigned long GetSum() const { return m_uSum; }

private:
    unsigned long m_uSum = 0;
};

// Runs an operation with all that is announced.
class Runner : public IRunnable
{
public:
    explicit Runner(const smart_ptr<Sum>& operation) : m_operation(operation) {}

    void Run() override
    {
        m_operation->SendOperationStarted();
        m_operation->DoOperation();
        m_operation->SendOperationEnded();
    }

private:
    smart_ptr<Sum> m_operation;
};

// An operation on a thread, its listeners, and those that only look in.
class RunningOperation
{
public:
    explicit RunningOperation(unsigned int value)
        : m_operation(new Sum(value)), m_thread(smart_ptr<IRunnable>(new Runner(m_operation)))
    {
        for (unsigned int i = 0; i < s_uListeners; ++i)
            m_operation->AddListener(smart_ptr<BackgroundOperationHandler>(new Listener(m_told)));
        EXPECT_TRUE(m_thread.Run());
    }

    void LookIn()
    {
        const smart_ptr<BackgroundOperationHandler> visitor(new Listener(m_visited));
        m_operation->AddListener(visitor);
        m_operation->RemoveListener(visitor);
    }

    void Finish()
    {
        EXPECT_TRUE(m_operation->Wait());
        m_thread.Wait();
        const unsigned long value = m_operation->GetValue();
        EXPECT_EQ(value * (value + 1) / 2, m_operation->GetSum());
        EXPECT_EQ(s_uListeners, m_told.m_started);
        EXPECT_EQ(s_uListeners, m_told.m_ended);
        EXPECT_GE(1U * s_uVisits, m_visited.m_started);
        EXPECT_GE(1U * s_uVisits, m_visited.m_ended);
        EXPECT_NE(0U, m_operation->GetLastOperationDate());
    }

private:
    Told m_told;
    Told m_visited;
    smart_ptr<Sum> m_operation;
    Threadable m_thread;
};

void RunAtOnce(unsigned long operations)
{
    std::vector<std::unique_ptr<RunningOperation>> running;
    for (unsigned long i = 0; i < operations; ++i)
        running.push_back(std::make_unique<RunningOperation>(static_cast<unsigned int>(100 + i)));
    for (unsigned int visit = 0; visit < s_uVisits; ++visit)
        for (const auto& operation : running)
            operation->LookIn();
    for (const auto& operation : running)
        operation->Finish();
}

} // namespace

void RunOperations(unsigned long operations)
{
    for (unsigned long done = 0; done < operations; done += s_uAtOnce)
        RunAtOnce(std::min(s_uAtOnce, operations - done));
}

} // namespace ToolkitTest
