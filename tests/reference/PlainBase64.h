// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINBASE64_H
#define TOOLKIT_TESTS_REFERENCE_PLAINBASE64_H

#include <cstddef>
#include <cstdint>
#include <string>

// Base64 step by step, as it is defined: what the fast forms are compared with.
namespace ToolkitTest::PlainBase64
{

inline std::string Encode(const std::string& bytes)
{
    static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
    {
        const auto byte = [&bytes, i](std::size_t k) -> std::uint32_t
        { return i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U; };
        const std::uint32_t value = byte(0) * 65536 + byte(1) * 256 + byte(2);
        for (int shift = 18; shift >= 0; shift -= 6)
            text += alphabet[value >> shift & 63];
        const std::size_t left = bytes.size() - i;
        if (left < 3)
            text.back() = '=';
        if (left < 2)
            text[text.size() - 2] = '=';
    }
    return text;
}

inline std::uint32_t ValueOf(char character)
{
    const auto value = [](int number) { return static_cast<std::uint32_t>(number); };
    if (character >= 'A' && character <= 'Z')
        return value(character - 'A');
    if (character >= 'a' && character <= 'z')
        return value(character - 'a' + 26);
    if (character >= '0' && character <= '9')
        return value(character - '0' + 52);
    return character == '+' ? 62 : character == '/' ? 63 : 0;
}

inline std::string Decode(const std::string& text)
{
    std::string bytes;
    std::uint32_t accumulator = 0;
    const auto append = [&](int shift) { bytes += static_cast<char>(accumulator >> shift & 255); };
    for (std::size_t k = 0; k < text.size(); ++k)
    {
        const int q = static_cast<int>(k % 4);
        if (text[k] == '=')
        {
            const int p = q - 1;
            append(16);
            if (p <= 1)
                return bytes;
            append(8);
            bytes += '\0';
            return bytes;
        }
        accumulator += ValueOf(text[k]) << (3 - q) * 6;
        if (q == 3)
        {
            append(16);
            append(8);
            append(0);
            accumulator = 0;
        }
    }
    return bytes;
}

} // namespace ToolkitTest::PlainBase64

#endif
