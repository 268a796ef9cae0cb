// SPDX-License-Identifier: MIT
#ifndef DESK_LOOP_H
#define DESK_LOOP_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace Desk
{

// The event loop of a thread that has no other: it calls the functions that are posted, one after the other.
class Loop
{
public:
    // Any thread may post. What is posted once the loop has ended is not called.
    void Post(std::function<void()> function);

    // Calls functions until one of them leaves.
    void Run();
    // Of the thread that runs alone.
    void Leave() { m_bLeaves = true; }

private:
    std::function<void()> Next();

    std::mutex m_mutex;
    std::condition_variable m_posted;
    std::deque<std::function<void()>> m_functions;
    bool m_bLeaves = false;
};

} // namespace Desk

#endif
