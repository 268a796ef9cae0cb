// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_READABLESYMBOL_H
#define TOOLKIT_INTERNAL_TEXT_READABLESYMBOL_H

#include <cstdlib>
#include <memory>
#include <string>

#include <cxxabi.h>

namespace Toolkit
{

// What a programmer calls the function, object or type of this name of the compiler's; empty where it is
// none.
inline std::string ReadableSymbol(const char* name)
{
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(name, nullptr, nullptr, nullptr), &std::free);
    return readable != nullptr ? readable.get() : std::string();
}

} // namespace Toolkit

#endif
