// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_EVENTNOTIFIER_H
#define TOOLKIT_THREADING_EVENTNOTIFIER_H

#include <cstddef>
#include <iterator>
#include <list>

#include "toolkit/core/smart_ptr.h"
#include "toolkit/threading/Mutex.h"
#include "toolkit/threading/MutexLock.h"

namespace Toolkit
{

/// A list of listeners of interface T, in the order in which they were added; a class that announces events
/// derives from it and shares the ownership of its listeners. Any thread may add and remove. Listeners are
/// told on the announcing thread with the list's mutex held: one that waits for another thread which needs
/// the same list blocks for ever. A listener may add and remove listeners and announce anew from inside its
/// call, but it may not destroy the notifier. Its exception ends the announcement, releases the mutex and
/// reaches the caller.
///
/// @code
/// struct Listener { virtual ~Listener() = default; virtual void OnMail() = 0; };
/// struct Mailbox : Toolkit::EventNotifier<Listener>
/// {
///     void Arrive() { Notify([](Listener& listener) { listener.OnMail(); }); }
/// };
/// @endcode
template <class T>
class EventNotifier
{
public:
    EventNotifier() = default;

    /// Releases every listener.
    virtual ~EventNotifier()
    {
        // Emptied before anybody is released: a listener that goes may still remove itself here.
        Listeners released;
        const MutexLock lock(m_mutex);
        released.swap(m_listeners);
    }

    EventNotifier(const EventNotifier&) = delete;
    EventNotifier& operator=(const EventNotifier&) = delete;

    /// Adds the listener at the end; null is ignored. One that is added twice is told twice.
    void AddListener(const smart_ptr<T>& listener)
    {
        if (listener.IsNull())
            return;
        const MutexLock lock(m_mutex);
        m_listeners.push_back(listener);
    }

    /// Removes the listener, as often as it was added; one that is not in the list changes nothing. If the
    /// list was its last owner, it is destroyed here, but not while it is being called.
    void RemoveListener(const smart_ptr<T>& listener)
    {
        // Released after the mutex: the destructor of a listener is foreign code. The pointer is read once,
        // as `listener` may live in something that this very removal releases.
        Listeners removed;
        const T* const object = listener.get();
        const MutexLock lock(m_mutex);
        std::size_t index = 0;
        for (Position position = m_listeners.begin(); position != m_listeners.end();)
        {
            const Position next = std::next(position);
            if (*position == object)
            {
                LeaveWalks(position, index);
                removed.splice(removed.end(), m_listeners, position);
            }
            else
            {
                ++index;
            }
            position = next;
        }
    }

protected:
    /// Calls `call(T&)` for each listener, front to back, with the mutex held. Told are those that were in
    /// the list at the start and have not been removed before their turn; those that are added meanwhile are
    /// told from the next announcement on, a nested one included.
    template <class Call>
    void Notify(const Call& call)
    {
        const MutexLock lock(m_mutex);
        if (m_listeners.empty())
            return;
        Walk walk(*this);
        const Announced announced(m_pWalk, walk);
        while (walk.m_uIndex < walk.m_uEnd)
        {
            // Shared for the time of its call, in which it may be removed.
            const smart_ptr<T> listener = *walk.m_next;
            ++walk.m_next;
            ++walk.m_uIndex;
            call(*listener);
        }
    }

private:
    using Listeners = std::list<smart_ptr<T>>;
    using Position = typename Listeners::iterator;

    // One announcement under way: the listener whose turn is next, and how many there are up to the last one.
    // A removed listener must be destroyed at once, so the removal moves the walks past it.
    // `LibModuleManager`, which owns no module, instead marks what is removed and frees it after the walk.
    struct Walk
    {
        explicit Walk(EventNotifier& notifier)
            : m_pOuter(notifier.m_pWalk),
              m_next(notifier.m_listeners.begin()),
              m_uEnd(notifier.m_listeners.size())
        {
        }
        Walk(const Walk&) = delete;
        Walk& operator=(const Walk&) = delete;

        Walk* const m_pOuter;
        Position m_next;
        std::size_t m_uIndex = 0;
        std::size_t m_uEnd;
    };

    // The announcement is the innermost one of its list for as long as this object lives.
    class Announced
    {
    public:
        Announced(Walk*& innermost, Walk& walk) : m_innermost(innermost), m_pOuter(walk.m_pOuter)
        {
            m_innermost = &walk;
        }
        ~Announced() { m_innermost = m_pOuter; }
        Announced(const Announced&) = delete;
        Announced& operator=(const Announced&) = delete;

    private:
        Walk*& m_innermost;
        Walk* const m_pOuter;
    };

    // Lets the announcements under way know that the listener at `position` is about to go.
    void LeaveWalks(Position position, std::size_t index)
    {
        for (Walk* walk = m_pWalk; walk != nullptr; walk = walk->m_pOuter)
        {
            if (walk->m_next == position)
                ++walk->m_next;
            if (index < walk->m_uIndex)
                --walk->m_uIndex;
            if (index < walk->m_uEnd)
                --walk->m_uEnd;
        }
    }

    Listeners m_listeners;
    Mutex m_mutex;
    Walk* m_pWalk = nullptr;
};

} // namespace Toolkit

#endif
