// SPDX-License-Identifier: MIT
#ifndef DESK_CLASSIC_DATES_H
#define DESK_CLASSIC_DATES_H

#include <string>
#include <vector>

namespace Desk
{

// One date as users of five locales see it; their lines are appended to `report`. False when one of them is
// not what these users write. Changes LC_ALL meanwhile: no other thread may look at the environment.
bool ShowInFiveLocales(std::vector<std::string>& report);

// How a list shows this moment, and the same time of the day before, to the user of this host. False when
// they are not shown as a time and as a date.
bool ShowRelativeToNow(std::vector<std::string>& report);

} // namespace Desk

#endif
