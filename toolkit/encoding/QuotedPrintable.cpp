// SPDX-License-Identifier: MIT
#include "toolkit/encoding/QuotedPrintable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "toolkit/internal/text/QuotedPrintableCodec.h"

namespace Toolkit
{

namespace
{

namespace Codec = QuotedPrintableCodec;

const std::size_t s_uLongestLine = 76;
const char c_strLineEnd[] = "\r\n";
const char c_strSoftBreak[] = "=\r\n";

// What stands for itself within a line.
constexpr std::array<bool, 256> MakePlain()
{
    std::array<bool, 256> plain{};
    for (std::size_t byte = ' '; byte <= '~'; ++byte)
        plain[byte] = byte != Codec::s_chEscape;
    plain['\t'] = true;
    return plain;
}

constexpr std::array<bool, 256> s_plain = MakePlain();

bool IsBlank(char byte)
{
    return byte == ' ' || byte == '\t';
}

// The encoded form of bytes that become one line, broken where it gets too long.
class Line
{
public:
    explicit Line(std::string& to) : m_to(to) {}

    void Append(std::string_view bytes)
    {
        while (!bytes.empty())
        {
            const std::size_t run = PlainRun(bytes);
            m_to.append(bytes.data(), run);
            m_uLength += run;
            bytes.remove_prefix(run);
            if (!bytes.empty())
                AppendNext(bytes);
        }
    }

private:
    // How many bytes stand for themselves before the line is full; the last character before a line end may
    // take the place of "=".
    std::size_t PlainRun(std::string_view bytes) const
    {
        const std::size_t room = s_uLongestLine - 1 - m_uLength;
        const std::size_t most = std::min(bytes.size(), bytes.size() == room + 1 ? room + 1 : room);
        std::size_t run = 0;
        while (run < most && s_plain[static_cast<unsigned char>(bytes[run])])
            ++run;
        return run == bytes.size() && run > 0 && IsBlank(bytes.back()) ? run - 1 : run;
    }

    // An escape, or a break that makes room.
    void AppendNext(std::string_view& bytes)
    {
        const bool escapes = !s_plain[static_cast<unsigned char>(bytes.front())] ||
                             (bytes.size() == 1 && IsBlank(bytes.front()));
        const std::size_t longest = bytes.size() == 1 ? s_uLongestLine : s_uLongestLine - 1;
        if (!escapes || m_uLength + Codec::s_uEscape > longest)
        {
            m_to += c_strSoftBreak;
            m_uLength = 0;
            return;
        }
        Codec::AppendEscape(m_to, static_cast<unsigned char>(bytes.front()));
        m_uLength += Codec::s_uEscape;
        bytes.remove_prefix(1);
    }

    std::string& m_to;
    std::size_t m_uLength = 0;
};

// What stands at "=", as Python's binascii takes it.
void TakeAtEscape(const char*& from, const char* end, char*& to)
{
    if (Codec::TakeEscape(from, end, to))
        return;
    ++from;
    if (from == end)
        return;
    if (*from == '\r' || *from == '\n')
    {
        from = static_cast<const char*>(std::memchr(from, '\n', static_cast<std::size_t>(end - from)));
        from = from == nullptr ? end : from + 1;
        return;
    }
    if (*from == Codec::s_chEscape)
        ++from;
    *to++ = Codec::s_chEscape;
}

} // namespace

std::string QuotedPrintable::Encode(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 4);
    for (;;)
    {
        const std::size_t end = bytes.find(c_strLineEnd);
        Line(text).Append(bytes.substr(0, end));
        if (end == bytes.npos)
            return text;
        text += c_strLineEnd;
        bytes.remove_prefix(end + std::strlen(c_strLineEnd));
    }
}

std::string QuotedPrintable::Decode(std::string_view text)
{
    return Codec::Decode(text, TakeAtEscape);
}

} // namespace Toolkit
