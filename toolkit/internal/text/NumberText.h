// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_NUMBERTEXT_H
#define TOOLKIT_INTERNAL_TEXT_NUMBERTEXT_H

#include <charconv>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace Toolkit::NumberText
{

// Reads a decimal number that is all of the text, in the classic locale. Sets `number` on success alone. The
// result is std::errc::invalid_argument for what is no number and std::errc::result_out_of_range for one that
// does not fit.
template <class Number>
std::errc Read(std::string_view text, Number& number)
{
    // from_chars takes no plus, of which one may stand before the digits.
    if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+')
        text.remove_prefix(1);
    Number read = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, read);
    if (error == std::errc::invalid_argument || stopped != end)
        return std::errc::invalid_argument;
    if (error != std::errc())
        return error;
    if constexpr (std::is_floating_point_v<Number>)
        if (read != read)
            return std::errc::invalid_argument;
    number = read;
    return std::errc();
}

// The shortest text that is read back equal.
template <class Number>
std::string Write(Number number)
{
    char digits[64];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof(digits), number);
    return std::string(digits, result.ptr);
}

} // namespace Toolkit::NumberText

#endif
