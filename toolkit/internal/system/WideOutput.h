// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_SYSTEM_WIDEOUTPUT_H
#define TOOLKIT_INTERNAL_SYSTEM_WIDEOUTPUT_H

#include "toolkit/core/TString.h"

namespace Toolkit
{

// Inserts `text` into the standard wide output stream, without a flush. A character that the stream cannot
// convert appears as "?", and a spoilt state of the stream is cleared, so that no later text is lost with it.
void WriteToWideOutput(const TString<wchar_t>& text);

} // namespace Toolkit

#endif
