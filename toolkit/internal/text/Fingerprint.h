// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_FINGERPRINT_H
#define TOOLKIT_INTERNAL_TEXT_FINGERPRINT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Toolkit
{

// 16 hexadecimal digits that stand for a text of any length: FNV-1a, 64 bits.
inline std::string Fingerprint(std::string_view text)
{
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    std::string digits(16, '0');
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash >>= 4)
        *digit = "0123456789abcdef"[hash & 15];
    return digits;
}

} // namespace Toolkit

#endif
