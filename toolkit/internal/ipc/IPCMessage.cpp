// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCMessage.h"

#include <cstdint>
#include <iterator>
#include <string>

#include <wx/ipcbase.h>

namespace Toolkit
{

namespace
{

// The memory that a reader keeps beyond what it needs, for what comes next.
const std::size_t s_uKept = 64 * 1024;

// What follows a code, in this order.
struct Layout
{
    IPCMessage::Code m_code;
    bool m_bText;
    bool m_bFormat;
    bool m_bData;
};

const Layout s_layouts[] = {
    {IPCMessage::Execute, false, true, true},     {IPCMessage::Request, true, true, false},
    {IPCMessage::Poke, true, true, true},         {IPCMessage::AdviseStart, true, false, false},
    {IPCMessage::Advise, true, true, true},       {IPCMessage::AdviseStop, true, false, false},
    {IPCMessage::Fail, false, false, false},      {IPCMessage::Connect, true, false, false},
    {IPCMessage::Disconnect, false, false, false}};

const Layout* FindLayout(unsigned char code)
{
    for (const Layout& layout : s_layouts)
        if (layout.m_code == code)
            return &layout;
    return nullptr;
}

// Takes the parts of a message one after the other; the first one that is not there decides the result.
class Parts
{
public:
    explicit Parts(std::string_view bytes) : m_strRest(bytes) {}

    IPCMessageReader::Result GetResult() const { return m_result; }
    std::size_t GetRest() const { return m_strRest.size(); }

    unsigned char TakeByte()
    {
        const std::string_view byte = TakeBytes(1);
        return byte.empty() ? static_cast<unsigned char>(0) : static_cast<unsigned char>(byte[0]);
    }

    std::string_view TakeSized()
    {
        const std::string_view bytes = TakeBytes(4);
        std::uint32_t size = 0;
        for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
            size = size << 8 | static_cast<unsigned char>(*byte);
        if (size > IPCMessage::s_uLargestPart)
            m_result = IPCMessageReader::Result::Broken;
        return TakeBytes(size);
    }

private:
    std::string_view TakeBytes(std::size_t size)
    {
        if (m_result == IPCMessageReader::Result::Complete && size > m_strRest.size())
            m_result = IPCMessageReader::Result::Incomplete;
        if (m_result != IPCMessageReader::Result::Complete)
            return std::string_view();
        const std::string_view taken = m_strRest.substr(0, size);
        m_strRest.remove_prefix(size);
        return taken;
    }

    std::string_view m_strRest;
    IPCMessageReader::Result m_result = IPCMessageReader::Result::Complete;
};

void AppendCode(std::string& bytes, unsigned int code)
{
    bytes += static_cast<char>(code);
}

void AppendSize(std::string& bytes, std::size_t size)
{
    for (unsigned int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(size >> shift & 0xff);
}

} // namespace

void IPCMessage::AppendConnect(TString<char>& bytes, const TString<char>& topic)
{
    AppendCode(bytes, Connect);
    AppendSize(bytes, topic.size());
    bytes += topic;
}

void IPCMessage::AppendExecute(TString<char>& bytes, const TString<char>& text)
{
    AppendCode(bytes, Execute);
    AppendCode(bytes, wxIPC_UTF8TEXT);
    AppendSize(bytes, text.size() + 1);
    bytes.append(text.c_str(), text.size() + 1);
}

void IPCMessage::AppendItem(std::string& bytes, Code code, unsigned char format, std::string_view data)
{
    AppendCode(bytes, code);
    AppendSize(bytes, 0);
    AppendCode(bytes, format);
    AppendSize(bytes, data.size());
    bytes += data;
}

void IPCMessage::AppendDisconnect(TString<char>& bytes)
{
    AppendCode(bytes, Disconnect);
}

void IPCMessageReader::Append(const char* bytes, std::size_t size)
{
    const std::size_t needed = m_bytes.size() + size;
    if (needed > m_bytes.capacity())
        m_bytes.reserve(needed + needed / 8);
    m_bytes.insert(m_bytes.end(), bytes, bytes + size);
}

IPCMessageReader::Result IPCMessageReader::Next(IPCMessage& message)
{
    const Result result = Read(message);
    if (result == Result::Incomplete)
        ForgetRead();
    return result;
}

IPCMessageReader::Result IPCMessageReader::Read(IPCMessage& message)
{
    Parts parts(std::string_view(m_bytes.data(), m_bytes.size()).substr(m_uPosition));
    message = IPCMessage();
    message.m_uCode = parts.TakeByte();
    if (parts.GetResult() != Result::Complete)
        return parts.GetResult();
    const Layout* const layout = FindLayout(message.m_uCode);
    if (layout == nullptr)
        return Result::Broken;
    if (layout->m_bText)
        message.m_strText = parts.TakeSized();
    if (layout->m_bFormat)
        message.m_uFormat = parts.TakeByte();
    if (layout->m_bData)
        message.m_strData = parts.TakeSized();
    if (parts.GetResult() == Result::Complete)
        m_uPosition = m_bytes.size() - parts.GetRest();
    return parts.GetResult();
}

void IPCMessageReader::ForgetRead()
{
    m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(m_uPosition));
    m_uPosition = 0;
    if (m_bytes.capacity() > 2 * m_bytes.size() + s_uKept)
        m_bytes.shrink_to_fit();
}

} // namespace Toolkit
