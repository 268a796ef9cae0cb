// SPDX-License-Identifier: MIT
#include "toolkit/internal/icu/IcuTexts.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>

#include <unicode/ucal.h>
#include <unicode/udat.h>
#include <unicode/ustring.h>

#include "toolkit/internal/icu/IcuLocale.h"
#include "toolkit/internal/icu/LocaleName.h"

namespace Toolkit
{

namespace
{

// What ICU calls the locale "C".
const char* const c_strIdOfC = "en_US_POSIX";

const std::int64_t s_nMillisecondsPerSecond = 1000;

// The longest text of any locale has some 120 characters.
const int s_iUsualText = 256;
const int s_iBytesPerUnit = 3;

// Short patterns have some ten characters.
const int s_iMostPattern = 256;

using Format = std::unique_ptr<UDateFormat, void (*)(UDateFormat*)>;
using Calendar = std::unique_ptr<UCalendar, void (*)(UCalendar*)>;

// Without memory ICU fails in many ways, and with memory in none.
void Check(UErrorCode status)
{
    if (U_FAILURE(status))
        throw std::bad_alloc();
}

std::string IdOf(std::string locale)
{
    std::replace(locale.begin(),
                 locale.begin() + static_cast<std::ptrdiff_t>(locale.find_first_of(".@") != locale.npos
                                                                  ? locale.find_first_of(".@")
                                                                  : locale.size()),
                 '-', '_');
    UErrorCode status = U_ZERO_ERROR;
    const std::string id = IcuLocale::KnownId(LocaleName(locale), status);
    Check(status);
    return id.empty() ? c_strIdOfC : id;
}

// The names of zones are ASCII.
std::u16string Widen(const std::string& name)
{
    return std::u16string(name.begin(), name.end());
}

// How many milliseconds ICU's clocks of that zone are ahead of UTC at the moment. ICU takes a zone that it
// does not know for UTC.
std::int64_t OffsetOf(const std::u16string& zone, std::int64_t milliseconds)
{
    UErrorCode status = U_ZERO_ERROR;
    const Calendar calendar(ucal_open(zone.c_str(), -1, c_strIdOfC, UCAL_GREGORIAN, &status), &ucal_close);
    Check(status);
    ucal_setMillis(calendar.get(), static_cast<double>(milliseconds), &status);
    const std::int64_t offset = std::int64_t{ucal_get(calendar.get(), UCAL_ZONE_OFFSET, &status)} +
                                ucal_get(calendar.get(), UCAL_DST_OFFSET, &status);
    Check(status);
    return offset;
}

std::u16string ZoneOf(const IcuTexts::Moment& moment)
{
    const std::u16string named = Widen(moment.zone);
    if (!named.empty() && OffsetOf(named, moment.milliseconds) == moment.offset * s_nMillisecondsPerSecond)
        return named;
    const auto distance = static_cast<int>(moment.offset < 0 ? -moment.offset : moment.offset);
    char fixed[32];
    std::snprintf(fixed, sizeof(fixed), "GMT%c%02d:%02d:%02d", moment.offset < 0 ? '-' : '+',
                  distance / 3600 % 100, distance / 60 % 60, distance % 60);
    return Widen(fixed);
}

UDateFormatStyle ToIcu(IcuTexts::Style style)
{
    switch (style)
    {
    case IcuTexts::Style::Medium:
        return UDAT_MEDIUM;
    case IcuTexts::Style::Long:
        return UDAT_LONG;
    case IcuTexts::Style::Full:
        return UDAT_FULL;
    default:
        return UDAT_SHORT;
    }
}

std::string ToUtf8(const std::u16string& text)
{
    std::string bytes(text.size() * s_iBytesPerUnit, '\0');
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8(bytes.data(), static_cast<int32_t>(bytes.size()), &length, text.data(),
                static_cast<int32_t>(text.size()), &status);
    Check(status);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

// Empty when there is none.
std::wstring PatternOf(const std::string& id, UDateFormatStyle date, UDateFormatStyle time,
                       UErrorCode& status)
{
    const Format format(udat_open(time, date, id.c_str(), u"UTC", -1, nullptr, 0, &status), &udat_close);
    UChar pattern[s_iMostPattern];
    const int length = udat_toPattern(format.get(), false, pattern, s_iMostPattern, &status);
    return U_SUCCESS(status) ? std::wstring(pattern, pattern + length) : std::wstring();
}

} // namespace

bool IcuTexts::ShortPatterns(const std::string& locale, std::wstring& date, std::wstring& time)
{
    UErrorCode status = U_ZERO_ERROR;
    std::string id = IcuLocale::KnownId(LocaleName(locale), status);
    if (!id.empty())
    {
        id += "@calendar=gregorian";
        date = PatternOf(id, UDAT_SHORT, UDAT_NONE, status);
        time = PatternOf(id, UDAT_NONE, UDAT_SHORT, status);
    }
    return U_SUCCESS(status);
}

std::string IcuTexts::DateAndTime(const std::string& locale, Style style, const Moment& moment)
{
    const std::string id = IdOf(locale);
    const std::u16string zone = ZoneOf(moment);
    UErrorCode status = U_ZERO_ERROR;
    const Format format(
        udat_open(ToIcu(style), ToIcu(style), id.c_str(), zone.c_str(), -1, nullptr, 0, &status),
        &udat_close);
    Check(status);
    std::u16string text(s_iUsualText, u'\0');
    const auto milliseconds = static_cast<double>(moment.milliseconds);
    int32_t length = udat_format(format.get(), milliseconds, text.data(), s_iUsualText, nullptr, &status);
    if (status == U_BUFFER_OVERFLOW_ERROR)
    {
        status = U_ZERO_ERROR;
        text.resize(static_cast<std::size_t>(length));
        length = udat_format(format.get(), milliseconds, text.data(), length, nullptr, &status);
    }
    Check(status);
    text.resize(static_cast<std::size_t>(length));
    return ToUtf8(text);
}

} // namespace Toolkit
