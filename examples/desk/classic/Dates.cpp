// SPDX-License-Identifier: MIT
#include "classic/Dates.h"

#include <cstdlib>
#include <string>

#include "toolkit/core/TString.h"
#include "toolkit/datetime/DateTime.h"
#include "toolkit/datetime/Locales.h"
#include "toolkit/encoding/UTF8.h"

namespace Desk
{

using namespace Toolkit;

using Text = TString<wchar_t>;

namespace
{

// Names the user's locale while it lives.
class LocaleName
{
public:
    explicit LocaleName(const char* name)
        : m_bWasSet(std::getenv("LC_ALL") != nullptr), m_strBefore(m_bWasSet ? std::getenv("LC_ALL") : "")
    {
        setenv("LC_ALL", name, 1);
    }
    ~LocaleName()
    {
        if (m_bWasSet)
            setenv("LC_ALL", m_strBefore.c_str(), 1);
        else
            unsetenv("LC_ALL");
    }

    LocaleName(const LocaleName&) = delete;
    LocaleName& operator=(const LocaleName&) = delete;

private:
    const bool m_bWasSet;
    const std::string m_strBefore;
};

} // namespace

bool ShowInFiveLocales(std::vector<std::string>& report)
{
    const struct
    {
        const char* locale;
        const wchar_t* date;
    } rows[] = {
        {"en_US.UTF-8", L"03/2/26"},    {"en_GB.UTF-8", L"02/03/2026"}, {"de_DE.UTF-8", L"02.03.26"},
        {"ja_JP.UTF-8", L"2026/03/02"}, {"ko_KR.UTF-8", L"26.03.2."},
    };
    const DateTime value(2026, 3, 2, 14, 5, 0);
    bool all = true;
    for (const auto& row : rows)
    {
        const LocaleName name(row.locale);
        Text pattern;
        Locales::GetCurrentDateFormat(pattern);
        Text date;
        value.GetDate(date);
        Text both;
        value.GetString(both);
        report.push_back(row.locale + (": " + UTF8::ToUTF8(both)) + ", from the pattern " +
                         UTF8::ToUTF8(pattern));
        all = all && date == row.date;
    }
    return all;
}

bool ShowRelativeToNow(std::vector<std::string>& report)
{
    const DateTime now;
    DateTime before = now;
    before.Remove(0, 0, 0, 1);
    Text today;
    now.GetRelativeStringFromNow(today);
    Text yesterday;
    before.GetRelativeStringFromNow(yesterday);
    report.push_back("this moment is listed as " + UTF8::ToUTF8(today) + ", one of yesterday as " +
                     UTF8::ToUTF8(yesterday));
    Text time;
    now.GetTime(time);
    Text date;
    before.GetDate(date);
    return yesterday == date && (today == time || DateTime().GetDay() != now.GetDay());
}

} // namespace Desk
