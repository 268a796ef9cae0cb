// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/IcuLocale.h"

#include <cstring>
#include <memory>

#include <dlfcn.h>
#include <unicode/udat.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

namespace Toolkit
{

namespace
{

// ICU keeps what it has read for as long as it is loaded, and would lose it with every unloading: it stays
// when the library goes.
void KeepIcuLoaded()
{
    Dl_info icu = {};
    if (dladdr(reinterpret_cast<void*>(&udat_open), &icu) != 0)
        dlopen(icu.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace

std::string IcuLocale::KnownId(const LocaleName& name, UErrorCode& status)
{
    if (!name.IsValid())
        return std::string();
    KeepIcuLoaded();
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
    if (!language)
        return std::string();
    return script ? name.Id() : name.WithoutScript().Id();
}

} // namespace Toolkit
