// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_IPCINTERNALSERVER_H
#define TOOLKIT_APP_IPCINTERNALSERVER_H

#include "toolkit/core/NeedsWx.h"

#include <memory>

#include <wx/sckipc.h>

#include "toolkit/app/IPCConnectionEventHelper.h"
#include "toolkit/app/IPCServer.h"
#include "toolkit/core/Export.h"

namespace Toolkit
{

/// The listening end of an `IPCServer`, which owns it. To its clients it is a server of wxWidgets, and
/// takes any client of wxWidgets; it listens by itself, as wxWidgets' own listening deletes
/// what lies at its path and waits for each client in turn.
///
/// All of it is inline, as its base is in wxWidgets' net library, which a program loads only if it needs it:
/// who makes an object of this class is linked with that library.
class TOOLKIT_API IPCInternalServer : public wxTCPServer
{
public:
    /// Does not listen before `Create`; the server owns this object.
    explicit IPCInternalServer(IPCServer& server) : m_server(server), m_pListening(server.Listen(*this)) {}
    ~IPCInternalServer() override = default;

    /// What `IPCServer::Run` returns, for that service.
    bool Create(const wxString& service) override { return m_pListening->Open(service); }

    /// Accepts every topic: a new `IPCConnectionEventHelper`, which the caller owns. Its `OnExecute` gets the
    /// topic with each command, but an empty text for one of more than 16 KiB.
    wxConnectionBase* OnAcceptConnection(const wxString&) override
    {
        return new IPCConnectionEventHelper(m_server);
    }

private:
    IPCServer& m_server;
    std::unique_ptr<IPCServer::Listening> m_pListening;
};

} // namespace Toolkit

#endif
