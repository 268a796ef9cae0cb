// SPDX-License-Identifier: MIT
#include <cwchar>

#include <gtest/gtest.h>

#include "tests/soak/Loads.h"
#include "toolkit/app/IPCClient.h"

namespace ToolkitTest
{

namespace
{

const unsigned int s_uPatience = 60000;
// One command of so many is long.
const unsigned long s_uLongEvery = 200;
const std::size_t s_uLongText = 50000;

} // namespace

void CommandsLoad::Expect(unsigned int clients, unsigned long each)
{
    ++m_uRound;
    m_uEach = each;
    m_uMissing = clients * each;
    m_arrived.assign(clients, std::vector<bool>(each));
}

std::string CommandsLoad::Send(const std::wstring& service, unsigned int client) const
{
    for (unsigned long number = 0; number < m_uEach; ++number)
        if (!Toolkit::IPCClient::Connect(service, CommandOf(client, number), s_uPatience))
            return "client " + std::to_string(client) + " did not send command " + std::to_string(number);
    return "";
}

void CommandsLoad::OnExecuteEvent(const Toolkit::TString<wchar_t>& command)
{
    unsigned long round = 0;
    unsigned int client = 0;
    unsigned long number = 0;
    const int read = std::swscanf(command.c_str(), L"%lu %u %lu ", &round, &client, &number);
    const bool known = read == 3 && round == m_uRound && client < m_arrived.size() && number < m_uEach;
    if (!known || m_arrived[client][number] || command != CommandOf(client, number))
    {
        ADD_FAILURE() << "round " << m_uRound << ", not expected any more, or damaged: " << round << " "
                      << client << " " << number << " of " << command.size() << " characters";
        return;
    }
    m_arrived[client][number] = true;
    if (--m_uMissing == 0)
        m_pump.Stop();
}

std::wstring CommandsLoad::CommandOf(unsigned int client, unsigned long number) const
{
    static const wchar_t characters[] =
        L"aZ 09.\"\\\t\n\u007f\u00e4\u03a3\u20ac\u6253\uffff\U0001f600\U0010ffff";
    std::wstring command =
        std::to_wstring(m_uRound) + L" " + std::to_wstring(client) + L" " + std::to_wstring(number) + L" ";
    const unsigned long place = client + number;
    const std::size_t length = place % s_uLongEvery == s_uLongEvery - 1 ? s_uLongText : number % 64;
    command.reserve(command.size() + length);
    for (std::size_t i = 0; i < length; ++i)
        command += characters[(place + i * (1 + number % 7)) % (std::size(characters) - 1)];
    return command;
}

} // namespace ToolkitTest
