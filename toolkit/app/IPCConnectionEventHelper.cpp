// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCConnectionEventHelper.h"

#include "toolkit/app/IPCServer.h"
#include "toolkit/internal/ipc/IPCPayload.h"

namespace Toolkit
{

// wxWidgets' part of the connection carries nothing, and has nothing to disconnect.
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

const void* IPCConnectionEventHelper::Request(const wxString&, size_t* size, wxIPCFormat)
{
    if (size != nullptr)
        *size = 0;
    return nullptr;
}

bool IPCConnectionEventHelper::StartAdvise(const wxString&)
{
    return false;
}

bool IPCConnectionEventHelper::StopAdvise(const wxString&)
{
    return false;
}

bool IPCConnectionEventHelper::DoExecute(const void*, size_t, wxIPCFormat)
{
    return false;
}

bool IPCConnectionEventHelper::DoPoke(const wxString&, const void*, size_t, wxIPCFormat)
{
    return false;
}

bool IPCConnectionEventHelper::DoAdvise(const wxString&, const void*, size_t, wxIPCFormat)
{
    return false;
}

} // namespace Toolkit
