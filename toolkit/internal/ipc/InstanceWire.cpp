// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/InstanceWire.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "toolkit/internal/ipc/IPCMessage.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uLargestPiece = 1024 * 1024;
const char* const c_strTopic = "instance";

void AppendNumber(std::string& bytes, std::uint64_t number)
{
    for (unsigned int shift = 0; shift < 64; shift += 8)
        bytes += static_cast<char>(number >> shift & 0xff);
}

void AppendText(std::string& bytes, std::string_view text)
{
    AppendNumber(bytes, text.size());
    bytes += text;
}

bool TakeNumber(std::string_view& bytes, std::uint64_t& number)
{
    if (bytes.size() < 8)
        return false;
    number = 0;
    for (std::size_t i = 8; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    bytes.remove_prefix(8);
    return true;
}

bool TakeText(std::string_view& bytes, std::string& text)
{
    std::uint64_t size = 0;
    if (!TakeNumber(bytes, size) || size > bytes.size())
        return false;
    text = bytes.substr(0, static_cast<std::size_t>(size));
    bytes.remove_prefix(static_cast<std::size_t>(size));
    return true;
}

TString<char> InPieces(TString<char> messages, IPCMessage::Code code, std::string_view bytes)
{
    messages.reserve(messages.size() + bytes.size() + 16 * (bytes.size() / s_uLargestPiece + 1));
    do
    {
        const std::string_view piece = bytes.substr(0, s_uLargestPiece);
        bytes.remove_prefix(piece.size());
        IPCMessage::AppendItem(messages, code, bytes.empty() ? InstanceWire::s_uLast : InstanceWire::s_uMore,
                               piece);
    } while (!bytes.empty());
    return messages;
}

} // namespace

std::string InstanceWire::Encode(const Command& command)
{
    std::string bytes;
    AppendText(bytes, command.m_strFolder);
    for (const std::string& argument : command.m_arguments)
        AppendText(bytes, argument);
    TString<char> messages;
    IPCMessage::AppendConnect(messages, c_strTopic);
    return InPieces(std::move(messages), IPCMessage::Poke, bytes);
}

std::string InstanceWire::Encode(const Answer& answer, bool isAccepted)
{
    std::string bytes;
    AppendNumber(bytes, static_cast<std::uint64_t>(answer.m_iCode));
    AppendText(bytes, answer.m_strText);
    TString<char> messages;
    if (!isAccepted)
        messages += static_cast<char>(IPCMessage::Connect);
    return InPieces(std::move(messages), IPCMessage::Advise, bytes);
}

bool InstanceWire::Decode(std::string_view bytes, Command& command)
{
    if (!TakeText(bytes, command.m_strFolder))
        return false;
    while (!bytes.empty())
        if (!TakeText(bytes, command.m_arguments.emplace_back()))
            return false;
    return true;
}

bool InstanceWire::Decode(std::string_view bytes, Answer& answer)
{
    std::uint64_t code = 0;
    if (!TakeNumber(bytes, code) || !TakeText(bytes, answer.m_strText))
        return false;
    answer.m_iCode = static_cast<int>(static_cast<std::int64_t>(code));
    return bytes.empty();
}

} // namespace Toolkit
