// SPDX-License-Identifier: MIT
#include "toolkit/app/Network.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <wx/thread.h>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/net/NetPart.h"
#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/wx/WxLibrary.h"
#include "toolkit/internal/wx/WxText.h"

namespace Toolkit
{

namespace
{

const unsigned short s_uPort = 80;

// wxWidgets' sockets keep a graphical host alive while they wait; they work on its main thread only.
bool ConnectByWx(const NetCalls& net, int timeoutSeconds)
{
    const WxLibrary::Silence silence;
    return net.connect(ToWx(Network::c_strProbedHost), s_uPort, timeoutSeconds);
}

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressList Resolve()
{
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    const TString<char> host = UTF8::ToUTF8(Network::c_strProbedHost);
    getaddrinfo(host.c_str(), std::to_string(s_uPort).c_str(), &hints, &list);
    return AddressList(list, &freeaddrinfo);
}

// True when the connection under way on `descriptor` is made before the time-out.
bool IsConnectedWithin(int descriptor, int timeoutSeconds)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(timeoutSeconds);
    pollfd waited = {descriptor, POLLOUT, 0};
    int answer = 0;
    do
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        answer = poll(&waited, 1, static_cast<int>(std::clamp<long long>(left, 0, 3600 * 1000)));
    } while (answer <= 0 && (answer == 0 || errno == EINTR) && Clock::now() < deadline);
    int error = 0;
    socklen_t size = sizeof error;
    return answer > 0 && getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

bool ConnectOnAnyThread(int timeoutSeconds)
{
    const AddressList address = Resolve();
    if (address == nullptr)
        return false;
    const Descriptor connection(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    return connect(connection.Get(), address->ai_addr, address->ai_addrlen) == 0 ||
           (errno == EINPROGRESS && IsConnectedWithin(connection.Get(), timeoutSeconds));
}

} // namespace

TOOLKIT_ONCE const TString<wchar_t> Network::c_strProbedHost = L"www.example.com";

bool Network::TestNetwork(int timeoutSeconds)
{
    const int timeout = std::max(timeoutSeconds, 0);
    if (WxLibrary::IsStarted() && wxThread::IsMain())
        if (const Result<const NetCalls*> net = LoadNet())
            return ConnectByWx(**net, timeout);
    return ConnectOnAnyThread(timeout);
}

} // namespace Toolkit
