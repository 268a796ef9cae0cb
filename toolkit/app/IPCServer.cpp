// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCServer.h"

#include "toolkit/app/IPCInternalServer.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/internal/wx/WxText.h"

namespace Toolkit
{

namespace
{

const wchar_t* const c_strExtension = L".ipc";

} // namespace

IPCServer::IPCServer(const TString<wchar_t>& service)
    : m_pServer(std::make_unique<IPCInternalServer>(*this)), m_strService(ServiceOrDefault(service))
{
}

IPCServer::~IPCServer() = default;

TString<wchar_t> IPCServer::ServiceOrDefault(const TString<wchar_t>& service)
{
    const smart_ptr<PathManager> paths = InstalledPathManager();
    if (!service.empty() || paths.IsNull())
        return service;
    TString<wchar_t> path;
    PathManager::AppendPath(path, paths->GetTempDir(), paths->GetUniqueInstanceName() + c_strExtension);
    return path;
}

bool IPCServer::Run()
{
    m_strService = ServiceOrDefault(m_strService);
    return m_pServer->Create(ToWx(m_strService));
}

void IPCServer::SendExecuteEvent(const TString<wchar_t>& command)
{
    Notify([&command](IPCConnectionEvent& listener) { listener.OnExecuteEvent(command); });
}

} // namespace Toolkit
