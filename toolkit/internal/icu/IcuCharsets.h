// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ICU_ICUCHARSETS_H
#define TOOLKIT_INTERNAL_ICU_ICUCHARSETS_H

#include <cstddef>
#include <string>
#include <string_view>

// Texts of any charset, by ICU's converters and its table of case and form. Any thread may ask.
namespace Toolkit::IcuCharsets
{

enum class Outcome
{
    Done,
    // ICU knows no charset of that name.
    UnknownSource,
    UnknownTarget,
    // No character begins at the byte.
    BrokenText,
    // The character before the byte has no form in the other charset.
    NoForm
};

struct Conversion
{
    Outcome outcome = Outcome::Done;
    std::string text;
    // Which byte the outcome speaks of.
    std::size_t byte = 0;
};

// The bytes of the charset `from` in the charset `to`. What has no form there is replaced, by U+FFFD or by
// "?", or ends the conversion; ICU itself would leave characters out that are not shown. Throws
// `std::bad_alloc` where ICU has no memory.
Conversion Convert(std::string_view bytes, const std::string& from, const std::string& to, bool replaces);

// What is left of a UTF-8 text without regard to case and form (NFKC_Casefold of Unicode), as the bytes of
// UTF-16, the higher one first. A text that cannot be folded stays as it is.
std::string Fold(std::string_view text);

} // namespace Toolkit::IcuCharsets

#endif
