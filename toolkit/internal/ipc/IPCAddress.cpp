// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCAddress.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

#include <netinet/in.h>
#include <sys/un.h>
#include <unistd.h>

#include "toolkit/internal/system/PathNames.h"
#include "toolkit/internal/text/Fingerprint.h"

namespace Toolkit
{

namespace
{

const unsigned long s_uLastPort = 65535;
// A path in a socket's address ends in a zero.
const std::size_t s_uLongestPath = sizeof(sockaddr_un::sun_path) - 1;
const char* const c_strFolderOfLongPaths = "/tmp/";

bool IsPort(const TString<wchar_t>& service)
{
    return std::all_of(service.begin(), service.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

TString<char> Absolute(const TString<char>& path)
{
    char folder[PATH_MAX];
    if (path[0] == '/' || getcwd(folder, sizeof folder) == nullptr)
        return path;
    return TString<char>(folder).append("/").append(path);
}

bool IsInsideOfCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

// The rule that `GetPath` describes; two long paths that differ anywhere have different short ones.
TString<char> Shorten(const TString<char>& path)
{
    if (path.size() <= s_uLongestPath)
        return path;
    const TString<char> tail = "~" + Fingerprint(Absolute(path));
    std::size_t kept = s_uLongestPath - tail.size();
    // Without a folder this is 0.
    if (path.rfind('/') + 1 > kept)
        return c_strFolderOfLongPaths + tail;
    while (IsInsideOfCharacter(path[kept]))
        --kept;
    return path.substr(0, kept) + tail;
}

} // namespace

IPCAddress::IPCAddress(const TString<wchar_t>& service)
{
    if (!service.empty() && IsPort(service))
        SetPort(service);
    else
        SetPath(service);
}

bool IPCAddress::IsOf(int socket) const
{
    sockaddr_storage bound = {};
    socklen_t size = sizeof bound;
    return getsockname(socket, reinterpret_cast<sockaddr*>(&bound), &size) == 0 &&
           std::memcmp(&bound, &m_address, sizeof bound) == 0;
}

TString<char> IPCAddress::GetAbsolutePath() const
{
    return Absolute(m_strPath);
}

void IPCAddress::SetPort(const TString<wchar_t>& digits)
{
    unsigned long port = 0;
    for (const wchar_t digit : digits)
        port = std::min(port * 10 + static_cast<unsigned long>(digit - L'0'), s_uLastPort + 1);
    if (port == 0 || port > s_uLastPort)
        return;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::memcpy(&m_address, &address, sizeof address);
    m_uSize = sizeof address;
}

void IPCAddress::SetPath(const TString<wchar_t>& path)
{
    m_strPath = PathNames::ToNative(path);
    if (m_strPath.empty())
        return;
    m_strPath = Shorten(m_strPath);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    m_strPath.copy(address.sun_path, s_uLongestPath);
    std::memcpy(&m_address, &address, sizeof address);
    m_uSize = sizeof address;
}

} // namespace Toolkit
