// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_UTF7_H
#define TOOLKIT_ENCODING_UTF7_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// Conversion between wide text and single bytes. Each conversion ends at the first NUL; any thread may call
/// it. Quirk: despite the name this is no UTF-7 but plain seven-bit ASCII; nothing is encoded or decoded.
class TOOLKIT_API UTF7
{
public:
    /// Each byte becomes the character of the same value, 0 to 255.
    static TString<wchar_t> ToUNICODE(const TString<char>& text);
    /// Each character up to 127 becomes that byte, every other one "_".
    static TString<char> ToUTF7(const TString<wchar_t>& text);
};

} // namespace Toolkit

#endif
