// SPDX-License-Identifier: MIT
#ifndef DESK_WINDOW_WXLOGTARGET_H
#define DESK_WINDOW_WXLOGTARGET_H

#include <wx/log.h>

#include "toolkit/log/Log.h"

namespace Desk
{

// What wxWidgets says goes to the log and never into a dialog.
class WxLogTarget : public wxLog
{
protected:
    void DoLogTextAtLevel(wxLogLevel level, const wxString& text) override
    {
        using Toolkit::LogSeverity;
        TOOLKIT_LOG(level <= wxLOG_Error     ? LogSeverity::Error
                    : level <= wxLOG_Warning ? LogSeverity::Warning
                                             : LogSeverity::Info)
            << "wxWidgets: " << text.utf8_string();
    }
};

} // namespace Desk

#endif
