// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINQUOTEDPRINTABLE_H
#define TOOLKIT_TESTS_REFERENCE_PLAINQUOTEDPRINTABLE_H

#include <cstddef>
#include <string>

#include "toolkit/encoding/UTF8.h"

// Quoted-printable step by step, as it is defined: what the fast forms are compared with.
namespace ToolkitTest::PlainQuotedPrintable
{

inline bool IsQuoted(char byte)
{
    const unsigned char code = static_cast<unsigned char>(byte);
    return code < 32 || std::string(" \"(),/:;<=>?@[\\]").find(byte) != std::string::npos;
}

inline std::wstring Encode(const std::wstring& text)
{
    std::string encoded;
    for (const char byte : Toolkit::UTF8::ToUTF8(text))
    {
        const unsigned char code = static_cast<unsigned char>(byte);
        if (code <= 126 && !IsQuoted(byte))
        {
            encoded += byte;
            continue;
        }
        encoded += '=';
        encoded += "0123456789ABCDEF"[code / 16];
        encoded += "0123456789ABCDEF"[code % 16];
    }
    return Toolkit::UTF8::ToUNICODE(encoded);
}

inline std::wstring Encode(const std::wstring& text, unsigned int firstLine, unsigned int lineLength)
{
    std::wstring result = Encode(text);
    if (lineLength < 4 || firstLine == 0)
        return result;
    unsigned long long pos = firstLine - 1ULL;
    while (pos < result.size())
    {
        while (pos > 0 && result[static_cast<std::size_t>(pos) - 1] == L'=')
            --pos;
        result.insert(static_cast<std::size_t>(pos), L"=\r\n");
        pos += lineLength + 2ULL;
    }
    return result;
}

inline unsigned int DigitValue(char byte)
{
    if (byte >= '0' && byte <= '9')
        return static_cast<unsigned int>(byte - '0');
    if (byte >= 'A' && byte <= 'Z')
        return static_cast<unsigned int>(byte - 'A' + 10);
    if (byte >= 'a' && byte <= 'z')
        return static_cast<unsigned int>(byte - 'a' + 10);
    return byte == '\r' || byte == '\n' ? 254 : 255;
}

inline std::wstring Decode(const std::wstring& text)
{
    const std::string bytes = Toolkit::UTF8::ToUTF8(text);
    std::string decoded;
    std::size_t i = 0;
    while (i < bytes.size())
    {
        if (bytes[i] != '=' || bytes.size() - i < 3)
        {
            decoded += bytes[i];
            ++i;
            continue;
        }
        const unsigned int h1 = DigitValue(bytes[i + 1]);
        const unsigned int h2 = DigitValue(bytes[i + 2]);
        if (h1 > 16 || h2 > 16)
        {
            ++i;
            continue;
        }
        decoded += static_cast<char>(h1 * 16 + h2);
        i += 3;
    }
    return Toolkit::UTF8::ToUNICODE(decoded);
}

} // namespace ToolkitTest::PlainQuotedPrintable

#endif
