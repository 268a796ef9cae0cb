// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZONES_MAILDATE_H
#define TOOLKIT_INTERNAL_ZONES_MAILDATE_H

#include <string_view>

#include "toolkit/internal/zones/ReadInstant.h"

// The dates of mails, "Mon, 2 Mar 2026 14:05:09 +0100" (RFC 5322, with its obsolete forms), as mails really
// have them. Any thread may call it.
namespace Toolkit::MailDate
{

// Comments and line breaks may stand wherever white space may. The name of the day, whether it is the right
// one or not, the comma after it, the seconds and the zone may be missing; names may be written out; "-" may
// stand around the month and "." between the numbers of the time; an offset may have a ":" and a name after
// it. Without a zone, or with a name that the RFC does not know or trust, the time is UTC. Years of two
// digits are 1950 to 2049, of three digits they count from 1900. The second 60 counts on into the next
// minute.
ReadInstant Read(std::string_view text);

} // namespace Toolkit::MailDate

#endif
