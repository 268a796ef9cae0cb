// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_MOVEDFROM_H
#define TOOLKIT_INTERNAL_SYSTEM_MOVEDFROM_H

#include <memory>
#include <string>

#include "toolkit/core/Failure.h"

// What is left of an object whose private part was moved elsewhere: it can still be used.
namespace Toolkit::MovedFrom
{

// The failure of an operation of it: "cannot wait for the process: it was moved elsewhere".
inline Failure Refused(const std::string& attempt)
{
    return Failure(Errc::Refused, attempt + ": it was moved elsewhere");
}

// The options of it to be set: those that nobody has set yet.
template <class Options>
Options& Renewed(std::unique_ptr<Options>& options)
{
    if (options == nullptr)
        options = std::make_unique<Options>();
    return *options;
}

// A copy of its options.
template <class Options>
std::unique_ptr<Options> CopyOf(const std::unique_ptr<Options>& options)
{
    return options != nullptr ? std::make_unique<Options>(*options) : std::make_unique<Options>();
}

} // namespace Toolkit::MovedFrom

#endif
