// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOCALE_DATETIMEFORMAT_H
#define TOOLKIT_INTERNAL_LOCALE_DATETIMEFORMAT_H

#include "toolkit/core/TString.h"

namespace Toolkit
{
struct CivilTime;
}

// Fills a time into a combined pattern: a date pattern, a space, a time pattern. The result is that of
// replacing the tokens one kind after the other, in the order in which they are listed here, whatever stands
// around them; any pattern gives some text. Any thread may call it.
namespace Toolkit::DateTimeFormat
{

// The date pattern, or all of a pattern without a space, with dd, %d, d, MM, %m, M, yyyy, %Y and yy
// filled in. Quirk: "M" is filled with a zero, "d" is not.
TString<wchar_t> Date(const TString<wchar_t>& pattern, const CivilTime& time);

// What stands after the first space, or all of a pattern without one. Where hours are those of half a
// day, a, or tt if there is no a in the pattern, stands for `marker`; then HH, H, hh, h, mm and m are
// filled in, :ss, .ss, a and tt removed, and %T, %R and %r filled in.
// Quirk: seconds are never shown; %T, %R and %r are hours and minutes, without a marker.
TString<wchar_t> Time(const TString<wchar_t>& pattern, const CivilTime& time, const TString<wchar_t>& marker);

// True when the pattern shows the hours of half a day: it has an h or tt.
bool IsHalfDay(const TString<wchar_t>& pattern);

} // namespace Toolkit::DateTimeFormat

#endif
