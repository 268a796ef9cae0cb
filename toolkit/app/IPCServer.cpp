// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCServer.h"

#include "toolkit/app/IPCInternalServer.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/wx/WxText.h"

namespace Toolkit
{

IPCServer::IPCServer(const TString<wchar_t>& service)
    : m_pServer(std::make_unique<IPCInternalServer>(*this)),
      m_strService(IPCAddress::ServiceOrDefault(service))
{
}

IPCServer::~IPCServer() = default;

bool IPCServer::Run()
{
    m_strService = IPCAddress::ServiceOrDefault(m_strService);
    return m_pServer->Create(ToWx(m_strService));
}

void IPCServer::SendExecuteEvent(const TString<wchar_t>& command)
{
    Notify([&command](IPCConnectionEvent& listener) { listener.OnExecuteEvent(command); });
}

} // namespace Toolkit
