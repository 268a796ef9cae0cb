// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include "toolkit/datetime/DateTime.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

const std::vector<long> s_vecYears = {16, 64, 256, 1024};

// Behind the years that the zone's table lists: from then on its rule is computed.
const unsigned int s_uFirstYear = 2040;

DateTime After(std::size_t years)
{
    return DateTime(s_uFirstYear + static_cast<unsigned int>(years), 3, 7, 14, 5, 9);
}

template <class Call>
void AddYears(const std::string& operation, Call call)
{
    Add(operation, s_vecYears, [call](std::size_t years) { return [call, years] { call(years); }; });
}

} // namespace

void AddDateTime()
{
    AddYears("DateConstruct",
             [](std::size_t years)
             {
                 const DateTime time = After(years);
                 benchmark::DoNotOptimize(&time);
             });
    Add("DateIsoText", s_vecYears,
        [](std::size_t years)
        {
            return [time = After(years)]
            {
                TString<wchar_t> text;
                time.GetIsoString(text, false);
                benchmark::DoNotOptimize(text.data());
            };
        });
    Add("DateLocaleText", s_vecYears,
        [](std::size_t years)
        {
            return [time = After(years)]
            {
                TString<wchar_t> text;
                time.GetString(text);
                benchmark::DoNotOptimize(text.data());
            };
        });
    Add("DateAddYears", s_vecYears,
        [](std::size_t years)
        {
            return [years]
            {
                DateTime time = After(0);
                time.Add(static_cast<unsigned int>(years), 0, 0, 0);
                benchmark::DoNotOptimize(time.GetYear());
            };
        });
    Add("DateAddDays", s_vecMany,
        [](std::size_t days)
        {
            return [days]
            {
                DateTime time = After(0);
                time.Add(0, 0, 0, static_cast<unsigned int>(days));
                benchmark::DoNotOptimize(time.GetYear());
            };
        });
    Add("DateParseLength", s_vecMany,
        [](std::size_t length)
        {
            return [text = TString<wchar_t>(std::wstring(length, L'0') + L"2009-03-07 14:05:09")]
            {
                DateTime time;
                benchmark::DoNotOptimize(time.ParseIsoString(text));
            };
        });
    Add("IntToUString", s_vecMany,
        [](std::size_t width)
        {
            return [time = DateTime(2009, 3, 7, 14, 5, 9), width]
            { benchmark::DoNotOptimize(time.IntToUString(7, static_cast<int>(width))); };
        });
}

} // namespace ToolkitGrowth
