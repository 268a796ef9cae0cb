// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINSTREAM_H
#define TOOLKIT_TESTS_REFERENCE_PLAINSTREAM_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "toolkit/files/IStream.h"

namespace ToolkitTest
{

// A stream over bytes in memory that reads item by item as the file format is defined: what the file stream
// is compared with. The bytes are read from the start and written at the end.
class PlainStream : public Toolkit::IStream
{
public:
    explicit PlainStream(std::string bytes = std::string()) : m_strBytes(std::move(bytes)) {}

    const std::string& GetBytes() const { return m_strBytes; }

    Toolkit::StreamResult Write(const Toolkit::TString<wchar_t>& text) override
    {
        const unsigned int count = static_cast<unsigned int>(text.size() * 4);
        Write(count);
        return count == 0 ? Toolkit::StreamResult::Empty : Write(text.data(), count);
    }

    Toolkit::StreamResult Write(unsigned int value) override { return Write(&value, 4); }

    Toolkit::StreamResult Write(const void* data, unsigned int size) override
    {
        m_strBytes.append(static_cast<const char*>(data), size);
        return Toolkit::StreamResult::Ok;
    }

    Toolkit::StreamResult Read(Toolkit::TString<wchar_t>& text) override
    {
        unsigned int count = 0;
        if (Toolkit::IsError(Read(count)))
            return Toolkit::StreamResult::LengthReadFailed;
        if (count == 0)
            return Toolkit::StreamResult::Empty;
        std::string bytes = m_strBytes.substr(m_uPosition, count);
        m_uPosition += bytes.size();
        if (bytes.size() < count)
            return Toolkit::StreamResult::ShortTransfer;
        std::wstring read(count / 4, L'\0');
        std::copy_n(bytes.data(), read.size() * 4, reinterpret_cast<char*>(read.data()));
        text = std::wstring(read.c_str());
        return Toolkit::StreamResult::Ok;
    }

    Toolkit::StreamResult Read(unsigned int& value) override
    {
        unsigned int read = 0;
        if (Toolkit::IsError(Read(&read, 4)))
            return Toolkit::StreamResult::ShortTransfer;
        value = read;
        return Toolkit::StreamResult::Ok;
    }

    Toolkit::StreamResult Read(void* data, unsigned int size) override
    {
        const std::size_t count = std::min<std::size_t>(size, m_strBytes.size() - m_uPosition);
        std::copy_n(m_strBytes.data() + m_uPosition, count, static_cast<char*>(data));
        m_uPosition += count;
        return count == size ? Toolkit::StreamResult::Ok : Toolkit::StreamResult::ShortTransfer;
    }

    unsigned int Length() const override { return static_cast<unsigned int>(m_strBytes.size()); }

private:
    std::string m_strBytes;
    std::size_t m_uPosition = 0;
};

} // namespace ToolkitTest

#endif
