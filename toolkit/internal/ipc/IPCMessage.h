// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCMESSAGE_H
#define TOOLKIT_INTERNAL_IPC_IPCMESSAGE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// One message of wxWidgets' protocol for connections over sockets: a code of one byte and what
// belongs to it, sizes as 32-bit numbers with the lowest byte first. The texts are views of the reader's
// memory.
struct IPCMessage
{
    enum Code : unsigned char
    {
        Execute = 1,
        Request = 2,
        Poke = 3,
        AdviseStart = 4,
        Advise = 6,
        AdviseStop = 7,
        Fail = 9,
        Connect = 10,
        Disconnect = 11
    };

    // The largest text and the largest data of one message, in bytes.
    static const std::size_t s_uLargestPart = 64 * 1024 * 1024;

    unsigned char m_uCode = 0;
    unsigned char m_uFormat = 0;
    // A topic or an item, UTF-8.
    std::string_view m_strText;
    std::string_view m_strData;

    // The messages of a client, appended to `bytes`.
    static void AppendConnect(TString<char>& bytes, const TString<char>& topic);
    // The text is sent with its terminating NUL.
    static void AppendExecute(TString<char>& bytes, const TString<char>& text);
    // Poke or Advise of data to an item without a name.
    static void AppendItem(std::string& bytes, Code code, unsigned char format, std::string_view data);
    static void AppendDisconnect(TString<char>& bytes);
};

// Finds the messages in what arrives, piece by piece. It takes no more memory than has arrived, whatever
// sizes are declared.
class IPCMessageReader
{
public:
    enum class Result
    {
        Complete,
        // More has to arrive.
        Incomplete,
        // No message of the protocol, or one that is too large; there is no going on.
        Broken
    };

    // Takes in what arrived.
    void Append(const char* bytes, std::size_t size);
    // The views of a message live until the next call of either operation.
    Result Next(IPCMessage& message);

    // What it holds of a message that is not complete, in bytes, after an answer of `Incomplete`.
    std::size_t GetSize() const { return m_bytes.size(); }
    // What it takes for that, in bytes: at most twice as much, and some that it keeps for what comes next.
    std::size_t GetMemory() const { return m_bytes.capacity(); }

private:
    Result Read(IPCMessage& message);
    void ForgetRead();

    std::vector<char> m_bytes;
    std::size_t m_uPosition = 0;
};

} // namespace Toolkit

#endif
