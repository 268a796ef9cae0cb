// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_PCREERRORS_H
#define TOOLKIT_INTERNAL_REGEX_PCREERRORS_H

#include <cstddef>
#include <string>

namespace Toolkit
{

// What PCRE 8 says of a pattern that it refuses.
struct PcreError
{
    // Lives as long as the library.
    const char* text;
    // How many bytes earlier PCRE stops.
    std::size_t bytesEarlier;
};

// Returns what PCRE 8 says where pcre2_compile gave that number and stopped after `read`. PCRE2's own text
// when PCRE knows nothing like it.
PcreError FindPcreError(int number, const std::string& read);

} // namespace Toolkit

#endif
