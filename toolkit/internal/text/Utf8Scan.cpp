// SPDX-License-Identifier: MIT
#include "toolkit/internal/text/Utf8Scan.h"

#include <algorithm>

#include "toolkit/internal/text/Utf8Blocks.h"

namespace Toolkit
{

namespace
{

bool IsBetween(char byte, unsigned int least, unsigned int greatest)
{
    const unsigned int value = static_cast<unsigned char>(byte);
    return value >= least && value <= greatest;
}

} // namespace

// The second byte tells overlong forms, surrogates and values that are too great (RFC 3629, section 4).
std::size_t Utf8Scan::CharacterLength(std::string_view text) noexcept
{
    const unsigned int lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const unsigned int least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned int greatest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (text.size() < length || !IsBetween(text[1], least, greatest))
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if (!IsBetween(text[i], 0x80, 0xBF))
            return 0;
    return length;
}

std::size_t Utf8Scan::FindBroken(std::string_view bytes) noexcept
{
    const std::size_t size = bytes.size();
    for (std::size_t next = 0; next < size;)
    {
        const std::size_t stop = next + std::min(Utf8Blocks::s_uBlock, size - next);
        if (Utf8Blocks::IsAscii(bytes.data() + next, stop - next))
        {
            next = stop;
            continue;
        }
        while (next < stop)
        {
            const std::size_t length = CharacterLength(bytes.substr(next));
            if (length == 0)
                return next;
            next += length;
        }
    }
    return std::string_view::npos;
}

} // namespace Toolkit
