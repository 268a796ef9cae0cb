// SPDX-License-Identifier: MIT
#include "Text.h"

#include <iostream>

namespace Desk
{

namespace
{

bool IsSpace(char character)
{
    return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

// Where a character of UTF-8 begins; its other bytes are 10xxxxxx.
bool BeginsCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

} // namespace

std::vector<std::string> Lines(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty())
    {
        const std::size_t end = text.find('\n');
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end == text.npos ? text.size() : end + 1);
    }
    return lines;
}

std::string Preview(std::string_view text, std::size_t length)
{
    std::string line;
    bool space = false;
    std::size_t characters = 0;
    for (const char byte : text)
    {
        if (IsSpace(byte))
        {
            space = !line.empty();
            continue;
        }
        characters += BeginsCharacter(byte) ? (space ? 2U : 1U) : 0U;
        if (characters > length)
            return line + "...";
        if (space)
            line += ' ';
        space = false;
        line += byte;
    }
    return line;
}

void PrintLine(std::string_view line)
{
    // In one piece, so that the lines of two threads do not mix.
    const std::string bytes = std::string(line) + '\n';
    std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
}

} // namespace Desk
