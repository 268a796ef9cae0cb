// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOG_LINEQUEUE_H
#define TOOLKIT_INTERNAL_LOG_LINEQUEUE_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <sys/types.h>

#include "toolkit/internal/log/Handover.h"

namespace Toolkit
{

// Lines on their way to a file, and the thread that takes them there: whoever logs waits for no disk. The
// queue is bounded by the bytes that it holds; a line that does not fit is counted and dropped. Any thread
// may call it but for the destructor, which writes what is left. When the process exits, every queue is
// drained.
class LineQueue
{
public:
    // Gets whole lines, one after the other, and how many were dropped before these.
    using Drain = std::function<void(std::string_view lines, std::uint64_t dropped)>;

    // `drain` is called on the queue's thread and throws nothing. Throws std::system_error when there is no
    // thread.
    LineQueue(std::size_t capacity, Drain drain);
    ~LineQueue();

    LineQueue(const LineQueue&) = delete;
    LineQueue& operator=(const LineQueue&) = delete;

    // `append` appends one line to the text that it gets.
    template <class Append>
    void Push(Append append)
    {
        bool wakes = false;
        const auto push = [this, &append, &wakes](Pending& pending)
        {
            const std::size_t before = pending.lines.size();
            append(pending.lines);
            wakes = pending.lines.size() > m_uWakeSize;
            if (wakes)
                m_uWakeSize = s_uNever;
            if (pending.lines.size() > m_uCapacity && before != 0)
            {
                pending.lines.resize(before);
                ++pending.dropped;
                return;
            }
            ++pending.count;
            ++m_uPushed;
        };
        Handover::Add<Guard>(m_mutex, m_pending, push);
        if (wakes)
            m_work.notify_one();
    }

    // True in a process that was forked, where the queue has no thread: it must not even be destroyed there.
    bool IsOfAnotherProcess() const;

    // True when all that was pushed before is drained, false when that took longer.
    bool Flush(std::chrono::steady_clock::time_point deadline);

private:
    using Guard = std::lock_guard<std::mutex>;
    struct AtEnd;

    struct Pending
    {
        bool empty() const { return lines.empty() && dropped == 0; }
        void clear()
        {
            lines.clear();
            count = 0;
            dropped = 0;
        }
        void swap(Pending& other)
        {
            lines.swap(other.lines);
            std::swap(count, other.count);
            std::swap(dropped, other.dropped);
        }

        std::string lines;
        // Of the lines, and of those that were dropped.
        std::uint64_t count = 0;
        std::uint64_t dropped = 0;
    };

    static const std::size_t s_uNever = static_cast<std::size_t>(-1);

    void Run();
    // Waits a little, so that a thread that logs much need not wake this one for each line.
    void Rest();
    bool HasMoreToDo();
    void Write(const Pending& taken);

    static const AtEnd s_atEnd;
    static std::mutex s_listMutex;
    static LineQueue* s_pFirst;

    LineQueue* m_pNext = nullptr;
    const std::size_t m_uCapacity;
    const Drain m_drain;
    const pid_t m_iProcess;

    std::mutex m_mutex;
    std::condition_variable m_work;
    std::condition_variable m_done;
    Pending m_pending;
    // The bytes that may be pending without a line waking the thread.
    std::size_t m_uWakeSize = s_uNever;
    // What the thread is writing.
    Pending m_taken;
    // How many lines ever; those that were dropped do not count.
    std::uint64_t m_uPushed = 0;
    std::uint64_t m_uDrained = 0;
    // How many threads wait for the last line.
    unsigned int m_uFlushes = 0;
    bool m_bStops = false;

    std::thread m_thread;
};

} // namespace Toolkit

#endif
