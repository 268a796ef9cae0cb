// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ICU_ICUTEXTS_H
#define TOOLKIT_INTERNAL_ICU_ICUTEXTS_H

#include <cstdint>
#include <string>

// The patterns and texts of any locale, as ICU has them. A locale is named as the environment names it, or
// with "-" in place of "_" in `DateAndTime`. Any thread may ask.
namespace Toolkit::IcuTexts
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

// The patterns of the Gregorian calendar (UTS 35); both stay empty when ICU knows no such locale. False where
// ICU failed, as it does without memory: then the patterns that it came to are there.
bool ShortPatterns(const std::string& locale, std::wstring& date, std::wstring& time);

// The date and the time, as UTF-8. That of the locale "C" when ICU knows no such locale. The zone bears its
// name where ICU has the same offset for it, and is a distance from Greenwich where not. Throws
// `std::bad_alloc` where ICU fails.
std::string DateAndTime(const std::string& locale, Style style, const Moment& moment);

} // namespace Toolkit::IcuTexts

#endif
