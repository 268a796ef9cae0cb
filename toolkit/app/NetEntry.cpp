// SPDX-License-Identifier: MIT
#include <wx/socket.h>

#include "toolkit/app/IPCInternalServer.h"
#include "toolkit/internal/net/NetCalls.h"

namespace Toolkit
{

namespace
{

wxServerBase* NewServer(IPCServer& server)
{
    return new IPCInternalServer(server);
}

bool Connect(const wxString& host, unsigned short port, int timeoutSeconds)
{
    wxIPV4address address;
    if (!address.Hostname(host) || !address.Service(port))
        return false;
    wxSocketClient client(wxSOCKET_NONE);
    client.SetTimeout(timeoutSeconds);
    return client.Connect(address, true);
}

} // namespace

} // namespace Toolkit

// What the library finds by its name, `c_strNetEntry`.
extern "C" __attribute__((visibility("default"))) const void* ToolkitNetEntry()
{
    static const Toolkit::NetCalls calls = {&Toolkit::NewServer, &Toolkit::Connect};
    return &calls;
}
