// SPDX-License-Identifier: MIT
#ifndef DESK_MAILTEXT_MAILDATE_H
#define DESK_MAILTEXT_MAILDATE_H

#include "Text.h"
#include "toolkit/datetime/DateTime.h"

namespace Desk
{

// Reads the date of a mail (RFC 5322), for instance "Mon, 02 Mar 2026 08:15:00 +0100". False, and an invalid
// date, for a text of another form.
bool ReadMailDate(const Text& text, Toolkit::DateTime& date);

} // namespace Desk

#endif
