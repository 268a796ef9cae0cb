// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_DATETIME_LOCALES_H
#define TOOLKIT_DATETIME_LOCALES_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// What the user's locale says of dates and numbers. The locale is named by the first of the environment
/// variables LC_ALL, LC_TIME and LANG that is not empty, and looked at anew by each call; what is no name of
/// a locale counts as the locale "C", and so does each one while ICU cannot be loaded. Any thread may ask, as
/// long as none changes the environment.
///
/// @code
/// Toolkit::TString<wchar_t> format;
/// Toolkit::Locales::GetCurrentDateFormat(format);
/// std::wcout << format << L'\n'; // dd/MM/yyyy HH:mm, for instance
/// @endcode
class TOOLKIT_API Locales
{
public:
    /// The short date pattern, a space and the short time pattern, in Unicode date-pattern letters:
    /// "dd/MM/yyyy HH:mm". There is always one, so the result is true. Neither holds more than DateTime
    /// can show: d, dd, M, MM, yy, yyyy; H, HH, h, hh, m, mm, a.
    /// Quirk: a language without locale data counts as "C", whatever the country.
    /// Quirk: a script that the language has no locale data in is left out.
    /// Quirk: words, and spaces in dates, are left out, and months are never in Roman numerals.
    static bool GetCurrentDateFormat(TString<wchar_t>& out);

    /// Quirk: always "." and false, which says that the text does not come from the locale.
    static bool GetDecimalSeparator(TString<wchar_t>& out);
};

} // namespace Toolkit

#endif
