// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_BENCH_THREADS_H
#define TOOLKIT_BENCH_THREADS_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace ToolkitBench
{

// Starts so many threads that each call `work` with their number, lets them begin at once, and returns the
// seconds from there to the end of the last of them, and of `finish` after it.
inline double SecondsOfThreads(std::size_t count, const std::function<void(std::size_t)>& work,
                               const std::function<void()>& finish = std::function<void()>())
{
    std::mutex mutex;
    std::condition_variable change;
    std::size_t ready = 0;
    bool begun = false;
    std::vector<std::thread> threads;
    for (std::size_t number = 0; number < count; ++number)
        threads.emplace_back(
            [&, number]
            {
                std::unique_lock<std::mutex> lock(mutex);
                ++ready;
                change.notify_all();
                change.wait(lock, [&begun] { return begun; });
                lock.unlock();
                work(number);
            });
    std::unique_lock<std::mutex> lock(mutex);
    change.wait(lock, [&] { return ready == count; });
    begun = true;
    const auto start = std::chrono::steady_clock::now();
    lock.unlock();
    change.notify_all();
    for (std::thread& thread : threads)
        thread.join();
    if (finish)
        finish();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace ToolkitBench

#endif
