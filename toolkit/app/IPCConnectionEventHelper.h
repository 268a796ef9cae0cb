// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_IPCCONNECTIONEVENTHELPER_H
#define TOOLKIT_APP_IPCCONNECTIONEVENTHELPER_H

#include "toolkit/core/NeedsWx.h"

#include <wx/sckipc.h>

#include "toolkit/app/IPCServer.h"
#include "toolkit/core/Export.h"

namespace Toolkit
{

/// One client's connection to an `IPCServer`: turns each execute request into an event of the server. It
/// deletes itself when the client disconnects; the server deletes those that are left when it is destroyed.
/// Inline for the reason that `IPCInternalServer` has.
class TOOLKIT_API IPCConnectionEventHelper : public wxTCPConnection
{
public:
    /// The server must outlive the connection. wxWidgets' part of it carries nothing, and has nothing to
    /// disconnect.
    explicit IPCConnectionEventHelper(IPCServer& server) : m_server(server) { SetConnected(false); }
    ~IPCConnectionEventHelper() override = default;

    /// Decodes the data by its format and size (wide text as such, everything else as UTF-8), up to its first
    /// NUL, and sends it to the server's listeners, whose exceptions pass. True in any case. Quirk: what is
    /// no Unicode text is accepted, but no listener hears of it.
    bool OnExecute(const wxString&, const void* data, size_t size, wxIPCFormat format) override
    {
        m_server.Execute(data, size, format);
        return true;
    }

    /// A server sends nothing to its clients: null and false.
    const void* Request(const wxString&, size_t* size = nullptr, wxIPCFormat = wxIPC_TEXT) override
    {
        if (size != nullptr)
            *size = 0;
        return nullptr;
    }
    /// Refuses: false.
    bool StartAdvise(const wxString&) override { return false; }
    /// Refuses: false.
    bool StopAdvise(const wxString&) override { return false; }

protected:
    bool DoExecute(const void*, size_t, wxIPCFormat) override { return false; }
    bool DoPoke(const wxString&, const void*, size_t, wxIPCFormat) override { return false; }
    bool DoAdvise(const wxString&, const void*, size_t, wxIPCFormat) override { return false; }

private:
    IPCServer& m_server;
};

} // namespace Toolkit

#endif
