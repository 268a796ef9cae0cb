// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCInternalServer.h"

#include "toolkit/app/IPCConnectionEventHelper.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCEndpoint.h"
#include "toolkit/internal/wx/WxText.h"
#include "toolkit/log/LogLine.h"

namespace Toolkit
{

namespace
{

void LogFailure(const TString<wchar_t>& failure)
{
    try
    {
        LogLine::Stream(LogSeverity::Error, __LINE__, "IPCEndpoint::HandOver",
                        L"a listener failed: " + failure);
    }
    catch (...)
    {
        // A sink that fails as well is no reason to end the host's loop.
    }
}

} // namespace

IPCInternalServer::IPCInternalServer(IPCServer& server)
    : m_server(server), m_pEndpoint(std::make_unique<IPCEndpoint>(*this, LogFailure))
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
