// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_PCRE2ITEMS_H
#define TOOLKIT_INTERNAL_REGEX_PCRE2ITEMS_H

#include <cstddef>
#include <optional>
#include <string_view>

// The items of which a pattern consists, in the order and of the extent that PCRE2 lists them.
namespace Toolkit::Pcre2Items
{

// How many characters before its place an attempt to match may look at, when PCRE2 lists every byte of the
// pattern in items each of which takes characters from its place on, looks at some before it, or puts such
// items together. Nothing for an item of any other kind, and for what is in no item, as an option at the
// beginning is: nothing is taken for what it looks like.
std::optional<std::size_t> FindReach(std::string_view pattern);

} // namespace Toolkit::Pcre2Items

#endif
