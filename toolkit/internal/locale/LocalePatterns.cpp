// SPDX-License-Identifier: MIT
#include "toolkit/internal/locale/LocalePatterns.h"

#include "toolkit/internal/icu/IcuPart.h"
#include "toolkit/internal/icu/LocaleName.h"
#include "toolkit/internal/locale/ShortPattern.h"

namespace Toolkit
{

namespace
{

const wchar_t* const c_strDateOfC = L"MM/dd/yy";
const wchar_t* const c_strTimeOfC = L"HH:mm";

// False where ICU failed, or cannot be loaded.
bool AskIcu(const std::string& locale, std::wstring& date, std::wstring& time)
{
    const Result<const IcuCalls*> icu = LoadIcu();
    return icu && (*icu)->shortPatterns(locale, date, time);
}

} // namespace

TString<wchar_t> LocalePatterns::ShortPatternsOf(const std::string& locale, bool& failed)
{
    std::wstring date;
    std::wstring time;
    failed = LocaleName(locale).IsValid() && !AskIcu(locale, date, time);
    date = ShortPattern::Date(date);
    time = ShortPattern::Time(time);
    return (date.empty() ? c_strDateOfC : date) + L" " + (time.empty() ? c_strTimeOfC : time);
}

TString<wchar_t> LocalePatterns::ShortPatternsOf(const std::string& locale)
{
    bool failed = false;
    return ShortPatternsOf(locale, failed);
}

} // namespace Toolkit
