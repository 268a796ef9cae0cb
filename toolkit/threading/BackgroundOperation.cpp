// SPDX-License-Identifier: MIT
#include "toolkit/threading/BackgroundOperation.h"

#include "toolkit/app/GetTickCount.h"
#include "toolkit/threading/MutexLock.h"

namespace Toolkit
{

BackgroundOperation::BackgroundOperation(unsigned int value)
    : m_uValue(value), m_pOwnEvent(new EventObject(false, false)), m_pDoneEvent(new EventObject(false, false))
{
}

BackgroundOperation::~BackgroundOperation()
{
    m_pDoneEvent->Signal();
}

void BackgroundOperation::SendOperationStarted()
{
    m_pDoneEvent->Reset();
    OnOperationStarted();
    Notify([](BackgroundOperationHandler& handler) { handler.OnOperationStarted(); });
}

void BackgroundOperation::SendOperationEnded()
{
    m_pDoneEvent->Signal();
    OnOperationEnded();
    Notify([](BackgroundOperationHandler& handler) { handler.OnOperationEnded(); });
}

bool BackgroundOperation::Wait() const
{
    // Shared while waiting: the operation may be destroyed meanwhile.
    const smart_ptr<EventObject> done = m_pDoneEvent;
    return done->Wait(Mutex::s_uInfinite);
}

void BackgroundOperation::UpdateLastOperationDate()
{
    const MutexLock lock(m_dateMutex);
    m_uLastOperationDate = GetTickCount();
}

unsigned int BackgroundOperation::GetLastOperationDate() const
{
    const MutexLock lock(m_dateMutex);
    return m_uLastOperationDate;
}

void BackgroundOperation::OnOperationStarted() {}

void BackgroundOperation::OnOperationEnded() {}

} // namespace Toolkit
