// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_EVENT_H
#define TOOLKIT_THREADING_EVENT_H

#include <atomic>
#include <chrono>
#include <cstdint>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// A flag that stays set until it is reset, and that threads wait for without polling. Any thread may call
/// any operation, and a signal handler may call `Set` and `IsSet`. What a thread did before `Set` is seen by
/// the threads that the event lets through. Nothing throws. The event must outlive the calls of its
/// operations.
///
/// @code
/// static Toolkit::Event stop;
/// std::signal(SIGTERM, [](int) { stop.Set(); });
/// while (!stop.WaitFor(std::chrono::seconds(1)))
///     LookForWork();
/// @endcode
class TOOLKIT_API Event
{
public:
    Event() noexcept = default;

    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    /// Wakes all waiters at once; `errno` stays as it is. Where nobody waits it takes no system call.
    void Set() noexcept;
    /// Makes waiters block again.
    void Reset() noexcept;
    /// True from `Set` to `Reset`.
    bool IsSet() const noexcept { return m_uState.load(std::memory_order_acquire) == s_uSet; }

    /// Blocks until the event is set.
    void Wait() const noexcept;
    /// Blocks until the event is set, or for that time; true when it is set. A time of 0 or less never
    /// blocks.
    bool WaitFor(std::chrono::nanoseconds time) const noexcept;

private:
    // Not set, and nobody waits; set; not set, and somebody may wait.
    static constexpr std::uint32_t s_uUnset = 0;
    static constexpr std::uint32_t s_uSet = 1;
    static constexpr std::uint32_t s_uAwaited = 2;

    bool MustWait() const noexcept;

    // What the system waits on.
    mutable std::atomic<std::uint32_t> m_uState{s_uUnset};
};

} // namespace Toolkit

#endif
