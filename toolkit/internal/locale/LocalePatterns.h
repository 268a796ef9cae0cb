// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOCALE_LOCALEPATTERNS_H
#define TOOLKIT_INTERNAL_LOCALE_LOCALEPATTERNS_H

#include <string>

#include "toolkit/core/TString.h"

// The short patterns of any locale, from ICU. Any thread may ask; it takes some hundred microseconds, the
// first time in a process some milliseconds. The locale "C" needs no ICU.
namespace Toolkit::LocalePatterns
{

// The date pattern, a space and the time pattern, as ShortPattern lays them out, for a locale named as
// the environment names it (see LocaleName). Those of the locale "C" when there is no such locale, and
// where ICU failed, as it does without memory, or cannot be loaded: then `failed`, false else, is true.
TString<wchar_t> ShortPatternsOf(const std::string& locale, bool& failed);
TString<wchar_t> ShortPatternsOf(const std::string& locale);

} // namespace Toolkit::LocalePatterns

#endif
