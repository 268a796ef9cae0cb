// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/RegExpBackend.h"

namespace Toolkit
{

const int RegExpBackend::s_iNoMatch = -1;
const int RegExpBackend::s_iPartial = -12;
const int RegExpBackend::s_iNullArgument = -2;
const int RegExpBackend::s_iMatchLimit = -8;
const int RegExpBackend::s_iBadUtf8 = -10;
const int RegExpBackend::s_iBadUtf8Offset = -11;
const int RegExpBackend::s_iBadLength = -32;
const int RegExpBackend::s_iWholeMatchOptions = 0x580;
const int RegExpBackend::s_iCheckedOption = 0x2000;
const int RegExpBackend::s_iPartialOption = 0x08000000;

} // namespace Toolkit
