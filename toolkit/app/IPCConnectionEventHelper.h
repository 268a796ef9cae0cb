// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_IPCCONNECTIONEVENTHELPER_H
#define TOOLKIT_APP_IPCCONNECTIONEVENTHELPER_H

#include "toolkit/core/NeedsWx.h"

#include <wx/sckipc.h>

#include "toolkit/core/Export.h"

namespace Toolkit
{

class IPCServer;

/// One client's connection to an `IPCServer`: turns each execute request into an event of the server. It
/// deletes itself when the client disconnects; the server deletes those that are left when it is destroyed.
class TOOLKIT_API IPCConnectionEventHelper : public wxTCPConnection
{
public:
    /// The server must outlive the connection.
    explicit IPCConnectionEventHelper(IPCServer& server);
    ~IPCConnectionEventHelper() override;

    /// Decodes the data by its format and size (wide text as such, everything else as UTF-8), up to its first
    /// NUL, and sends it to the server's listeners, whose exceptions pass. True in any case. Quirk: what is
    /// no Unicode text is accepted, but no listener hears of it.
    bool OnExecute(const wxString& topic, const void* data, size_t size, wxIPCFormat format) override;

    /// A server sends nothing to its clients: null and false.
    const void* Request(const wxString& item, size_t* size = nullptr,
                        wxIPCFormat format = wxIPC_TEXT) override;
    /// Refuses: false.
    bool StartAdvise(const wxString& item) override;
    /// Refuses: false.
    bool StopAdvise(const wxString& item) override;

protected:
    bool DoExecute(const void* data, size_t size, wxIPCFormat format) override;
    bool DoPoke(const wxString& item, const void* data, size_t size, wxIPCFormat format) override;
    bool DoAdvise(const wxString& item, const void* data, size_t size, wxIPCFormat format) override;

private:
    IPCServer& m_server;
};

} // namespace Toolkit

#endif
