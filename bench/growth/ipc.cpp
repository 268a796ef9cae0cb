// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include <memory>

#include "toolkit/app/EventPump.h"
#include "toolkit/app/IPCClient.h"
#include "toolkit/app/IPCConnectionEvent.h"
#include "toolkit/app/IPCServer.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

class Listener : public IPCConnectionEvent
{
public:
    explicit Listener(std::size_t& told) : m_told(told) {}
    void OnExecuteEvent(const TString<wchar_t>&) override { ++m_told; }

private:
    std::size_t& m_told;
};

// A server in this very process, and how often its listeners were told.
class Channel
{
public:
    explicit Channel(std::size_t listeners) : m_strPath(NewPath()), m_server(m_strPath)
    {
        for (std::size_t i = 0; i < listeners; ++i)
            m_server.AddListener(smart_ptr<IPCConnectionEvent>(new Listener(m_uTold)));
    }

    bool Run() { return m_server.Run(); }
    void Announce(const TString<wchar_t>& command) { m_server.SendExecuteEvent(command); }

    // Returns when the listener was told.
    void Send(const TString<wchar_t>& command)
    {
        const std::size_t before = m_uTold;
        if (!IPCClient::Connect(m_strPath, command))
            return;
        for (int i = 0; i < 1000 && m_uTold == before; ++i)
            EventPump().Run(i == 0 ? 0 : 1);
    }

private:
    static TString<wchar_t> NewPath()
    {
        static int s_iCount = 0;
        return PathOf("ipc" + std::to_string(++s_iCount));
    }

    const TString<wchar_t> m_strPath;
    std::size_t m_uTold = 0;
    IPCServer m_server;
};

} // namespace

void AddIpc()
{
    Add("IpcCommandLength", s_vecMany,
        [](std::size_t length)
        {
            const auto channel = std::make_shared<Channel>(1);
            channel->Run();
            return [channel, command = WideText(length)] { channel->Send(command); };
        });
    Add("IpcCommands", {10, 40, 160, 640},
        [](std::size_t count)
        {
            const auto channel = std::make_shared<Channel>(1);
            channel->Run();
            return [channel, count, command = TString<wchar_t>(L"--open document.txt")]
            {
                for (std::size_t i = 0; i < count; ++i)
                    channel->Send(command);
            };
        });
    Add("IpcListeners", s_vecFew,
        [](std::size_t listeners)
        {
            return [channel = std::make_shared<Channel>(listeners),
                    command = TString<wchar_t>(L"--open document.txt")] { channel->Announce(command); };
        });
}

} // namespace ToolkitGrowth
