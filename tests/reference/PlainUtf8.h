// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINUTF8_H
#define TOOLKIT_TESTS_REFERENCE_PLAINUTF8_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace ToolkitTest::PlainUtf8
{

// What UTF8 answers, written down from the table of RFC 3629 without regard to speed.

inline bool IsCharacter(std::uint32_t value)
{
    return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

// Up to the first NUL; empty when a character has no UTF-8 form.
inline std::string Encode(const std::wstring& text)
{
    std::string bytes;
    for (const wchar_t element : text)
    {
        const std::uint32_t value = static_cast<std::uint32_t>(element);
        if (value == 0)
            break;
        if (!IsCharacter(value))
            return std::string();
        const unsigned int more = value < 0x80 ? 0 : value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
        static const std::uint32_t lead[] = {0x00, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(lead[more] | value >> (6 * more));
        for (unsigned int left = more; left > 0; --left)
            bytes += static_cast<char>(0x80 | (value >> (6 * (left - 1)) & 0x3F));
    }
    return bytes;
}

// Up to the first NUL; empty when the bytes are not what a text encodes to.
inline std::wstring Decode(const std::string& bytes)
{
    const std::string given = bytes.substr(0, bytes.find('\0'));
    std::wstring text;
    for (std::size_t at = 0; at < given.size();)
    {
        const std::uint32_t lead = static_cast<unsigned char>(given[at++]);
        const unsigned int more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        std::uint32_t value = more == 0 ? lead : lead & (0x3FU >> more);
        for (unsigned int left = more; left > 0; --left)
            value = value << 6 | (at < given.size() ? static_cast<unsigned char>(given[at++]) & 0x3F : 0);
        text += static_cast<wchar_t>(value);
    }
    return Encode(text) == given ? text : std::wstring();
}

} // namespace ToolkitTest::PlainUtf8

#endif
