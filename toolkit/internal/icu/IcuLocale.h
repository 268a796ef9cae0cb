// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ICU_ICULOCALE_H
#define TOOLKIT_INTERNAL_ICU_ICULOCALE_H

#include <string>

#include <unicode/utypes.h>

#include "toolkit/internal/icu/LocaleName.h"

// The locales that ICU has data for. Any thread may ask.
namespace Toolkit::IcuLocale
{

// The identifier of the locale without a script that ICU has no data for in that language; empty without data
// for the language, and for a name that is none. ICU would take its own default locale for both, which
// follows other variables. It takes some hundred microseconds, the first time in a process some milliseconds.
std::string KnownId(const LocaleName& name, UErrorCode& status);

} // namespace Toolkit::IcuLocale

#endif
