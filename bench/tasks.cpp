// SPDX-License-Identifier: MIT
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

#include <sched.h>

#include "bench/Bench.h"
#include "toolkit/threading/Event.h"
#include "toolkit/threading/Task.h"

namespace
{

// What `Event` is, by a condition variable.
class Condition
{
public:
    void Set()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_bSet = true;
        }
        m_changed.notify_all();
    }
    void Reset()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bSet = false;
    }
    void Wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_bSet; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bSet = false;
};

// This thread and those that it starts stay on the processor where it is. On which ones two threads run, the
// scheduler chooses; between two that sleep, a wake-up takes twenty times as long, whatever causes it.
class OnOneProcessor
{
public:
    OnOneProcessor()
    {
        sched_getaffinity(0, sizeof m_before, &m_before);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
        sched_setaffinity(0, sizeof one, &one);
    }
    ~OnOneProcessor() { sched_setaffinity(0, sizeof m_before, &m_before); }
    OnOneProcessor(const OnOneProcessor&) = delete;
    OnOneProcessor& operator=(const OnOneProcessor&) = delete;

private:
    cpu_set_t m_before;
};

// A thread that answers each call: two wake-ups are one operation.
template <class Signal>
class Echo
{
public:
    Echo() : m_thread([this] { Run(); }) {}
    ~Echo()
    {
        m_bEnds = true;
        m_call.Set();
        m_thread.join();
    }
    Echo(const Echo&) = delete;
    Echo& operator=(const Echo&) = delete;

    void Call()
    {
        m_call.Set();
        m_answer.Wait();
        m_answer.Reset();
    }

private:
    void Run()
    {
        for (;;)
        {
            m_call.Wait();
            m_call.Reset();
            if (m_bEnds)
                return;
            m_answer.Set();
        }
    }

    Signal m_call;
    Signal m_answer;
    bool m_bEnds = false;
    std::thread m_thread;
};

template <class Signal>
void RegisterEvent(const std::string& whose)
{
    benchmark::RegisterBenchmark(("EventWakeUp/" + whose).c_str(),
                                 [](benchmark::State& state)
                                 {
                                     const OnOneProcessor pinned;
                                     Echo<Signal> echo;
                                     ToolkitBench::Measure(state, [&echo] { echo.Call(); });
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

void ToolkitBench::Register()
{
    RegisterEvent<Toolkit::Event>("Toolkit");
    RegisterEvent<Condition>("limit");
    WholeOperation("TaskRun/Toolkit",
                   []
                   {
                       auto task = Toolkit::Task<int>::Start([](Toolkit::TaskContext&) { return 42; });
                       benchmark::DoNotOptimize(task.Get());
                   });
    WholeOperation("TaskRun/std",
                   [] { benchmark::DoNotOptimize(std::async(std::launch::async, [] { return 42; }).get()); });
}
