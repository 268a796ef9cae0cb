#include <algorithm>
#include <cstdint>
#include <string>

#include "tests/support/FuzzCheck.h"
#include "toolkit/app/IPCMessage.h"

namespace
{

using Toolkit::IPCMessageReader;
using Result = IPCMessageReader::Result;

// Everything that is read of the bytes when they arrive in pieces of that size.
std::string ReadAll(const std::string& bytes, std::size_t piece)
{
    IPCMessageReader reader;
    Toolkit::IPCMessage message;
    std::string read;
    for (std::size_t at = 0; at < bytes.size(); at += piece)
    {
        reader.Append(bytes.data() + at, std::min(piece, bytes.size() - at));
        Result result = Result::Incomplete;
        while ((result = reader.Next(message)) == Result::Complete)
            read.append(1, static_cast<char>(message.m_uCode))
                .append(1, static_cast<char>(message.m_uFormat))
                .append(std::to_string(message.m_strText.size()))
                .append(message.m_strText)
                .append(message.m_strData)
                .append("|");
        if (result == Result::Broken)
            return read + "broken";
        TOOLKIT_FUZZ_CHECK(reader.GetSize() <= bytes.size());
    }
    return read;
}

} // namespace

// The first byte is the size of the pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    TOOLKIT_FUZZ_CHECK(ReadAll(bytes, bytes.size()) == ReadAll(bytes, data[0] + 1U));
    return 0;
}
