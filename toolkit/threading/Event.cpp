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

// Returns when the word is no longer `value`, at `end` if there is one, or for no reason at all.
void WaitWhile(const std::atomic<std::uint32_t>& word, std::uint32_t value, const timespec* end)
{
    const int before = errno;
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, value, end, nullptr, FUTEX_BITSET_MATCH_ANY);
    errno = before;
}

} // namespace

void Event::Set() noexcept
{
    if (m_uState.exchange(s_uSet, std::memory_order_acq_rel) != s_uAwaited)
        return;
    const int before = errno;
    syscall(SYS_futex, &m_uState, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
    errno = before;
}

// Those who wait go on waiting.
void Event::Reset() noexcept
{
    std::uint32_t set = s_uSet;
    m_uState.compare_exchange_strong(set, s_uUnset, std::memory_order_acq_rel);
}

void Event::Wait() const noexcept
{
    while (MustWait())
        WaitWhile(m_uState, s_uAwaited, nullptr);
}

bool Event::WaitFor(std::chrono::nanoseconds time) const noexcept
{
    const Clock::time_point now = Clock::now();
    const Clock::time_point end =
        time < Clock::time_point::max() - now ? now + time : Clock::time_point::max();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(end.time_since_epoch());
    const timespec limit = {static_cast<std::time_t>(seconds.count()),
                            static_cast<long>((end.time_since_epoch() - seconds).count())};
    while (MustWait())
    {
        if (time.count() <= 0 || Clock::now() >= end)
            return false;
        WaitWhile(m_uState, s_uAwaited, &limit);
    }
    return true;
}

// False when it is set; otherwise it is known from now on that somebody may wait.
bool Event::MustWait() const noexcept
{
    std::uint32_t state = s_uUnset;
    return m_uState.compare_exchange_strong(state, s_uAwaited, std::memory_order_acq_rel,
                                            std::memory_order_acquire) ||
           state != s_uSet;
}

} // namespace Toolkit
