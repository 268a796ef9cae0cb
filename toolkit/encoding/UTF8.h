// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_UTF8_H
#define TOOLKIT_ENCODING_UTF8_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// The library-wide conversion between wide text and UTF-8 bytes (RFC 3629), strict in both directions: a
/// text that holds an overlong form, a surrogate or a value above 10FFFF converts to an empty one. Each
/// conversion ends at the first NUL. Any thread may call it.
///
/// @code
/// const Toolkit::TString<wchar_t> wide = Toolkit::UTF8::ToUNICODE(line);
/// if (wide.empty() && !line.empty())
///     return Fail("that is no UTF-8");
/// Show(Toolkit::UTF8::ToUTF8(wide));
/// @endcode
class TOOLKIT_API UTF8
{
public:
    /// UTF-8 to wide text.
    static TString<wchar_t> ToUNICODE(const TString<char>& text);
    /// Wide text to UTF-8.
    static TString<char> ToUTF8(const TString<wchar_t>& text);
    /// ToUTF8 into `bytes`, whose memory is used again.
    static void Encode(const TString<wchar_t>& text, TString<char>& bytes);

    /// True when the UTF-8 form has another length than the text, as where a character needs more than one
    /// byte. Quirk: it is true for text without a UTF-8 form, too, and as a rule for text with a NUL.
    static bool HasToBeUTF8(const TString<wchar_t>& text);
};

} // namespace Toolkit

#endif
