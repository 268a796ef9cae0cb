// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_IPCCONNECTIONEVENT_H
#define TOOLKIT_APP_IPCCONNECTIONEVENT_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// A listener of an IPCServer. The server shares it and calls it on the thread on which wxWidgets
/// delivers its events, with the server's list of listeners held: it returns quickly.
///
/// @code
/// struct Commands : Toolkit::IPCConnectionEvent
/// {
///     void OnExecuteEvent(const Toolkit::TString<wchar_t>& text) override { std::wcout << text << L'\n'; }
/// };
/// @endcode
class TOOLKIT_API IPCConnectionEvent
{
public:
    virtual ~IPCConnectionEvent() = default;

    /// A client sent `command`.
    virtual void OnExecuteEvent(const TString<wchar_t>& command) = 0;
};

} // namespace Toolkit

#endif
