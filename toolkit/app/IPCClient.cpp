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
#include "toolkit/threading/Mutex.h"

namespace Toolkit
{

namespace
{

const unsigned int s_uDefaultTimeout = 10000;

} // namespace

bool IPCClient::Connect(const TString<wchar_t>& service, const TString<wchar_t>& topic)
{
    return Connect(service, topic, s_uDefaultTimeout);
}

bool IPCClient::Connect(const TString<wchar_t>& service, const TString<wchar_t>& topic,
                        unsigned int timeoutMilliseconds)
{
    const IPCAddress address(IPCServer::ServiceOrDefault(service));
    const TString<char> text = UTF8::ToUTF8(topic);
    const bool empty = topic.empty() || topic[0] == L'\0';
    if (!address.IsValid() || text.empty() != empty || text.size() >= IPCMessage::s_uLargestPart)
        return false;
    TString<char> request;
    IPCMessage::AppendConnect(request, text);
    TString<char> command;
    IPCMessage::AppendExecute(command, text);
    IPCMessage::AppendDisconnect(command);
    std::optional<IPCConversation::Clock::time_point> end;
    if (timeoutMilliseconds != Mutex::s_uInfinite)
        end = IPCConversation::Clock::now() + std::chrono::milliseconds(timeoutMilliseconds);
    IPCConversation conversation(end, IPCEndpoint::WaitFor);
    return conversation.Open(address) == IPCConversation::Opened::Yes && conversation.Send(request) &&
           conversation.ReceiveByte() == IPCMessage::Connect && conversation.Send(command);
}

} // namespace Toolkit
