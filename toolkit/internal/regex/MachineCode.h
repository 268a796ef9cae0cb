// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_MACHINECODE_H
#define TOOLKIT_INTERNAL_REGEX_MACHINECODE_H

#include <cstdint>
#include <string_view>

// What PCRE2's just-in-time compiler makes of a pattern.
namespace Toolkit::MachineCode
{

// False for a pattern, compiled with these options, that may find something else by its machine code: that of
// PCRE2 10.42 keeps what a group captured that "*+" repeats after the attempt has failed. Some patterns for
// which it would be right are among them. Throws std::bad_alloc.
bool IsRight(std::string_view pattern, std::uint32_t options);

} // namespace Toolkit::MachineCode

#endif
