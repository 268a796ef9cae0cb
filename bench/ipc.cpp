// SPDX-License-Identifier: MIT
#include <csignal>
#include <functional>
#include <memory>
#include <string>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <wx/sckipc.h>

#include "bench/Bench.h"
#include "toolkit/app/EventPump.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/app/IPCServer.h"
#include "toolkit/core/ToolkitSession.h"

#ifdef BENCH_QTNETWORK
#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#endif

using namespace Toolkit;

namespace
{

const char s_strCommand[] = "--open /home/user/document.txt";

// A process that serves at a path, which says through a pipe when it is ready and each time it has got a
// command.
class Server
{
public:
    using Serve = std::function<void(const std::string& path, const std::function<void()>& say)>;

    Server(const std::string& name, const Serve& serve) : m_strPath((ToolkitBench::Folder() / name).string())
    {
        int ends[2] = {-1, -1};
        if (pipe(ends) != 0)
            return;
        const pid_t parent = getpid();
        const pid_t child = fork();
        if (child == 0)
        {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            close(ends[0]);
            if (getppid() == parent)
                serve(m_strPath, [writer = ends[1]] { benchmark::DoNotOptimize(write(writer, "!", 1)); });
            _exit(0);
        }
        close(ends[1]);
        m_iSaid = ends[0];
    }

    const std::string& Path() const { return m_strPath; }

    // False when it says nothing for ten seconds.
    bool Wait() const
    {
        pollfd said = {m_iSaid, POLLIN, 0};
        char byte = 0;
        return poll(&said, 1, 10000) == 1 && read(m_iSaid, &byte, 1) == 1;
    }

private:
    const std::string m_strPath;
    int m_iSaid = -1;
};

sockaddr_un Address(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

void ServeRaw(const std::string& path, const std::function<void()>& say)
{
    const sockaddr_un address = Address(path);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 16) != 0)
        return;
    say();
    for (;;)
    {
        const int client = accept(listener, nullptr, nullptr);
        char text[64];
        if (read(client, text, sizeof text) > 0)
            say();
        close(client);
    }
}

void ConnectRaw(const std::string& path)
{
    const sockaddr_un address = Address(path);
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        benchmark::DoNotOptimize(write(client, s_strCommand, sizeof s_strCommand));
    close(client);
}

class Announcer : public IPCConnectionEvent
{
public:
    explicit Announcer(std::function<void()> say) : m_say(std::move(say)) {}
    void OnExecuteEvent(const TString<wchar_t>&) override { m_say(); }

private:
    const std::function<void()> m_say;
};

std::wstring Wide(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

void ServeToolkit(const std::string& path, const std::function<void()>& say)
{
    const ToolkitSession session;
    IPCServer server{TString<wchar_t>(Wide(path))};
    server.AddListener(smart_ptr<IPCConnectionEvent>(new Announcer(say)));
    if (!server.Run())
        return;
    say();
    EventPump().Run(4294967295U);
}

class WxConnection : public wxTCPConnection
{
public:
    explicit WxConnection(std::function<void()> say) : m_say(std::move(say)) {}
    bool OnExec(const wxString&, const wxString&) override
    {
        m_say();
        return true;
    }

private:
    const std::function<void()> m_say;
};

class WxServer : public wxTCPServer
{
public:
    explicit WxServer(std::function<void()> say) : m_say(std::move(say)) {}
    wxConnectionBase* OnAcceptConnection(const wxString&) override { return new WxConnection(m_say); }

private:
    const std::function<void()> m_say;
};

void ServeWx(const std::string& path, const std::function<void()>& say)
{
    const ToolkitSession session;
    WxServer server(say);
    if (!server.Create(path))
        return;
    say();
    EventPump().Run(4294967295U);
}

void ConnectWx(const std::string& path)
{
    wxTCPClient client;
    const std::unique_ptr<wxConnectionBase> connection(client.MakeConnection("localhost", path, "command"));
    if (connection != nullptr)
        connection->Execute(wxString(s_strCommand));
}

#ifdef BENCH_QTNETWORK
char s_strProgram[] = "bench";
char* s_arguments[] = {s_strProgram, nullptr};
int s_iArguments = 1;

void ServeQt(const std::string& path, const std::function<void()>& say)
{
    QCoreApplication application(s_iArguments, s_arguments);
    QLocalServer server;
    QObject::connect(&server, &QLocalServer::newConnection,
                     [&]
                     {
                         QLocalSocket* const client = server.nextPendingConnection();
                         QObject::connect(client, &QLocalSocket::readyRead,
                                          [client, say]
                                          {
                                              client->readAll();
                                              say();
                                          });
                         QObject::connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
                     });
    if (!server.listen(QString::fromStdString(path)))
        return;
    say();
    QCoreApplication::exec();
}

void ConnectQt(const std::string& path)
{
    QLocalSocket client;
    client.connectToServer(QString::fromStdString(path));
    if (!client.waitForConnected())
        return;
    client.write(s_strCommand, sizeof s_strCommand);
    client.waitForBytesWritten();
}
#endif

// From the client's start to the listener's call.
void Add(const std::string& whose, const std::shared_ptr<Server>& server,
         const std::function<void(const std::string&)>& connect)
{
    if (!server->Wait())
        return;
    benchmark::RegisterBenchmark(("Connect/" + whose).c_str(),
                                 [server, connect](benchmark::State& state)
                                 {
                                     bool answered = true;
                                     const auto work = [&]
                                     {
                                         connect(server->Path());
                                         answered = answered && server->Wait();
                                     };
                                     ToolkitBench::Measure(state, work);
                                     if (!answered)
                                         state.SkipWithError("no answer");
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

void ToolkitBench::Register()
{
    // Forked before a library starts anything.
    const auto toolkit = std::make_shared<Server>("toolkit.ipc", &ServeToolkit);
    const auto limit = std::make_shared<Server>("raw.ipc", &ServeRaw);
    const auto wx = std::make_shared<Server>("wx.ipc", &ServeWx);
#ifdef BENCH_QTNETWORK
    const auto qt = std::make_shared<Server>("qt.ipc", &ServeQt);
    static QCoreApplication s_application(s_iArguments, s_arguments);
#endif
    static const ToolkitSession s_session;
    Add("Toolkit", toolkit,
        [command = TString<wchar_t>(Wide(s_strCommand))](const std::string& path)
        { benchmark::DoNotOptimize(IPCClient::Connect(TString<wchar_t>(Wide(path)), command)); });
    Add("limit", limit, &ConnectRaw);
    Add("wx", wx, &ConnectWx);
#ifdef BENCH_QTNETWORK
    Add("Qt", qt, &ConnectQt);
#endif
}
