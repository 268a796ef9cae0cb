// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/Utf8Repair.h"

#include <cstdint>
#include <cstring>

#include "toolkit/internal/text/Utf8Scan.h"

namespace Toolkit
{

namespace
{

const char s_replacement[] = "\xEF\xBF\xBD";

unsigned int ByteAt(std::string_view text, std::size_t index)
{
    return static_cast<unsigned char>(text[index]);
}

void AppendCodePoint(std::string& text, std::uint32_t value)
{
    if (value < 0x80)
        text += static_cast<char>(value);
    else if (value < 0x800)
    {
        text += static_cast<char>(0xC0 | value >> 6);
        text += static_cast<char>(0x80 | (value & 0x3F));
    }
    else if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        text += s_replacement;
    else
    {
        if (value < 0x10000)
            text += static_cast<char>(0xE0 | value >> 12);
        else
        {
            text += static_cast<char>(0xF0 | value >> 18);
            text += static_cast<char>(0x80 | (value >> 12 & 0x3F));
        }
        text += static_cast<char>(0x80 | (value >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (value & 0x3F));
    }
}

} // namespace

bool Utf8Repair::IsAscii(std::string_view text)
{
    std::uint64_t bits = 0;
    std::size_t i = 0;
    for (; i + sizeof(bits) <= text.size(); i += sizeof(bits))
    {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + i, sizeof(word));
        bits |= word;
    }
    for (; i < text.size(); ++i)
        bits |= ByteAt(text, i);
    return (bits & 0x8080808080808080U) == 0;
}

void Utf8Repair::Repair(std::string& text)
{
    if (IsAscii(text))
        return;
    std::string repaired;
    repaired.reserve(text.size() + sizeof(s_replacement));
    for (std::string_view rest = text; !rest.empty();)
    {
        const std::size_t length = Utf8Scan::CharacterLength(rest);
        if (length == 0)
            repaired += s_replacement;
        else
            repaired += rest.substr(0, length);
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    text.swap(repaired);
}

void Utf8Repair::AppendWide(std::string& text, std::wstring_view wide)
{
    for (const wchar_t character : wide)
        AppendCodePoint(text, static_cast<std::uint32_t>(character));
}

} // namespace Toolkit
