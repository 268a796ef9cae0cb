// SPDX-License-Identifier: MIT
#include "toolkit/threading/Event.h"

#include <cerrno>
#include <climits>
#include <ctime>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Toolkit
{

namespace
{

using Clock = std::chrono::steady_clock;

static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "a signal handler sets it");

// Returns when the word is no longer 0, at `end` if there is one, or for no reason at all.
void WaitWhileZero(const std::atomic<std::uint32_t>& word, const timespec* end)
{
    const int before = errno;
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, 0, end, nullptr, FUTEX_BITSET_MATCH_ANY);
    errno = before;
}

} // namespace

void Event::Set() noexcept
{
    const int before = errno;
    m_uSet.store(1, std::memory_order_release);
    syscall(SYS_futex, &m_uSet, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
    errno = before;
}

void Event::Reset() noexcept
{
    m_uSet.store(0, std::memory_order_release);
}

void Event::Wait() const noexcept
{
    while (!IsSet())
        WaitWhileZero(m_uSet, nullptr);
}

bool Event::WaitFor(std::chrono::nanoseconds time) const noexcept
{
    const Clock::time_point now = Clock::now();
    const Clock::time_point end =
        time < Clock::time_point::max() - now ? now + time : Clock::time_point::max();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(end.time_since_epoch());
    const timespec limit = {static_cast<std::time_t>(seconds.count()),
                            static_cast<long>((end.time_since_epoch() - seconds).count())};
    while (!IsSet())
    {
        if (time.count() <= 0 || Clock::now() >= end)
            return false;
        WaitWhileZero(m_uSet, &limit);
    }
    return true;
}

} // namespace Toolkit
