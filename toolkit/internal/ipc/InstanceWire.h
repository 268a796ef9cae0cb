// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_INSTANCEWIRE_H
#define TOOLKIT_INTERNAL_IPC_INSTANCEWIRE_H

#include <string>
#include <string_view>
#include <vector>

namespace Toolkit
{

// What an instance and those who ask it say to each other, in messages of the protocol of `IPCMessage`: the
// wish to be connected and a command in pieces that are poked, all at once, so that nobody waits in between;
// then, once the connection is accepted, the answer in pieces that are advised.
// Numbers have 64 bits, the lowest byte first; texts are bytes with their length before them.
namespace InstanceWire
{

// The format of a piece that others follow, and of the last one.
const unsigned char s_uMore = 1;
const unsigned char s_uLast = 2;

struct Command
{
    std::vector<std::string> m_arguments;
    // Where the asker stands.
    std::string m_strFolder;
};

struct Answer
{
    int m_iCode = 0;
    std::string m_strText;
};

// The messages, the wish to be connected before a command.
std::string Encode(const Command& command);
// The acceptance of the connection before an answer unless the asker has it already.
std::string Encode(const Answer& answer, bool isAccepted);

// From what the pieces hold together; false when that is no command, or no answer.
bool Decode(std::string_view bytes, Command& command);
bool Decode(std::string_view bytes, Answer& answer);

} // namespace InstanceWire

} // namespace Toolkit

#endif
