#ifndef TOOLKIT_LOG_WIDEOUTPUT_H
#define TOOLKIT_LOG_WIDEOUTPUT_H

#include <iostream>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// Inserts `text` into the standard wide output stream. A character that the stream cannot convert spoils the
// stream; the spoilt state is cleared, so that later text is not lost with it.
inline void WriteToWideOutput(const TString<wchar_t>& text)
{
    std::wcout << text;
    if (!std::wcout)
        std::wcout.clear();
}

} // namespace Toolkit

#endif
