// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/LocalePatterns.h"

#include <memory>

#include <dlfcn.h>
#include <unicode/udat.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

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

// ICU keeps what it has read for as long as it is loaded, and would lose it with every unloading: it stays
// when the library goes.
void KeepIcuLoaded()
{
    Dl_info icu = {};
    if (dladdr(reinterpret_cast<void*>(&udat_open), &icu) != 0)
        dlopen(icu.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

// The identifier of the locale without a script that ICU has no data for in that language; empty without data
// for the language. ICU would answer both with those of its own default locale, which follows other
// variables.
std::string KnownId(const LocaleName& name, UErrorCode& status)
{
    KeepIcuLoaded();
    const std::unique_ptr<UEnumeration, decltype(&uenum_close)> locales(
        uloc_openAvailableByType(ULOC_AVAILABLE_WITH_LEGACY_ALIASES, &status), &uenum_close);
    bool language = false;
    bool script = name.Script().empty();
    for (const char* locale = uenum_next(locales.get(), nullptr, &status);
         !(language && script) && locale != nullptr; locale = uenum_next(locales.get(), nullptr, &status))
    {
        const LocaleName known(locale);
        if (known.Language() != name.Language())
            continue;
        language = true;
        script = script || known.Script() == name.Script();
    }
    if (!language)
        return std::string();
    return script ? name.Id() : name.WithoutScript().Id();
}

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
    const LocaleName name(locale);
    std::wstring date;
    std::wstring time;
    std::string id = name.IsValid() ? KnownId(name, status) : std::string();
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
