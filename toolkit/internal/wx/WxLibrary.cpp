// SPDX-License-Identifier: MIT
#include "toolkit/internal/wx/WxLibrary.h"

#include <cstring>
#include <mutex>
#include <optional>
#include <typeinfo>

#include <wx/app.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/thread.h>
#include <wx/translation.h>

namespace Toolkit
{

namespace
{

// Constant-initialised and trivially destroyed, so that they may be used before and after any static object.
std::mutex s_startMutex;
unsigned int s_uStarts = 0;
unsigned int s_uStopsOwed = 0;

// The silences of the main thread, and those from before the start; what the first of each found.
std::mutex s_silenceMutex;
unsigned int s_uMainSilences = 0;
bool s_bMainLogged = true;
unsigned int s_uProcessSilences = 0;
wxLogLevel s_uProcessLevel = wxLOG_Max;

// wxWidgets keeps what it knows of its threads in a table that it makes when it is first asked. Made
// when this library is loaded, it outlives the statics of a host, one of which may own a running thread.
[[maybe_unused]] const bool s_bThreadTableIsMade =
    (static_cast<void>(wxTranslations::GetUntranslatedString(wxString())), true);

// Starting and stopping would delete the active log target, which belongs to the host.
class KeptLogTarget
{
public:
    KeptLogTarget() : m_pTarget(wxLog::SetActiveTarget(nullptr)) {}
    ~KeptLogTarget()
    {
        if (m_pTarget != nullptr)
            delete wxLog::SetActiveTarget(m_pTarget);
    }
    KeptLogTarget(const KeptLogTarget&) = delete;
    KeptLogTarget& operator=(const KeptLogTarget&) = delete;

private:
    wxLog* const m_pTarget;
};

// A host that stops wxWidgets itself takes back every start.
void ForgetWhatTheHostStopped()
{
    if (!WxLibrary::IsStarted())
        s_uStarts = s_uStopsOwed = 0;
}

bool StartOnce()
{
    std::optional<KeptLogTarget> kept;
    if (!WxLibrary::IsStarted())
        kept.emplace();
    if (!wxInitialize())
        return false;
    ++s_uStarts;
    return true;
}

void StopOnce()
{
    std::optional<KeptLogTarget> kept;
    if (--s_uStarts == 0)
        kept.emplace();
    wxUninitialize();
}

// Only the last stop needs the thread that started wxWidgets, the one it calls main.
void StopWhatIsOwed()
{
    while (s_uStopsOwed > 0 && (s_uStarts > 1 || wxThread::IsMain()))
    {
        --s_uStopsOwed;
        StopOnce();
    }
}

// True when wxWidgets counts its starts. A host that brought it up with an application object of its
// own has not been counted, and one more start would begin anew.
bool IsCounted()
{
    const wxAppConsole* const app = wxAppConsole::GetInstance();
    return app == nullptr || s_uStarts > 0 ||
           std::strstr(typeid(*app).name(), "wxDummyConsoleApp") != nullptr;
}

} // namespace

bool WxLibrary::IsStarted()
{
    return wxAppConsole::GetInstance() != nullptr;
}

bool WxLibrary::Start()
{
    const std::lock_guard<std::mutex> lock(s_startMutex);
    ForgetWhatTheHostStopped();
    const bool started = StartOnce();
    StopWhatIsOwed();
    return started;
}

void WxLibrary::Stop()
{
    const std::lock_guard<std::mutex> lock(s_startMutex);
    ForgetWhatTheHostStopped();
    if (s_uStarts > s_uStopsOwed)
        ++s_uStopsOwed;
    StopWhatIsOwed();
}

bool WxLibrary::Hold()
{
    const std::lock_guard<std::mutex> lock(s_startMutex);
    ForgetWhatTheHostStopped();
    return IsCounted() && StartOnce();
}

// Before the start every thread passes for the main one, and no longer once another thread has started
// wxWidgets: only the log level can be restored then.
WxLibrary::Silence::Silence()
    : m_scope(!IsStarted()         ? Scope::Process
              : wxThread::IsMain() ? Scope::MainThread
                                   : Scope::Thread)
{
    if (m_scope == Scope::Thread)
    {
        m_bThreadLogged = wxLog::EnableLogging(false);
        return;
    }
    const std::lock_guard<std::mutex> lock(s_silenceMutex);
    if (m_scope == Scope::MainThread && s_uMainSilences++ == 0)
        s_bMainLogged = wxLog::EnableLogging(false);
    if (m_scope == Scope::Process && s_uProcessSilences++ == 0)
    {
        s_uProcessLevel = wxLog::GetLogLevel();
        wxLog::SetLogLevel(wxLOG_FatalError);
    }
}

WxLibrary::Silence::~Silence()
{
    if (m_scope == Scope::Thread)
    {
        wxLog::EnableLogging(m_bThreadLogged);
        return;
    }
    const std::lock_guard<std::mutex> lock(s_silenceMutex);
    if (m_scope == Scope::MainThread && --s_uMainSilences == 0)
        wxLog::EnableLogging(s_bMainLogged);
    if (m_scope == Scope::Process && --s_uProcessSilences == 0)
        wxLog::SetLogLevel(s_uProcessLevel);
}

} // namespace Toolkit
