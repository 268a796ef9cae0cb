// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_SYSTEMFAILURE_H
#define TOOLKIT_INTERNAL_SYSTEM_SYSTEMFAILURE_H

#include <string>
#include <string_view>

#include "toolkit/core/Failure.h"

namespace Toolkit
{

// The failure of a call of the system: SystemFailure("cannot read", path.native(), errno) says "cannot read
// /home/a/x.ini: Permission denied". The code is that of the generic category, which compares with
// `std::errc`; the message is in English whatever the host's locale is. Without a name the message leaves it
// out.
Failure SystemFailure(std::string_view what, std::string_view name, int error);

// The system's own words for an error number, in English.
std::string SystemReason(int error);

} // namespace Toolkit

#endif
