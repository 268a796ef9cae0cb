// SPDX-License-Identifier: MIT
#include <memory>

#include <gtest/gtest.h>

#include "tests/faults/OutOfMemory.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/threading/EventObject.h"
#include "toolkit/threading/MutexLock.h"
#include "toolkit/threading/Thread.h"
#include "toolkit/threading/Threadable.h"

using namespace Toolkit;
using ToolkitTest::Attempt;

// Nothing of the library's own is allocated here, which the tests hold fast: mutexes and events lie in place,
// and a thread's memory is wxWidgets'.

namespace
{

class Worker : public Thread
{
public:
    ~Worker() override { StopAndWait(); }

protected:
    ExitCode DoWork() override
    {
        while (!TestDestroy())
            Thread::Sleep(1);
        return nullptr;
    }
};

struct Nothing : Threading::IRunnable
{
    void Run() override {}
};

// Everything that a thread's owner does.
void Use(Worker& worker)
{
    worker.Run();
    worker.Pause();
    worker.Resume();
    worker.IsRunning();
}

} // namespace

TEST(OutOfMemory, IsSurvivedByLocksAndEvents)
{
    const unsigned long points = ToolkitTest::FailEachAllocation({
        {"Mutex", [](const Attempt& attempt) { attempt([] { const Mutex mutex(false); }); }},
        {"Mutex(locked)",
         [](const Attempt& attempt)
         {
             attempt(
                 []
                 {
                     Mutex mutex(true);
                     mutex.Unlock();
                 });
         }},
        {"Mutex::Lock, Unlock, MutexLock",
         [](const Attempt& attempt)
         {
             Mutex mutex;
             attempt([&] { const MutexLock lock(mutex); });
             attempt([&] { EXPECT_TRUE(mutex.Lock(0) && mutex.Unlock()); });
// ThreadSanitizer rightly sees a mutex unlocked that is not locked.
#if !defined(__SANITIZE_THREAD__)
             attempt([&] { EXPECT_FALSE(mutex.Unlock()); });
#endif
         }},
        {"EventObject",
         [](const Attempt& attempt)
         {
             attempt(
                 []
                 {
                     EventObject event(true, false);
                     event.Signal();
                     EXPECT_TRUE(event.Wait(0));
                     event.Reset();
                 });
         }},
    });
    EXPECT_EQ(0U, points);
}

TEST(OutOfMemory, IsSurvivedByThreads)
{
    const ToolkitSession session;
    const unsigned long points = ToolkitTest::FailEachAllocation({
        {"Thread::Thread", [](const Attempt& attempt) { attempt([] { const Worker worker; }); }},
        {"Thread::Run, Pause, Resume, IsRunning",
         [](const Attempt& attempt)
         {
             Worker worker;
             attempt([&] { Use(worker); });
             worker.Run();
         }},
        {"Thread::Kill",
         [](const Attempt& attempt)
         {
             Worker worker;
             EXPECT_TRUE(worker.Run());
             attempt.OnAllThreads([&] { EXPECT_EQ(wxTHREAD_NO_ERROR, worker.Kill()); });
             attempt([&] { EXPECT_EQ(wxTHREAD_NOT_RUNNING, worker.Kill()); });
             EXPECT_FALSE(worker.IsRunning());
         }},
        {"Thread::~Thread",
         [](const Attempt& attempt)
         {
             auto worker = std::make_unique<Worker>();
             worker->Run();
             attempt([&] { worker.reset(); });
         }},
        {"Thread::~Thread(never run)",
         [](const Attempt& attempt)
         {
             auto worker = std::make_unique<Worker>();
             attempt([&] { worker.reset(); });
         }},
        {"Thread on all threads",
         [](const Attempt& attempt)
         {
             attempt.OnAllThreads(
                 []
                 {
                     Worker worker;
                     Use(worker);
                 });
         }},
        {"Threading::Threadable",
         [](const Attempt& attempt)
         {
             const smart_ptr<Threading::IRunnable> task(new Nothing);
             attempt.OnAllThreads(
                 [&]
                 {
                     Threading::Threadable thread(task);
                     EXPECT_TRUE(thread.Run());
                     thread.Wait();
                 });
         }},
    });
    EXPECT_EQ(0U, points);
}

TEST(OutOfMemory, IsSurvivedByThreadsWithoutWxWidgets)
{
    const unsigned long points = ToolkitTest::FailEachAllocation({
        {"Thread",
         [](const Attempt& attempt)
         {
             attempt(
                 []
                 {
                     Worker worker;
                     Use(worker);
                 });
             Worker worker;
             EXPECT_TRUE(worker.Run());
         }},
    });
    EXPECT_EQ(0U, points);
}
