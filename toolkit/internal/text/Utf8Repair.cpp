// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/Utf8Repair.h"

#include <cstddef>
#include <cstdint>

#include <unicode/utf8.h>

#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/Utf8Blocks.h"
#include "toolkit/internal/text/Utf8Scan.h"

namespace Toolkit
{

namespace
{

const char s_replacement[] = "\xEF\xBF\xBD";

void AppendCodePoint(std::string& text, std::uint32_t value)
{
    if (value < 0x80)
    {
        text += static_cast<char>(value);
        return;
    }
    if (!CodePoints::IsCharacter(value))
    {
        text += s_replacement;
        return;
    }
    char bytes[U8_MAX_LENGTH];
    std::size_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, value);
    text.append(bytes, length);
}

} // namespace

bool Utf8Repair::IsAscii(std::string_view text)
{
    return Utf8Blocks::IsAscii(text.data(), text.size());
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
