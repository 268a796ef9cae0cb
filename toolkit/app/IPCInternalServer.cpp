// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCInternalServer.h"

#include "toolkit/app/IPCConnectionEventHelper.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCEndpoint.h"
#include "toolkit/internal/wx/WxText.h"

namespace Toolkit
{

IPCInternalServer::IPCInternalServer(IPCServer& server)
    : m_server(server), m_pEndpoint(std::make_unique<IPCEndpoint>(*this))
{
}

IPCInternalServer::~IPCInternalServer() = default;

bool IPCInternalServer::Create(const wxString& service)
{
    return m_pEndpoint->Open(IPCAddress(FromWx(service)));
}

wxConnectionBase* IPCInternalServer::OnAcceptConnection(const wxString&)
{
    return new IPCConnectionEventHelper(m_server);
}

} // namespace Toolkit
