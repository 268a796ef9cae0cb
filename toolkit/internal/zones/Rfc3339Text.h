// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZONES_RFC3339TEXT_H
#define TOOLKIT_INTERNAL_ZONES_RFC3339TEXT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "toolkit/internal/zones/ReadInstant.h"

// The texts of RFC 3339, "2026-03-02T14:05:09.250+01:00". They are UTC with an offset beside it: no zone and
// no locale has a part in them. Any thread may call it.
namespace Toolkit::Rfc3339Text
{

// As the RFC has it: "T" and "Z" may be small, the second 60 is one at the end of a month in UTC and counts
// on into the next day. The fraction has at most nine digits.
ReadInstant Read(std::string_view text);

// Space for any text.
constexpr std::size_t s_uMost = 40;

constexpr int s_iMostDigits = 9;

// Writes the time at an offset, or "Z" for UTC, with that many digits of the second's fraction, the others
// are cut off, and returns the end. The year has four digits.
char* WriteUtc(char* out, std::int64_t second, std::int64_t nanosecond, int digits);
char* WriteAtOffset(char* out, std::int64_t second, std::int64_t nanosecond, int digits,
                    std::int64_t offsetMinutes);

// How many digits it takes in groups of three: 0, 3, 6 or 9.
int DigitsOf(std::int64_t nanosecond);

} // namespace Toolkit::Rfc3339Text

#endif
