// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_IPCCLIENT_H
#define TOOLKIT_APP_IPCCLIENT_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// Sends a command to an `IPCServer`, or to any server of wxWidgets, of this machine. Any thread may call it.
/// On the main thread the process's own servers take clients while it waits, so that two programs may connect
/// to each other at the same time. Failures are told by the result; nothing is logged. Over a local socket it
/// talks to a server of this user alone. Over a port it trusts whoever listens there: any user of this
/// machine may have taken the port first, and reads the command then. Prefer a local socket.
///
/// @code
/// const Toolkit::TString<wchar_t> service(L"/tmp/desk.socket");
/// if (!Toolkit::IPCClient::Connect(service, L"open 1.eml", 2000))
///     return Fail("nobody listens");
/// @endcode
class TOOLKIT_API IPCClient
{
public:
    /// Sends the topic's text, up to its first NUL, to the service, whose listeners get it as a command. The
    /// service is named as for `IPCServer`; an empty one is the same default channel. True when the server
    /// took the text. False when there is no such server, for a socket file of another user, for a topic that
    /// has no UTF-8 form or more than 64 MiB of it, and after ten seconds. Where nobody listens at
    /// the service, the first `Instance` of this user whose key it is takes the command. Quirk: the text is
    /// sent twice, as topic and as command, and the result is true before any listener has heard of it.
    static bool Connect(const TString<wchar_t>& service, const TString<wchar_t>& topic);

    /// The same, giving up after that many milliseconds; 4294967295 waits without a limit.
    static bool Connect(const TString<wchar_t>& service, const TString<wchar_t>& topic,
                        unsigned int timeoutMilliseconds);
};

} // namespace Toolkit

#endif
