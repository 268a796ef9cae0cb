// SPDX-License-Identifier: MIT
// Asks for the network inside a network of its own, in which nothing but this process exists.
//   ProbeNetwork <network> <caller> <seconds> <folder>
// network: reachable (a server listens), refused (none does), silent (a server that takes no more
// connections), unresolvable (the host has no address); caller: started (main thread of wxWidgets),
// plain (wxWidgets not started), thread (another thread); folder: for files of this program. Prints the
// answer, the milliseconds, and what the server received. Ends with 77 where no network can be made.

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <wx/init.h>

#include "tests/support/OwnNetwork.h"
#include "toolkit/app/Network.h"
#include "toolkit/encoding/UTF8.h"

using Toolkit::Network;

namespace
{

bool MakeNetwork(const std::string& folder, bool resolvable)
{
    const std::string host = Toolkit::UTF8::ToUTF8(Network::c_strProbedHost);
    return ToolkitTest::EnterOwnNetwork(folder, resolvable ? "127.0.0.1 " + host + "\n" : "\n");
}

sockaddr_in ServerAddress()
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(80);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int Listen()
{
    const sockaddr_in address = ServerAddress();
    const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(server, 0) != 0)
        return -1;
    return server;
}

// Makes connections that nobody takes until one more is not answered.
void FillServer()
{
    const sockaddr_in address = ServerAddress();
    for (bool full = false; !full;)
    {
        const int client = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        pollfd waited = {client, POLLOUT, 0};
        full = poll(&waited, 1, 100) == 0;
    }
}

// The number of bytes that came over the connection, "none" without a connection.
std::string ReceivedBy(int server)
{
    pollfd waited = {server, POLLIN, 0};
    if (server == -1 || poll(&waited, 1, 0) != 1)
        return "none";
    const int connection = accept(server, nullptr, nullptr);
    char buffer[16];
    const ssize_t count = recv(connection, buffer, sizeof buffer, 0);
    close(connection);
    return std::to_string(count);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5)
        return 1;
    const std::string network = argv[1];
    const std::string caller = argv[2];
    if (!MakeNetwork(argv[4], network != "unresolvable"))
        return 77;
    const int server = network == "reachable" || network == "silent" ? Listen() : -1;
    if (network == "silent")
        FillServer();
    if (caller != "plain" && !wxInitialize())
        return 1;
    bool answer = false;
    const auto start = std::chrono::steady_clock::now();
    const auto ask = [&] { answer = Network::TestNetwork(std::atoi(argv[3])); };
    if (caller == "thread")
        std::thread(ask).join();
    else
        ask();
    const auto passed = std::chrono::steady_clock::now() - start;
    if (caller != "plain")
        wxUninitialize();
    std::cout << answer << " " << std::chrono::duration_cast<std::chrono::milliseconds>(passed).count() << " "
              << (network == "reachable" ? ReceivedBy(server) : "none") << "\n";
    return 0;
}
