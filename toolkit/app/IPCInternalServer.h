// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_IPCINTERNALSERVER_H
#define TOOLKIT_APP_IPCINTERNALSERVER_H

#include "toolkit/core/NeedsWx.h"

#include <memory>

#include <wx/sckipc.h>

#include "toolkit/core/Export.h"

namespace Toolkit
{

class IPCEndpoint;
class IPCServer;

/// The listening end of an `IPCServer`, which owns it. To its clients it is a server of wxWidgets, and
/// takes any client of wxWidgets; it listens by itself, as wxWidgets' own listening deletes
/// what lies at its path and waits for each client in turn.
class TOOLKIT_API IPCInternalServer : public wxTCPServer
{
public:
    /// Does not listen before `Create`; the server owns this object.
    explicit IPCInternalServer(IPCServer& server);
    ~IPCInternalServer() override;

    /// What `IPCServer::Run` returns, for that service.
    bool Create(const wxString& service) override;

    /// Accepts every topic: a new `IPCConnectionEventHelper`, which the caller owns. Its `OnExecute` gets the
    /// topic with each command, but an empty text for one of more than 16 KiB.
    wxConnectionBase* OnAcceptConnection(const wxString& topic) override;

private:
    IPCServer& m_server;
    std::unique_ptr<IPCEndpoint> m_pEndpoint;
};

} // namespace Toolkit

#endif
