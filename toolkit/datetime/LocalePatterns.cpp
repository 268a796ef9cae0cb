#include "toolkit/datetime/LocalePatterns.h"

#include <memory>

#include <dlfcn.h>
#include <unicode/udat.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

#include "toolkit/datetime/LocaleName.h"
#include "toolkit/datetime/ShortPattern.h"

namespace Toolkit
{

namespace
{

const wchar_t* const c_strDateOfC = L"MM/dd/yy";
const wchar_t* const c_strTimeOfC = L"HH:mm";

// Short patterns have some ten characters.
const int s_iMaxPattern = 256;

// ICU keeps what it has read for as long as it is loaded, and would lose it with every unloading: it stays
// when the library goes.
void KeepIcuLoaded()
{
    Dl_info icu = {};
    if (dladdr(reinterpret_cast<void*>(&udat_open), &icu) != 0)
        dlopen(icu.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

// For a language without data ICU would answer with those of its own default locale, which follows other
// variables.
bool IsKnown(const std::string& language)
{
    KeepIcuLoaded();
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UEnumeration, decltype(&uenum_close)> locales(
        uloc_openAvailableByType(ULOC_AVAILABLE_WITH_LEGACY_ALIASES, &status), &uenum_close);
    bool known = false;
    for (const char* locale = uenum_next(locales.get(), nullptr, &status); !known && locale != nullptr;
         locale = uenum_next(locales.get(), nullptr, &status))
        known = LocaleName(locale).Language() == language;
    return known;
}

// Empty when there is none.
std::wstring PatternOf(const std::string& id, UDateFormatStyle date, UDateFormatStyle time)
{
    UErrorCode status = U_ZERO_ERROR;
    UDateFormat* const format = udat_open(time, date, id.c_str(), u"UTC", -1, nullptr, 0, &status);
    UChar pattern[s_iMaxPattern];
    const int length = udat_toPattern(format, false, pattern, s_iMaxPattern, &status);
    udat_close(format);
    return U_SUCCESS(status) ? std::wstring(pattern, pattern + length) : std::wstring();
}

} // namespace

TString<wchar_t> LocalePatterns::ShortPatternsOf(const std::string& locale)
{
    const LocaleName name(locale);
    std::wstring date;
    std::wstring time;
    if (name.IsValid() && IsKnown(name.Language()))
    {
        const std::string id = name.Id() + "@calendar=gregorian";
        date = ShortPattern::Date(PatternOf(id, UDAT_SHORT, UDAT_NONE));
        time = ShortPattern::Time(PatternOf(id, UDAT_NONE, UDAT_SHORT));
    }
    return (date.empty() ? c_strDateOfC : date) + L" " + (time.empty() ? c_strTimeOfC : time);
}

} // namespace Toolkit
