// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ICU_ICUCALLS_H
#define TOOLKIT_INTERNAL_ICU_ICUCALLS_H

#include "toolkit/internal/icu/IcuCharsets.h"
#include "toolkit/internal/icu/IcuTexts.h"

namespace Toolkit
{

// What the part of the library does that is linked with ICU.
struct IcuCalls
{
    decltype(&IcuTexts::ShortPatterns) shortPatterns;
    decltype(&IcuTexts::DateAndTime) dateAndTime;
    decltype(&IcuCharsets::Convert) convert;
    decltype(&IcuCharsets::Fold) fold;
};

// The name of the one function that the part exports, which returns them.
inline constexpr char c_strIcuEntry[] = "ToolkitIcuEntry";

} // namespace Toolkit

#endif
