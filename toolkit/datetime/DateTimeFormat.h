#ifndef TOOLKIT_DATETIME_DATETIMEFORMAT_H
#define TOOLKIT_DATETIME_DATETIMEFORMAT_H

#include "toolkit/core/TString.h"

namespace Toolkit
{

class DateTime;

// Fills the local fields of a time into a combined pattern: a date pattern, a space, a time pattern. The tokens
// are replaced one kind after the other, whatever stands around them, so that any pattern gives some text. Any
// thread may call it.
class DateTimeFormat
{
public:
    // The date pattern, or all of a pattern without a space, with dd, %d, d, MM, %m, M, yyyy, %Y and yy filled
    // in. Quirk: "M" is filled with a zero, "d" is not.
    static TString<wchar_t> Date(const TString<wchar_t>& pattern, const DateTime& value);

    // What stands behind the first space, or all of a pattern without one, with HH, H, hh, h, mm, m, %T, %R and
    // %r filled in. Where hours are those of half a day, a, or tt if there is no a, stands for `marker`.
    // Quirk: seconds are left out, and %T, %R and %r are hours and minutes without a marker.
    static TString<wchar_t> Time(const TString<wchar_t>& pattern, const DateTime& value,
                                 const TString<wchar_t>& marker);

    // True when the pattern shows the hours of half a day.
    static bool IsHalfDay(const TString<wchar_t>& pattern);
};

} // namespace Toolkit

#endif
