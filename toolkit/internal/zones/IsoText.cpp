// SPDX-License-Identifier: MIT
#include "toolkit/internal/zones/IsoText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwchar>

#include "toolkit/internal/text/ParseNumber.h"

namespace Toolkit
{

namespace
{

const int s_nUnread = -1;
const wchar_t s_chUtc = L'Z';

} // namespace

IsoText IsoText::Read(const wchar_t* text, const wchar_t* end)
{
    // A stream takes this for the end.
    end = std::find(text, end, static_cast<wchar_t>(WEOF));
    IsoText result;
    CivilTime& time = result.time;
    time.year = time.month = time.day = time.hour = time.minute = time.second = s_nUnread;
    const std::array<std::int64_t*, 6> fields = {&time.year, &time.month,  &time.day,
                                                 &time.hour, &time.minute, &time.second};
    for (std::int64_t* const field : fields)
    {
        int value = s_nUnread;
        const bool read = ParseNumber::Read(text, end, value);
        *field = value;
        if (!read)
            return result;
        if (text != end)
            ++text;
    }
    text = ParseNumber::SkipSpace(text, end);
    result.utc = text != end && *text == s_chUtc;
    return result;
}

} // namespace Toolkit
