// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/reference/PlainIpcMessages.h"
#include "tests/support/FuzzCheck.h"
#include "toolkit/internal/ipc/IPCMessage.h"

namespace
{

using Toolkit::IPCMessageReader;
using ToolkitTest::PlainIpcMessages;
using Result = IPCMessageReader::Result;

// True when a message has what the plain form has of it, and nothing else.
bool IsSame(const Toolkit::IPCMessage& message, PlainIpcMessages::Message plain)
{
    const std::string format = plain.count('f') != 0 ? plain['f'] : std::string(1, '\0');
    return std::string(1, static_cast<char>(message.m_uCode)) == plain['c'] &&
           std::string(1, static_cast<char>(message.m_uFormat)) == format &&
           message.m_strText == plain['t'] && message.m_strData == plain['d'];
}

// Compares everything that is read of the bytes when they arrive in pieces of that size.
void Compare(const std::string& bytes, std::size_t piece, const PlainIpcMessages& plain)
{
    IPCMessageReader reader;
    Toolkit::IPCMessage message;
    Result result = Result::Incomplete;
    auto expected = plain.messages.begin();
    for (std::size_t at = 0; at < bytes.size() && result == Result::Incomplete; at += piece)
    {
        reader.Append(bytes.data() + at, std::min(piece, bytes.size() - at));
        for (; (result = reader.Next(message)) == Result::Complete; ++expected)
            TOOLKIT_FUZZ_CHECK(expected != plain.messages.end() && IsSame(message, *expected));
    }
    TOOLKIT_FUZZ_CHECK(expected == plain.messages.end());
    TOOLKIT_FUZZ_CHECK(result == (plain.broken ? Result::Broken : Result::Incomplete));
    TOOLKIT_FUZZ_CHECK(plain.broken || reader.GetSize() == plain.rest.size());
}

} // namespace

// The first byte is the size of the pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const PlainIpcMessages plain(bytes);
    Compare(bytes, bytes.size(), plain);
    Compare(bytes, data[0] + 1U, plain);
    return 0;
}
