// SPDX-License-Identifier: MIT
#include "toolkit/datetime/Locales.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <string>

#include "toolkit/internal/icu/LocaleName.h"
#include "toolkit/internal/locale/LocalePatterns.h"

namespace Toolkit
{

namespace
{

// Names of known locales and patterns fit; what does not is not kept.
const std::size_t s_uMostName = 128;
const std::size_t s_uMostPattern = 64;

// The pattern of the locale that was last asked for. No locale is asked for with an empty pattern.
// Constant-initialised and trivially destroyed, so that dates are shown before and after any static object.
std::mutex s_lastMutex;
std::array<char, s_uMostName> s_lastLocale = {};
std::array<wchar_t, s_uMostPattern> s_lastPattern = {};

bool ReadLast(const char* locale, TString<wchar_t>& pattern)
{
    const std::lock_guard<std::mutex> lock(s_lastMutex);
    if (s_lastPattern.front() == L'\0' || std::strcmp(s_lastLocale.data(), locale) != 0)
        return false;
    pattern = s_lastPattern.data();
    return true;
}

void KeepLast(const std::string& locale, const TString<wchar_t>& pattern)
{
    if (locale.size() >= s_uMostName || pattern.size() >= s_uMostPattern)
        return;
    const std::lock_guard<std::mutex> lock(s_lastMutex);
    std::copy_n(locale.c_str(), locale.size() + 1, s_lastLocale.begin());
    std::copy_n(pattern.c_str(), pattern.size() + 1, s_lastPattern.begin());
}

} // namespace

bool Locales::GetCurrentDateFormat(TString<wchar_t>& out)
{
    const char* const user = LocaleName::OfUser();
    if (ReadLast(user, out))
        return true;
    // Asked for without the lock: it takes a while.
    const std::string locale = user;
    bool failed = false;
    out = LocalePatterns::ShortPatternsOf(locale, failed);
    if (!failed)
        KeepLast(locale, out);
    return true;
}

bool Locales::GetDecimalSeparator(TString<wchar_t>& out)
{
    out = L".";
    return false;
}

} // namespace Toolkit
