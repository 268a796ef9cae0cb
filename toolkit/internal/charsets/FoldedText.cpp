// SPDX-License-Identifier: MIT
#include "toolkit/internal/charsets/FoldedText.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include <unicode/unorm2.h>
#include <unicode/ustring.h>

namespace Toolkit
{

namespace
{

// A text of UTF-16, which `make` writes into so many units and tells the length of.
template <class Make>
bool MakeText(std::u16string& text, std::size_t expected, Make make)
{
    text.resize(expected + 1);
    for (;;)
    {
        UErrorCode error = U_ZERO_ERROR;
        const std::int32_t length = make(text.data(), static_cast<std::int32_t>(text.size()), &error);
        if (error == U_BUFFER_OVERFLOW_ERROR)
        {
            text.resize(static_cast<std::size_t>(length) + 1);
            continue;
        }
        text.resize(static_cast<std::size_t>(std::max(length, 0)));
        return U_SUCCESS(error) != 0;
    }
}

} // namespace

std::string FoldText(std::string_view text)
{
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* const normalizer = unorm2_getNFKCCasefoldInstance(&error);
    std::u16string wide;
    std::u16string folded;
    if (U_FAILURE(error) != 0 || text.size() > std::numeric_limits<std::int32_t>::max() / 8)
        return std::string(text);
    const auto toWide = [text](char16_t* to, std::int32_t room, UErrorCode* code)
    {
        std::int32_t length = 0;
        u_strFromUTF8(to, room, &length, text.data(), static_cast<std::int32_t>(text.size()), code);
        return length;
    };
    const auto fold = [normalizer, &wide](char16_t* to, std::int32_t room, UErrorCode* code) {
        return unorm2_normalize(normalizer, wide.data(), static_cast<std::int32_t>(wide.size()), to, room,
                                code);
    };
    if (!MakeText(wide, text.size(), toWide) || !MakeText(folded, wide.size(), fold))
        return std::string(text);
    std::string result;
    for (const char16_t unit : folded)
        result += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    return result;
}

} // namespace Toolkit
