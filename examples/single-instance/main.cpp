// SPDX-License-Identifier: MIT
// Runs once for a user; a second start hands its command to the first one and ends: single-instance
// [<command>]

#include <toolkit/Toolkit.h>

#include <iostream>

using namespace Toolkit;

namespace
{

class Receiver : public IPCConnectionEvent
{
public:
    explicit Receiver(EventPump& pump) : m_pump(pump) {}

    void OnExecuteEvent(const TString<wchar_t>& command) override
    {
        std::cout << "received: " << UTF8::ToUTF8(command) << std::endl;
        if (command == L"quit")
            m_pump.Stop();
    }

private:
    EventPump& m_pump;
};

} // namespace

int main(int argumentCount, char** arguments)
{
    const ToolkitSession session;
    const TString<wchar_t> command =
        UTF8::ToUNICODE(TString<char>(argumentCount > 1 ? arguments[1] : "show"));

    // An empty service is the application's own channel, for the server and for its clients.
    if ((*SingleApplicationInstance::s_pInstance)->IsAlreadyRunning())
    {
        const bool sent = IPCClient::Connect(TString<wchar_t>::Empty(), command);
        std::cout << (sent ? "handed over" : "the first instance does not answer") << '\n';
        return sent ? 0 : 1;
    }

    EventPump pump;
    IPCServer server(TString<wchar_t>::Empty());
    server.AddListener(new Receiver(pump));
    if (!server.Run())
    {
        std::cout << "cannot listen\n";
        return 1;
    }
    std::cout << "waiting for commands, \"quit\" is the last one" << std::endl;
    pump.Run(4294967295);
}
