// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_BOOLTEXT_H
#define TOOLKIT_INTERNAL_TEXT_BOOLTEXT_H

#include <optional>
#include <string_view>

namespace Toolkit::BoolText
{

// What "1", "true", "yes" or "on", or "0", "false", "no" or "off", says, in letters of either case; nothing
// for any other text.
std::optional<bool> Read(std::string_view text);

} // namespace Toolkit::BoolText

#endif
