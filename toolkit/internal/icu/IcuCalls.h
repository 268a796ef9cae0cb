// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ICU_ICUCALLS_H
#define TOOLKIT_INTERNAL_ICU_ICUCALLS_H

#include "toolkit/internal/icu/IcuCharsets.h"
#include "toolkit/internal/icu/IcuTexts.h"

namespace Toolkit
{

// What the part of the library does that is linked with ICU. Both are built together and have one version,
// which the part bears in the name of its file.
struct IcuCalls
{
    decltype(&IcuTexts::ShortPatterns) shortPatterns;
    decltype(&IcuTexts::DateAndTime) dateAndTime;
    decltype(&IcuCharsets::Convert) convert;
    decltype(&IcuCharsets::Fold) fold;
};

// The one function that the part exports, and its name.
using IcuEntry = const IcuCalls* (*)();
inline constexpr char c_strIcuEntry[] = "ToolkitIcuEntry";

} // namespace Toolkit

#endif
