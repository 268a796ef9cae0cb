// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_UTF7_H
#define TOOLKIT_ENCODING_UTF7_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// Conversion between wide text and single bytes. Each conversion ends at the first NUL; any thread may call
/// it. Quirk: despite the name this is no UTF-7 but plain seven-bit ASCII; nothing is encoded or decoded.
///
/// @code
/// const Toolkit::TString<wchar_t> wide = Toolkit::UTF7::ToUNICODE("seven bits");
/// const Toolkit::TString<char> ascii = Toolkit::UTF7::ToUTF7(L"Caf\u00e9"); // Caf_
/// Show(ascii);
/// @endcode
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
