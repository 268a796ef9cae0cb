// SPDX-License-Identifier: MIT
// A host that is served, or asks to be.
//   IPCHost serve <count>     prints "listening", then each command that arrives on the default channel as a
//   line
//                             of UTF-8, and ends after that many
//   IPCHost send <command>... sends each to the default channel; ends with 1 if one was not accepted

#include <cstdlib>
#include <cstring>
#include <iostream>

#include "toolkit/Toolkit.h"

using Toolkit::EventPump;
using Toolkit::TString;
using Toolkit::UTF8;

namespace
{

class Printer : public Toolkit::IPCConnectionEvent
{
public:
    Printer(EventPump& pump, int count) : m_pump(pump), m_iCount(count) {}

    void OnExecuteEvent(const TString<wchar_t>& command) override
    {
        std::cout << UTF8::ToUTF8(command) << std::endl;
        if (--m_iCount == 0)
            m_pump.Stop();
    }

private:
    EventPump& m_pump;
    int m_iCount;
};

int Serve(int count)
{
    EventPump pump;
    Toolkit::IPCServer server(L"");
    server.AddListener(Toolkit::smart_ptr<Toolkit::IPCConnectionEvent>(new Printer(pump, count)));
    if (!server.Run())
        return 1;
    std::cout << "listening" << std::endl;
    return pump.Run(60000) ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const Toolkit::ToolkitSession session;
    if (argc == 3 && std::strcmp(argv[1], "serve") == 0)
        return Serve(std::atoi(argv[2]));
    for (int i = 2; i < argc; ++i)
        if (!Toolkit::IPCClient::Connect(L"", UTF8::ToUNICODE(argv[i])))
            return 1;
    return 0;
}
