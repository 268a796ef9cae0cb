// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOCALE_LOCALETEXTS_H
#define TOOLKIT_INTERNAL_LOCALE_LOCALETEXTS_H

#include <string>

#include "toolkit/core/Result.h"
#include "toolkit/internal/icu/IcuTexts.h"

// Dates and times in the own words, numbers and calendar of any locale, as ICU writes them. Any thread may
// ask.
namespace Toolkit::LocaleTexts
{

using IcuTexts::Moment;
using IcuTexts::Style;

// `IcuTexts::DateAndTime`; the failure is that of `LoadIcu`.
Result<std::string> DateAndTime(const std::string& locale, Style style, const Moment& moment);

} // namespace Toolkit::LocaleTexts

#endif
