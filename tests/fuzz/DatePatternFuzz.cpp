// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "tests/reference/PlainDatePattern.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzText.h"
#include "toolkit/internal/icu/LocaleName.h"
#include "toolkit/internal/locale/DateTimeFormat.h"
#include "toolkit/internal/locale/ShortPattern.h"

namespace
{

using Text = std::wstring;

// The whole pattern, and as much of it as the plain form fills in soon.
const std::size_t s_uMaxPlain = 500;

void CheckFormat(const Text& pattern, const Toolkit::CivilTime& time)
{
    namespace Plain = ToolkitTest::PlainDatePattern;
    namespace DateTimeFormat = Toolkit::DateTimeFormat;
    // A marker of any letters never ends the work, and is not looked at.
    DateTimeFormat::Time(pattern, time, pattern);
    const Text date = DateTimeFormat::Date(pattern, time);
    const Text clock = DateTimeFormat::Time(pattern, time, L"PM");
    TOOLKIT_FUZZ_CHECK(date.find(L' ') == date.npos);
    TOOLKIT_FUZZ_CHECK(clock.find(L":ss") == clock.npos || pattern.find(L's') != pattern.npos);
    if (pattern.size() > s_uMaxPlain)
        return;
    TOOLKIT_FUZZ_CHECK(date == Plain::Date(pattern, time));
    TOOLKIT_FUZZ_CHECK(clock == Plain::Time(pattern, time, L"PM"));
}

void CheckShort(const Text& pattern, const Toolkit::CivilTime& time)
{
    namespace DateTimeFormat = Toolkit::DateTimeFormat;
    namespace ShortPattern = Toolkit::ShortPattern;
    const Text date = ShortPattern::Date(pattern);
    TOOLKIT_FUZZ_CHECK(ShortPattern::Date(date) == date);
    TOOLKIT_FUZZ_CHECK(Text(DateTimeFormat::Date(date, time)).find_first_of(L"dMy ") == Text::npos);
    const Text clock = ShortPattern::Time(pattern);
    TOOLKIT_FUZZ_CHECK(ShortPattern::Time(clock) == clock);
    TOOLKIT_FUZZ_CHECK(Text(DateTimeFormat::Time(L"x " + clock, time, L"PM")).find_first_of(L"Hhma") ==
                       Text::npos);
}

} // namespace

// The first four bytes are the hour, the minute, the day and the year, the rest is the pattern, or the
// locale.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::uint8_t head[4] = {0, 0, 0, 0};
    const std::size_t used = std::min(size, sizeof head);
    std::copy(data, data + used, head);
    const Toolkit::CivilTime time = {head[3] * 64 - 100, head[2] % 12 + 1, head[2] % 31 + 1,
                                     head[0] % 24,       head[1] % 60,     0};
    const Text pattern = ToolkitTest::FuzzText(data + used, size - used);
    CheckFormat(pattern, time);
    CheckShort(pattern, time);
    const Toolkit::LocaleName name(std::string(data + used, data + size));
    TOOLKIT_FUZZ_CHECK(name.IsValid() == !name.Language().empty());
    TOOLKIT_FUZZ_CHECK(name.Id().size() <= 32);
    return 0;
}
