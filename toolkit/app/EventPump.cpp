// SPDX-License-Identifier: MIT
#include "toolkit/app/EventPump.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include <sys/eventfd.h>
#include <wx/app.h>
#include <wx/apptrait.h>
#include <wx/evtloop.h>
#include <wx/evtloopsrc.h>
#include <wx/thread.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/internal/wx/LoopDescriptors.h"
#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

namespace
{

using Clock = std::chrono::steady_clock;

const long long s_iLongestWait = 3600 * 1000;
// When the time is over and there is always something more, for instance because a handler makes it.
const int s_iMostLateTurns = 16;

// Lets a descriptor that is written to wake wxWidgets' loops up.
class WakeUpSource : private wxEventLoopSourceHandler
{
public:
    explicit WakeUpSource(int descriptor) : m_iDescriptor(descriptor)
    {
        const WxLibrary::Silence silence;
        m_pSource.reset(wxEventLoopBase::AddSourceForFD(descriptor, this, wxEVENT_SOURCE_INPUT));
    }

    bool IsOk() const { return m_pSource != nullptr; }

private:
    void OnReadWaiting() override
    {
        std::uint64_t count = 0;
        ReadUpTo(m_iDescriptor, &count, sizeof count);
    }
    void OnWriteWaiting() override {}
    void OnExceptionWaiting() override {}

    const int m_iDescriptor;
    std::unique_ptr<wxEventLoopSource> m_pSource;
};

// The active loop of wxWidgets, or one of its own that is active meanwhile. `watched` is a source of the
// loops.
class Loop
{
public:
    explicit Loop(int watched)
    {
        if (wxEventLoopBase::GetActive() != nullptr)
            return;
        const WxLibrary::Silence silence;
        const LoopDescriptors descriptors(watched);
        m_pOwn.reset(wxAppConsole::GetInstance()->GetTraits()->CreateEventLoop());
        descriptors.KeepPollFromPrograms();
        descriptors.KeepNewLoopFromPrograms();
        if (m_pOwn != nullptr && m_pOwn->IsOk())
            m_activator.emplace(m_pOwn.get());
    }

    wxEventLoopBase* Get() const { return wxEventLoopBase::GetActive(); }

private:
    std::unique_ptr<wxEventLoopBase> m_pOwn;
    std::optional<wxEventLoopActivator> m_activator;
};

class Depth
{
public:
    explicit Depth(unsigned int& depth) : m_uDepth(++depth) {}
    ~Depth() { --m_uDepth; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;

    bool IsOutermost() const { return m_uDepth == 1; }

private:
    unsigned int& m_uDepth;
};

// Forgets a stop with the run that it ended, also when an exception passes.
class Stopped
{
public:
    Stopped(std::atomic<bool>& stopped, bool isOutermost) : m_bStopped(stopped), m_bIsOutermost(isOutermost)
    {
    }
    ~Stopped()
    {
        if (m_bIsOutermost && m_bStopped)
            m_bStopped = false;
    }
    Stopped(const Stopped&) = delete;
    Stopped& operator=(const Stopped&) = delete;

private:
    std::atomic<bool>& m_bStopped;
    const bool m_bIsOutermost;
};

void DeliverPending()
{
    wxAppConsole* const application = wxAppConsole::GetInstance();
    application->CheckSignal();
    application->ProcessPendingEvents();
    application->RethrowStoredException();
}

} // namespace

EventPump::EventPump() : m_iWakeUp(Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)).Release()) {}

EventPump::~EventPump()
{
    const Descriptor closed(m_iWakeUp);
}

bool EventPump::Run(unsigned int milliseconds)
{
    if (m_iWakeUp == -1 || !WxLibrary::IsStarted() || !wxThread::IsMain())
        return false;
    const Depth depth(m_uRuns);
    std::optional<WakeUpSource> source;
    if (depth.IsOutermost())
        source.emplace(m_iWakeUp);
    const Loop loop(m_iWakeUp);
    if (loop.Get() == nullptr || (source && !source->IsOk()))
        return false;
    const Stopped stopped(m_bStopped, depth.IsOutermost());
    Deliver(milliseconds);
    return true;
}

void EventPump::Stop()
{
    const int error = errno;
    m_bStopped = true;
    const std::uint64_t one = 1;
    WriteAll(m_iWakeUp, &one, sizeof one);
    errno = error;
}

void EventPump::Deliver(unsigned int milliseconds)
{
    const Clock::time_point start = Clock::now();
    const auto timeLeft = [start, milliseconds]
    {
        if (milliseconds == Mutex::s_uInfinite)
            return s_iLongestWait;
        const auto end = start + std::chrono::milliseconds(milliseconds);
        return std::clamp<long long>(std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count(),
                                     0, s_iLongestWait);
    };
    for (int lateTurns = 0; lateTurns < s_iMostLateTurns;)
    {
        DeliverPending();
        wxEventLoopBase& loop = *wxEventLoopBase::GetActive();
        const bool busy = loop.ProcessIdle();
        const long long left = m_bStopped ? 0 : timeLeft();
        const int answer = loop.DispatchTimeout(busy ? 0 : static_cast<unsigned long>(left));
        DeliverPending();
        if (m_bStopped || answer == 0 || (left == 0 && answer < 0))
            return;
        lateTurns += left == 0 ? 1 : 0;
    }
}

} // namespace Toolkit
