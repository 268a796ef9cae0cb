// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOCALE_SHORTPATTERN_H
#define TOOLKIT_INTERNAL_LOCALE_SHORTPATTERN_H

#include <string>

// Turns the short patterns of a locale, as Unicode writes them (UTS 35), into the few letters that DateTime
// fills in, in ASCII: "d.MM.y 'г'." becomes "d.MM.yyyy", "a h:mm" with any kind of space "a h:mm",
// "HH 'h' mm" "HH:mm". Words are left out, and what separates two numbers is never lost.
namespace Toolkit::ShortPattern
{

// Of d, dd, M, MM, yy and yyyy, one for each of day, month and year, without a space. Empty if one of the
// three is missing.
std::wstring Date(const std::wstring& pattern);

// Of H, HH, h, hh, m, mm and a, the last one with the hours of half a day only, and always with them.
// Empty without hours or minutes.
std::wstring Time(const std::wstring& pattern);

} // namespace Toolkit::ShortPattern

#endif
