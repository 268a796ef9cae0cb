// SPDX-License-Identifier: MIT
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "bench/Bench.h"
#include "toolkit/app/Instance.h"

using Toolkit::Instance;

namespace
{

const char c_strKey[] = "org.example.bench";
const char c_strCommand[] = "--open /home/user/document.txt";

// Starts a process that serves; returns once that is ready.
void StartServer(const std::function<void(const std::function<void()>& ready)>& serve)
{
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0)
        return;
    const pid_t parent = getpid();
    if (fork() == 0)
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent)
            serve([writer = ends[1]] { benchmark::DoNotOptimize(write(writer, "!", 1)); });
        _exit(0);
    }
    close(ends[1]);
    char byte = 0;
    benchmark::DoNotOptimize(read(ends[0], &byte, 1));
    close(ends[0]);
}

sockaddr_un Address()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    (ToolkitBench::Folder() / "raw").string().copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

// Answers each command with itself.
void ServeRaw(const std::function<void()>& ready)
{
    const sockaddr_un address = Address();
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 16) != 0)
        return;
    ready();
    for (;;)
    {
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        char text[64];
        if (const ssize_t size = read(client, text, sizeof text); size > 0)
            benchmark::DoNotOptimize(write(client, text, static_cast<std::size_t>(size)));
        close(client);
    }
}

void AskRaw()
{
    const sockaddr_un address = Address();
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    char answer[64];
    if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        write(client, c_strCommand, sizeof c_strCommand) > 0)
        benchmark::DoNotOptimize(read(client, answer, sizeof answer));
    close(client);
}

void ServeToolkit(const std::function<void()>& ready)
{
    Instance first = Instance::Claim(c_strKey).value();
    first.Serve([](const Instance::Command& command)
                { return Instance::Answer(0, command.Arguments().front()); });
    ready();
    for (;;)
        pause();
}

} // namespace

void ToolkitBench::Register()
{
    setenv("XDG_RUNTIME_DIR", Folder().c_str(), 1);
    StartServer(&ServeRaw);
    StartServer(&ServeToolkit);
    static const Instance s_second = Instance::Claim(c_strKey).value();
    WholeOperation("Ask/Toolkit",
                   [] { benchmark::DoNotOptimize(s_second.Ask({c_strCommand}).value().Text().size()); });
    WholeOperation("Ask/limit", &AskRaw);
}
