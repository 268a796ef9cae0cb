// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZONES_ISOWRITING_H
#define TOOLKIT_INTERNAL_ZONES_ISOWRITING_H

#include <cstddef>
#include <cstdint>

#include "toolkit/core/TString.h"
#include "toolkit/internal/text/DecimalDigits.h"
#include "toolkit/internal/zones/CivilTime.h"

// Writes the fields of "2009-03-07 14:05:09 Z", all of them or some. What is given a place to write to
// returns the end of what it wrote.
namespace Toolkit::IsoWriting
{

// Space for the six fields, of which years take the most, and what stands between and after them.
inline constexpr std::size_t s_uMostText = 64;

// At least two digits.
template <class C>
C* WriteNumber(C* out, std::int64_t value)
{
    return value < 0 || value > 99 ? DecimalDigits::Write(out, value) : DecimalDigits::WriteTwo(out, value);
}

template <class C>
C* WriteYear(C* out, std::int64_t year)
{
    if (year < 1000 || year > 9999)
        return WriteNumber(out, year);
    return WriteNumber(WriteNumber(out, year / 100), year % 100);
}

template <class C>
C* WriteDate(C* out, const CivilTime& civil)
{
    out = WriteYear(out, civil.year);
    *out++ = '-';
    out = WriteNumber(out, civil.month);
    *out++ = '-';
    return WriteNumber(out, civil.day);
}

template <class C>
C* WriteTime(C* out, const CivilTime& civil, bool utc)
{
    out = WriteNumber(out, civil.hour);
    *out++ = ':';
    out = WriteNumber(out, civil.minute);
    *out++ = ':';
    out = WriteNumber(out, civil.second);
    if (utc)
    {
        *out++ = ' ';
        *out++ = 'Z';
    }
    return out;
}

template <class C>
void WriteIso(TString<C>& out, const CivilTime& civil, bool utc)
{
    C text[s_uMostText];
    C* const date = WriteDate(text, civil);
    *date = ' ';
    out.assign(text, WriteTime(date + 1, civil, utc));
}

} // namespace Toolkit::IsoWriting

#endif
