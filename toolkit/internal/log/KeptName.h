// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOG_KEPTNAME_H
#define TOOLKIT_INTERNAL_LOG_KEPTNAME_H

#include <string_view>

namespace Toolkit
{

// A function's name that stays for the life of the library, as copies of records refer to it. There are only
// as many as there are functions; what would be one too many is empty.
std::string_view KeptName(std::string_view name);

} // namespace Toolkit

#endif
