// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_DATETIMES_H
#define TOOLKIT_TESTS_SUPPORT_DATETIMES_H

#include <cstdint>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "toolkit/datetime/DateTime.h"

namespace Toolkit
{

// How a failed comparison shows a value; searched for next to the class.
inline void PrintTo(const DateTime& time, std::ostream* out)
{
    TString<char> text;
    time.GetIsoString(text, true);
    *out << (time.IsValid() ? text : "an invalid value");
}

} // namespace Toolkit

namespace ToolkitTest
{

// The value of an instant in seconds since 1970, reached by nothing but moves of a known value.
inline Toolkit::DateTime At(std::int64_t instant)
{
    Toolkit::DateTime time(1970, 1, 1, 0, 0, 0, 0);
    const auto distance = static_cast<std::uint64_t>(std::llabs(instant));
    const auto hours = static_cast<unsigned int>(distance / 3600);
    const auto seconds = static_cast<unsigned int>(distance % 3600);
    instant < 0 ? time.Remove(hours, 0, seconds) : time.Add(hours, 0, seconds);
    return time;
}

inline std::wstring Iso(const Toolkit::DateTime& time, bool utc = false)
{
    Toolkit::TString<wchar_t> text(L"replaced");
    time.GetIsoString(text, utc);
    return text;
}

inline Toolkit::DateTime Parsed(const std::wstring& text)
{
    Toolkit::DateTime time;
    const bool valid = time.ParseIsoString(Toolkit::TString<wchar_t>(text));
    EXPECT_EQ(valid, time.IsValid());
    return time;
}

} // namespace ToolkitTest

#endif
