#ifndef TOOLKIT_TESTS_SUPPORT_PLAINUTF8_H
#define TOOLKIT_TESTS_SUPPORT_PLAINUTF8_H

#include <cstdint>
#include <string>

namespace ToolkitTest
{

// What UTF8::ToUTF8 answers, character by character without regard to speed.
inline std::string PlainToUtf8(const std::wstring& text)
{
    std::string bytes;
    for (const wchar_t character : text)
    {
        const std::uint32_t value = static_cast<std::uint32_t>(character);
        if (value == 0)
            break;
        if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
            return std::string();
        const int rest = value < 0x80 ? 0 : value < 0x800 ? 1 : value < 0x10000 ? 2 : 3;
        static const std::uint32_t s_uLeads[] = {0, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(s_uLeads[rest] | (value >> (6 * rest)));
        for (int i = rest - 1; i >= 0; --i)
            bytes += static_cast<char>(0x80U | ((value >> (6 * i)) & 0x3FU));
    }
    return bytes;
}

} // namespace ToolkitTest

#endif
