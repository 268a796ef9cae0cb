// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_NET_NETCALLS_H
#define TOOLKIT_INTERNAL_NET_NETCALLS_H

class wxServerBase;
class wxString;

namespace Toolkit
{

class IPCServer;

// What the part of the library does that is linked with wxWidgets' net library.
struct NetCalls
{
    // A new `IPCInternalServer`, which the caller owns.
    wxServerBase* (*newServer)(IPCServer& server);

    // True when a host takes a connection within that time. For the main thread of wxWidgets alone, whose
    // sockets keep a graphical program alive while they wait.
    bool (*connect)(const wxString& host, unsigned short port, int timeoutSeconds);
};

// The name of the one function that the part exports, which returns them.
inline constexpr char c_strNetEntry[] = "ToolkitNetEntry";

} // namespace Toolkit

#endif
