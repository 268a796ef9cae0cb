// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/LocalePatterns.h"

#include <unicode/udat.h>

#include "toolkit/internal/locale/IcuLocale.h"
#include "toolkit/internal/locale/LocaleName.h"
#include "toolkit/internal/locale/ShortPattern.h"

namespace Toolkit
{

namespace
{

const wchar_t* const c_strDateOfC = L"MM/dd/yy";
const wchar_t* const c_strTimeOfC = L"HH:mm";

// Short patterns have some ten characters.
const int s_iMaxPattern = 256;

// Empty when there is none.
std::wstring PatternOf(const std::string& id, UDateFormatStyle date, UDateFormatStyle time,
                       UErrorCode& status)
{
    UDateFormat* const format = udat_open(time, date, id.c_str(), u"UTC", -1, nullptr, 0, &status);
    UChar pattern[s_iMaxPattern];
    const int length = udat_toPattern(format, false, pattern, s_iMaxPattern, &status);
    udat_close(format);
    return U_SUCCESS(status) ? std::wstring(pattern, pattern + length) : std::wstring();
}

} // namespace

TString<wchar_t> LocalePatterns::ShortPatternsOf(const std::string& locale, bool& failed)
{
    UErrorCode status = U_ZERO_ERROR;
    std::wstring date;
    std::wstring time;
    std::string id = IcuLocale::KnownId(LocaleName(locale), status);
    if (!id.empty())
    {
        id += "@calendar=gregorian";
        date = ShortPattern::Date(PatternOf(id, UDAT_SHORT, UDAT_NONE, status));
        time = ShortPattern::Time(PatternOf(id, UDAT_NONE, UDAT_SHORT, status));
    }
    failed = U_FAILURE(status);
    return (date.empty() ? c_strDateOfC : date) + L" " + (time.empty() ? c_strTimeOfC : time);
}

TString<wchar_t> LocalePatterns::ShortPatternsOf(const std::string& locale)
{
    bool failed = false;
    return ShortPatternsOf(locale, failed);
}

} // namespace Toolkit
