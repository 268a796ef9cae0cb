// SPDX-License-Identifier: MIT
#include "mailtext/MailDate.h"

#include <cstdlib>
#include <locale>
#include <sstream>

namespace Desk
{

namespace
{

// From 1; 0 for no month.
unsigned int MonthOf(const Text& name)
{
    const Text months = L"JanFebMarAprMayJunJulAugSepOctNovDec";
    const std::size_t found = name.size() == 3 ? months.find(name) : months.npos;
    return found == months.npos ? 0 : static_cast<unsigned int>(found / 3 + 1);
}

} // namespace

bool ReadMailDate(const Text& text, Toolkit::DateTime& date)
{
    // The name of the day may be missing.
    std::wistringstream stream(text.substr(text.find(L',') + 1));
    stream.imbue(std::locale::classic());
    unsigned int day = 0;
    unsigned int year = 0;
    unsigned int hour = 0;
    unsigned int minute = 0;
    unsigned int second = 0;
    int zone = 0;
    std::wstring month;
    wchar_t colon = L' ';
    stream >> day >> month >> year >> hour >> colon >> minute >> colon >> second >> zone;
    // Month 0 is none, so that the date is invalid. The zone's hours and minutes are one number.
    const bool known = !stream.fail() && zone >= -9999 && zone <= 9999;
    date = Toolkit::DateTime(year, known ? MonthOf(month) : 0, day, hour, minute, second, 0);
    const unsigned int ahead = static_cast<unsigned int>(std::abs(known ? zone : 0));
    if (zone > 0)
        date.Remove(ahead / 100, ahead % 100, 0);
    else
        date.Add(ahead / 100, ahead % 100, 0);
    return date.IsValid();
}

} // namespace Desk
