#include "toolkit/datetime/Locales.h"

#include <cstdlib>
#include <string>

#include "toolkit/datetime/LocalePatterns.h"
#include "toolkit/threading/MutexLock.h"

namespace Toolkit
{

namespace
{

// The pattern of the locale that was last asked for. No locale is asked for with an empty pattern.
struct LastPattern
{
    Mutex m_mutex;
    std::string m_strLocale;
    TString<wchar_t> m_strPattern;
};

LastPattern s_last;

const char* UserLocale()
{
    for (const char* const variable : {"LC_ALL", "LC_TIME", "LANG"})
    {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return value;
    }
    return "";
}

} // namespace

bool Locales::GetCurrentDateFormat(TString<wchar_t>& out)
{
    const char* const locale = UserLocale();
    {
        const MutexLock lock(s_last.m_mutex);
        if (!s_last.m_strPattern.empty() && s_last.m_strLocale == locale)
        {
            out = s_last.m_strPattern;
            return true;
        }
    }
    // Asked for without the lock: it takes a while.
    std::string name = locale;
    out = LocalePatterns::ShortPatternsOf(name);
    TString<wchar_t> pattern = out;
    const MutexLock lock(s_last.m_mutex);
    s_last.m_strLocale.swap(name);
    s_last.m_strPattern.swap(pattern);
    return true;
}

bool Locales::GetDecimalSeparator(TString<wchar_t>& out)
{
    out = L".";
    return false;
}

} // namespace Toolkit
