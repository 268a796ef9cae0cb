// SPDX-License-Identifier: MIT
#include "toolkit/log/WxLogForwarder.h"

#include "toolkit/internal/wx/WxText.h"
#include "toolkit/log/ILogger.h"

namespace Toolkit
{

namespace
{

LogSeverity SeverityOf(wxLogLevel level)
{
    switch (level)
    {
    case wxLOG_FatalError:
    case wxLOG_Error:
        return LogSeverity::Error;
    case wxLOG_Warning:
        return LogSeverity::Warning;
    case wxLOG_Message:
    case wxLOG_Status:
        return LogSeverity::Info;
    case wxLOG_Info:
    case wxLOG_Debug:
    case wxLOG_Trace:
        return LogSeverity::Debug;
    default:
        return LogSeverity::Verbose;
    }
}

// wxWidgets fills in the seconds only where it cares for its old interface.
std::time_t SecondsOf(const wxLogRecordInfo& info)
{
    return info.timestamp != 0 ? info.timestamp : static_cast<std::time_t>(info.timestampMS / 1000);
}

} // namespace

WxLogForwarder::WxLogForwarder()
{
    wxLog::SetActiveTarget(this);
}

WxLogForwarder::~WxLogForwarder()
{
    // wxWidgets flushes into the active target, and would make one if there were none.
    wxLog::SetActiveTarget(this);
    wxLog::FlushActive();
    wxLog::SetActiveTarget(nullptr);
}

void WxLogForwarder::DoLog(wxLogLevel level, const wchar_t* message, std::time_t timestamp)
{
    if (ILogger::s_pInstance == nullptr)
        return;
    const LogSeverity severity = SeverityOf(level);
    **ILogger::s_pInstance << SetSeverity(severity) << severity << ILogger::c_strLogToken1
                           << ILogger::c_strLogToken2 << L"wx" << ILogger::c_strLogToken2
                           << static_cast<long>(timestamp) << ILogger::c_strLogToken2 << message
                           << ILogger::c_strLogToken3;
}

void WxLogForwarder::DoLogString(const wchar_t*, std::time_t) {}

void WxLogForwarder::DoLogRecord(wxLogLevel level, const wxString& message, const wxLogRecordInfo& info)
{
    DoLog(level, FromWx(message).c_str(), SecondsOf(info));
}

} // namespace Toolkit
