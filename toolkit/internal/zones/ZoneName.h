// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZONES_ZONENAME_H
#define TOOLKIT_INTERNAL_ZONES_ZONENAME_H

#include <string>

namespace Toolkit::ZoneName
{

// The name of the local zone in the zone database, "Europe/Berlin": from TZ, or else from where the system's
// link leads. Empty where neither is of the form of a name. There need be no such zone.
std::string Local();

} // namespace Toolkit::ZoneName

#endif
