// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/LocaleTexts.h"

#include "toolkit/internal/icu/IcuPart.h"

namespace Toolkit
{

Result<std::string> LocaleTexts::DateAndTime(const std::string& locale, Style style, const Moment& moment)
{
    const Result<const IcuCalls*> icu = LoadIcu();
    if (!icu)
        return icu.error();
    return (*icu)->dateAndTime(locale, style, moment);
}

} // namespace Toolkit
