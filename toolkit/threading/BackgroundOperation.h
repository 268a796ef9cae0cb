// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_THREADING_BACKGROUNDOPERATION_H
#define TOOLKIT_THREADING_BACKGROUNDOPERATION_H

#include "toolkit/core/Export.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/threading/BackgroundOperationHandler.h"
#include "toolkit/threading/EventNotifier.h"
#include "toolkit/threading/EventObject.h"
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

/// A long-running operation that announces its start and its end to its listeners and lets other threads wait
/// for the end. A subclass supplies the work; the code that runs it, on any thread, announces its start
/// before and its end after it. Any thread may announce, wait and ask. The owner destroys it when no thread
/// is inside it any more but in Wait.
///
/// @code
/// struct Indexing : Toolkit::BackgroundOperation
/// {
///     Indexing() : BackgroundOperation(1) {}
///     void DoOperation() override { LookForWork(); }
/// };
/// @endcode
class TOOLKIT_API BackgroundOperation : public EventNotifier<BackgroundOperationHandler>
{
public:
    /// `value` is the subclass's own and never changes.
    explicit BackgroundOperation(unsigned int value);
    /// Ends every wait and releases the listeners.
    ~BackgroundOperation() override;

    /// The operation's work. The class itself never calls it.
    virtual void DoOperation() = 0;

    /// Makes `Wait` block from now on; then calls OnOperationStarted of the operation itself and of each
    /// listener.
    void SendOperationStarted();
    /// Ends every wait; then calls OnOperationEnded of the operation itself and of each listener.
    void SendOperationEnded();

    /// Blocks until the end is announced, also before the start; then true. Quirk: it polls every 200 ms, so
    /// that it returns up to 200 ms after the end, and misses an end that a new start follows sooner.
    bool Wait() const;

    /// The value given to the constructor.
    unsigned int GetValue() const { return m_uValue; }

    /// Sets the date of the last activity to the current tick count.
    void UpdateLastOperationDate();
    /// In milliseconds of GetTickCount; 0 before the first update.
    unsigned int GetLastOperationDate() const;

protected:
    /// What an operation does itself at its start, before its listeners are told: nothing.
    virtual void OnOperationStarted();
    /// What an operation does itself at its end, before its listeners are told: nothing.
    virtual void OnOperationEnded();

    /// An event with manual reset for the subclass's own use, not signalled at first.
    const smart_ptr<EventObject>& GetOwnEvent() const { return m_pOwnEvent; }

private:
    const unsigned int m_uValue;
    unsigned int m_uLastOperationDate = 0;
    smart_ptr<EventObject> m_pOwnEvent;
    smart_ptr<EventObject> m_pDoneEvent;
    mutable Mutex m_dateMutex;
};

} // namespace Toolkit

#endif
