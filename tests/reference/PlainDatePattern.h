// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINDATEPATTERN_H
#define TOOLKIT_TESTS_REFERENCE_PLAINDATEPATTERN_H

#include <string>

#include "toolkit/internal/zones/CivilTime.h"

// The formatter of date patterns in its plainest form: the whole pattern, one replacement after the other.
// The marker must hold no token.
namespace ToolkitTest::PlainDatePattern
{

inline void Replace(std::wstring& text, const std::wstring& what, const std::wstring& with)
{
    for (std::size_t found = text.find(what); found != text.npos; found = text.find(what))
        text.replace(found, what.size(), with);
}

inline std::wstring Number(std::int64_t number, std::size_t width)
{
    std::wstring text = std::to_wstring(number);
    while (text.size() < width)
        text.insert(0, 1, L'0');
    return text;
}

inline std::wstring Date(std::wstring text, const Toolkit::CivilTime& time)
{
    Replace(text, L"dd", Number(time.day, 2));
    Replace(text, L"%d", Number(time.day, 2));
    Replace(text, L"d", Number(time.day, 1));
    Replace(text, L"MM", Number(time.month, 2));
    Replace(text, L"%m", Number(time.month, 2));
    Replace(text, L"M", Number(time.month, 2));
    Replace(text, L"yyyy", Number(time.year, 4));
    Replace(text, L"%Y", Number(time.year, 4));
    Replace(text, L"yy", Number(time.year % 100, 2));
    return text.substr(0, text.find(L' '));
}

inline std::wstring Time(std::wstring text, const Toolkit::CivilTime& time, const std::wstring& marker)
{
    std::int64_t hour = time.hour;
    if (text.find(L"tt") != text.npos || text.find(L'h') != text.npos)
    {
        hour = hour == 0 ? 12 : hour > 12 ? hour - 12 : hour;
        Replace(text, text.find(L'a') != text.npos ? L"a" : L"tt", marker);
    }
    Replace(text, L"HH", Number(hour, 2));
    Replace(text, L"H", Number(hour, 1));
    Replace(text, L"hh", Number(hour, 2));
    Replace(text, L"h", Number(hour, 1));
    Replace(text, L"mm", Number(time.minute, 2));
    Replace(text, L"m", Number(time.minute, 1));
    Replace(text, L":ss", L"");
    Replace(text, L".ss", L"");
    Replace(text, L"a", L"");
    Replace(text, L"tt", L"");
    for (const wchar_t* const token : {L"%T", L"%R", L"%r"})
        Replace(text, token, Number(hour, 2) + L":" + Number(time.minute, 2));
    return text.substr(text.find(L' ') + 1);
}

} // namespace ToolkitTest::PlainDatePattern

#endif
