// SPDX-License-Identifier: MIT
#include "toolkit/app/IPCClient.h"

#include <chrono>
#include <optional>

#include "toolkit/app/IPCServer.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/ipc/IPCConversation.h"
#include "toolkit/internal/ipc/IPCEndpoint.h"
#include "toolkit/internal/ipc/IPCMessage.h"
#include "toolkit/internal/ipc/InstancePlace.h"
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

namespace
{

const unsigned int s_uDefaultTimeout = 10000;

// The first instance whose key is the name of the service.
IPCConversation::Opened OpenInstance(IPCConversation& conversation, const TString<char>& key)
{
    const Result<InstancePlace> place = InstancePlace::Find(key);
    return place ? conversation.Open(place->Socket()) : IPCConversation::Opened::Nobody;
}

} // namespace

bool IPCClient::Connect(const TString<wchar_t>& service, const TString<wchar_t>& topic)
{
    return Connect(service, topic, s_uDefaultTimeout);
}

bool IPCClient::Connect(const TString<wchar_t>& service, const TString<wchar_t>& topic,
                        unsigned int timeoutMilliseconds)
{
    const TString<wchar_t> name = IPCServer::ServiceOrDefault(service);
    const IPCAddress address(name);
    const TString<char> text = UTF8::ToUTF8(topic);
    const bool empty = topic.empty() || topic[0] == L'\0';
    if (!address.IsValid() || text.empty() != empty || text.size() >= IPCMessage::s_uLargestPart)
        return false;
    std::optional<IPCConversation::Clock::time_point> end;
    if (timeoutMilliseconds != Mutex::s_uInfinite)
        end = IPCConversation::Clock::now() + std::chrono::milliseconds(timeoutMilliseconds);
    IPCConversation conversation(end, IPCEndpoint::WaitFor);
    IPCConversation::Opened opened = conversation.Open(address);
    if (opened == IPCConversation::Opened::Nobody)
        opened = OpenInstance(conversation, UTF8::ToUTF8(name));
    return opened == IPCConversation::Opened::Yes && conversation.SendCommand(text);
}

} // namespace Toolkit
