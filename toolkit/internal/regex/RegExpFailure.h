// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_REGEXPFAILURE_H
#define TOOLKIT_INTERNAL_REGEX_REGEXPFAILURE_H

#include "toolkit/core/TString.h"

namespace Toolkit
{

// Throws what the operations of RegExp throw, with the texts that are laid down for it.
class RegExpFailure
{
public:
    // The pattern is invalid; `errorText` and `errorOffset` are PCRE's.
    [[noreturn]] static void ThrowCompilation(const char* errorText, int errorOffset,
                                              const TString<char>& pattern);

    // An execution ended with `result`.
    [[noreturn]] static void ThrowExecution(int result);

    // True for the results that are no failure: a match and no match.
    static bool IsResult(int result) { return result >= -1; }
};

} // namespace Toolkit

#endif
