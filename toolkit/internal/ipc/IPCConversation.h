// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCCONVERSATION_H
#define TOOLKIT_INTERNAL_IPC_IPCCONVERSATION_H

#include <chrono>
#include <optional>
#include <string_view>

#include "toolkit/core/TString.h"
#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{

class IPCAddress;

// A client's connection to a server, under one time limit for all that is done with it. Whatever fails, fails
// for good.
class IPCConversation
{
public:
    using Clock = std::chrono::steady_clock;
    // Waits for events of `poll` on a descriptor, or on none (-1), for so many milliseconds; true when they
    // are there.
    using Wait = bool (*)(int descriptor, short events, int milliseconds);

    // Without an end it waits for ever.
    IPCConversation(std::optional<Clock::time_point> end, Wait wait) : m_end(end), m_wait(wait) {}

    enum class Opened
    {
        Yes,
        // Nobody listens there, or there is no such socket of this user.
        Nobody,
        // Somebody else listens there.
        Stranger,
        // A server listens there, and takes nobody more for now.
        Busy,
        // It cannot be told, for the reason in errno.
        No
    };
    Opened Open(const IPCAddress& address);
    bool Send(std::string_view bytes);
    // At least one byte, at most `size`; 0 when the server sends none.
    std::size_t Receive(char* buffer, std::size_t size);
    // The next one; nothing when the server sends none.
    std::optional<unsigned char> ReceiveByte();

    // Has a server execute a text: it is sent as the topic, and again as the command once the server accepted
    // that. True when all is sent.
    bool SendCommand(const TString<char>& text);

    // False when the time is over.
    bool IsTimeLeft() const { return TimeLeft() > 0; }
    void Pause(int milliseconds) const;

private:
    Opened ConnectTo(const IPCAddress& address);
    bool HasNoError() const;
    bool WaitFor(short events) const;
    int TimeLeft() const;

    const std::optional<Clock::time_point> m_end;
    const Wait m_wait;
    Descriptor m_socket;
};

} // namespace Toolkit

#endif
