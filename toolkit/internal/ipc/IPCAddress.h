// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCADDRESS_H
#define TOOLKIT_INTERNAL_IPC_IPCADDRESS_H

#include <sys/socket.h>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// Where a service is reached; server and client find it by this one rule. Digits alone are a TCP port of this
// machine (127.0.0.1, which no other machine reaches), any other text is the path of a local socket file. A
// port outside of 1 to 65535, and a text that can be no path, are no address.
class IPCAddress
{
public:
    explicit IPCAddress(const TString<wchar_t>& service);

    bool IsValid() const { return m_uSize != 0; }
    // The socket file; empty for a port. A path that is too long for the system (more than 107 bytes) is cut
    // and ends in a hash of the whole; it stays in its folder unless that alone is too long, and in /tmp
    // else.
    const TString<char>& GetPath() const { return m_strPath; }
    bool IsLocal() const { return !m_strPath.empty(); }
    // The same from the root, whatever the working folder becomes.
    TString<char> GetAbsolutePath() const;

    // What the system's calls take.
    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&m_address); }
    socklen_t GetSize() const { return m_uSize; }
    int GetFamily() const { return m_address.ss_family; }
    // True when the socket is bound to this address.
    bool IsOf(int socket) const;

private:
    void SetPort(const TString<wchar_t>& digits);
    void SetPath(const TString<wchar_t>& path);

    sockaddr_storage m_address = {};
    socklen_t m_uSize = 0;
    TString<char> m_strPath;
};

} // namespace Toolkit

#endif
