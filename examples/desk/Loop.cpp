// SPDX-License-Identifier: MIT
#include "Loop.h"

#include <utility>

namespace Desk
{

void Loop::Post(std::function<void()> function)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_functions.push_back(std::move(function));
    m_posted.notify_one();
}

void Loop::Run()
{
    while (!m_bLeaves)
        Next()();
}

std::function<void()> Loop::Next()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_posted.wait(lock, [this] { return !m_functions.empty(); });
    std::function<void()> next = std::move(m_functions.front());
    m_functions.pop_front();
    return next;
}

} // namespace Desk
