// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOCALE_LOCALETEXTS_H
#define TOOLKIT_INTERNAL_LOCALE_LOCALETEXTS_H

#include <cstdint>
#include <string>

// Dates and times in the own words, numbers and calendar of any locale, as ICU writes them. Any thread may
// ask.
namespace Toolkit::LocaleTexts
{

enum class Style
{
    Short,
    Medium,
    Long,
    Full
};

// Where and when: milliseconds since 1970-01-01 00:00:00 UTC, how many seconds the clocks to show are ahead
// of UTC then, and what their zone is called in the zone database, if that is known.
struct Moment
{
    std::int64_t milliseconds = 0;
    std::int64_t offset = 0;
    std::string zone;
};

// The date and the time, as UTF-8, for a locale named as the environment names it, or with "-" in place of
// "_". That of the locale "C" when ICU knows no such locale. The zone bears its name where ICU has the same
// offset for it, and is a distance from Greenwich where not. Throws `std::bad_alloc` where ICU fails.
std::string DateAndTime(const std::string& locale, Style style, const Moment& moment);

} // namespace Toolkit::LocaleTexts

#endif
