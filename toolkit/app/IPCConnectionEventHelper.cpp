#include "toolkit/app/IPCConnectionEventHelper.h"

#include "toolkit/app/IPCPayload.h"
#include "toolkit/app/IPCServer.h"

namespace Toolkit
{

// The base library's part of the connection carries nothing, and has nothing to disconnect.
IPCConnectionEventHelper::IPCConnectionEventHelper(IPCServer& server) : m_server(server)
{
    SetConnected(false);
}

IPCConnectionEventHelper::~IPCConnectionEventHelper() = default;

bool IPCConnectionEventHelper::OnExecute(const wxString&, const void* data, size_t size, wxIPCFormat format)
{
    TString<wchar_t> command;
    if (IPCPayload::Decode(data, size, format, command))
        m_server.SendExecuteEvent(command);
    return true;
}

} // namespace Toolkit
