// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCServer.h"

#include <wx/ipcbase.h>

#include "toolkit/app/PathManager.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCEndpoint.h"
#include "toolkit/internal/ipc/IPCPayload.h"
#include "toolkit/internal/net/NetPart.h"
#include "toolkit/internal/wx/WxText.h"
#include "toolkit/log/LogLine.h"

namespace Toolkit
{

namespace
{

const wchar_t* const c_strExtension = L".ipc";

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

IPCServer::IPCServer(const TString<wchar_t>& service) : m_strService(ServiceOrDefault(service))
{
    if (const Result<const NetCalls*> net = LoadNet())
        m_pServer.reset((*net)->newServer(*this));
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
    const Result<const NetCalls*> net = LoadNet();
    if (!net)
    {
        LogLine::Stream(LogSeverity::Error, __LINE__, "IPCServer::Run",
                        UTF8::ToUNICODE(TString<char>(net.error().Message())));
        return false;
    }
    if (m_pServer == nullptr)
        m_pServer.reset((*net)->newServer(*this));
    return m_pServer->Create(ToWx(m_strService));
}

void IPCServer::SendExecuteEvent(const TString<wchar_t>& command)
{
    Notify([&command](IPCConnectionEvent& listener) { listener.OnExecuteEvent(command); });
}

std::unique_ptr<IPCServer::Listening> IPCServer::Listen(wxServerBase& server)
{
    class Endpoint : public Listening
    {
    public:
        explicit Endpoint(wxServerBase& accepting) : m_endpoint(accepting, LogFailure) {}
        bool Open(const wxString& service) override { return m_endpoint.Open(IPCAddress(FromWx(service))); }

    private:
        IPCEndpoint m_endpoint;
    };
    return std::make_unique<Endpoint>(server);
}

void IPCServer::Execute(const void* data, std::size_t size, int format)
{
    TString<wchar_t> command;
    if (IPCPayload::Decode(data, size, format, command))
        SendExecuteEvent(command);
}

} // namespace Toolkit
