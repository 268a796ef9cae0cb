// SPDX-License-Identifier: MIT
#include "toolkit/internal/icu/IcuLocale.h"

#include <cstring>
#include <memory>

#include <unicode/uenum.h>
#include <unicode/uloc.h>
#include <unicode/ures.h>

namespace Toolkit
{

namespace
{

// Whether ICU has data for the locale or for one of its parents, which may be of another language: those of
// "ht_HT" are the French ones of Haiti. Those of its own default locale and of its root do not count.
bool HasData(const std::string& id, UErrorCode& status)
{
    const std::unique_ptr<UResourceBundle, decltype(&ures_close)> data(
        ures_open(nullptr, id.c_str(), &status), &ures_close);
    const char* const found = ures_getLocaleByType(data.get(), ULOC_VALID_LOCALE, &status);
    return U_SUCCESS(status) && status != U_USING_DEFAULT_WARNING && std::strcmp(found, "root") != 0;
}

} // namespace

std::string IcuLocale::KnownId(const LocaleName& name, UErrorCode& status)
{
    if (!name.IsValid())
        return std::string();
    const std::unique_ptr<UEnumeration, decltype(&uenum_close)> locales(
        uloc_openAvailableByType(ULOC_AVAILABLE_WITH_LEGACY_ALIASES, &status), &uenum_close);
    const std::string wanted = name.Language();
    bool language = false;
    bool script = name.Script().empty();
    for (const char* locale = uenum_next(locales.get(), nullptr, &status);
         !(language && script) && locale != nullptr; locale = uenum_next(locales.get(), nullptr, &status))
    {
        // Most are of other languages, and need not be taken apart.
        if (std::strncmp(locale, wanted.c_str(), wanted.size()) != 0)
            continue;
        const LocaleName known(locale);
        if (known.Language() != wanted)
            continue;
        language = true;
        script = script || known.Script() == name.Script();
    }
    const std::string id = script || !language ? name.Id() : name.WithoutScript().Id();
    return language || HasData(id, status) ? id : std::string();
}

} // namespace Toolkit
