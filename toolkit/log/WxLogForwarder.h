// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_WXLOGFORWARDER_H
#define TOOLKIT_LOG_WXLOGFORWARDER_H

#include "toolkit/core/NeedsWx.h"

#include <ctime>

#include <wx/log.h>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// A log target of wxWidgets that turns each of its messages into one line of the installed logger. The
/// host creates it once the logger exists, owns it, and destroys it before the logger; without a logger
/// messages are lost. wxWidgets delivers at once what its main thread logs, and what is logged by a thread
/// that called wxLog::SetThreadActiveTarget with the forwarder. What any other thread logs is kept back until
/// the main thread calls wxLog::FlushActive or destroys the forwarder. Nothing fails.
///
/// @code
/// const auto forwarder = std::make_unique<Toolkit::WxLogForwarder>();
/// wxLogMessage("a line of wxWidgets");
/// wxLog::FlushActive();
/// @endcode
class TOOLKIT_API WxLogForwarder : public wxLog
{
public:
    /// Becomes wxWidgets' active target. Quirk: the target before it is neither kept nor deleted.
    WxLogForwarder();
    /// Forwards what was kept back, and leaves wxWidgets without a target.
    ~WxLogForwarder() override;

    /// Forwards one message; a null one is empty. `timestamp` is in seconds since 1970.
    /// Quirk: the line is not laid out as other log lines are: the tick count is missing, "wx" stands for the
    /// source line and the time stamp for the function.
    virtual void DoLog(wxLogLevel level, const wchar_t* message, std::time_t timestamp);

    /// Does nothing: every message arrives through DoLog.
    virtual void DoLogString(const wchar_t* message, std::time_t timestamp);

protected:
    void DoLogRecord(wxLogLevel level, const wxString& message, const wxLogRecordInfo& info) override;
};

} // namespace Toolkit

#endif
