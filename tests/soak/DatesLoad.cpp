// SPDX-License-Identifier: MIT
#include <array>
#include <cstdint>
#include <ctime>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "tests/soak/Loads.h"
#include "tests/support/DateTimes.h"
#include "tests/support/LocalZone.h"
#include "toolkit/datetime/Locales.h"

using Toolkit::DateTime;
using Toolkit::TString;

namespace ToolkitTest
{

namespace
{

const unsigned int s_uThreads = 4;

const char* const s_zones[] = {"UTC",           "Europe/Berlin", "America/New_York",    "Asia/Kathmandu",
                               "Europe/Dublin", "Pacific/Apia",  "Australia/Lord_Howe", "America/St_Johns"};

// A locale and its short date and time, as the C library writes them.
const struct
{
    const char* m_pName;
    const wchar_t* m_pFormat;
} s_locales[] = {
    {"C", L"%m/%d/%y %H:%M"},           {"de_DE.UTF-8", L"%d.%m.%y %H:%M"},
    {"en_GB.UTF-8", L"%d/%m/%Y %H:%M"}, {"ja_JP.UTF-8", L"%Y/%m/%d %-H:%M"},
    {"sv_SE.UTF-8", L"%Y-%m-%d %H:%M"}, {"no such locale", L"%m/%d/%y %H:%M"},
};

std::wstring Formatted(const wchar_t* format, const std::tm& fields)
{
    std::array<wchar_t, 100> text;
    return {text.data(), std::wcsftime(text.data(), text.size(), format, &fields)};
}

void ShowDate(std::int64_t instant, const wchar_t* format)
{
    const std::time_t seconds = instant;
    std::tm local = {};
    std::tm utc = {};
    localtime_r(&seconds, &local);
    gmtime_r(&seconds, &utc);
    const DateTime time = At(instant);
    EXPECT_EQ(Formatted(L"%Y-%m-%d %H:%M:%S", local), Iso(time));
    EXPECT_EQ(Formatted(L"%Y-%m-%d %H:%M:%S Z", utc), Iso(time, true));
    EXPECT_EQ(time, Parsed(Iso(time, true)));
    TString<wchar_t> shown;
    time.GetString(shown);
    EXPECT_EQ(Formatted(format, local), shown) << instant;
}

// Always the same instants, from 1970 to 2100, and as many of them in each zone and locale.
void ShowManyDates(unsigned int thread, unsigned long dates, const wchar_t* format)
{
    std::mt19937_64 random(thread);
    std::uniform_int_distribution<std::int64_t> instants(0, 4102444800);
    for (unsigned long i = 0; i < dates && !testing::Test::HasFailure(); ++i)
        ShowDate(instants(random), format);
}

} // namespace

void ShowDates(unsigned long dates)
{
    const unsigned long each =
        (dates + s_uThreads - 1) / s_uThreads / (std::size(s_zones) * std::size(s_locales)) + 1;
    for (const auto& locale : s_locales)
        for (const char* const zone : s_zones)
        {
            SCOPED_TRACE(std::string(locale.m_pName) + " " + zone);
            const ScopedEnvironment environment("LC_ALL", locale.m_pName);
            const LocalZone local(zone);
            std::vector<std::thread> threads;
            for (unsigned int thread = 0; thread < s_uThreads; ++thread)
                threads.emplace_back([&, thread] { ShowManyDates(thread, each, locale.m_pFormat); });
            for (std::thread& thread : threads)
                thread.join();
        }
}

} // namespace ToolkitTest
