// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_QP_H
#define TOOLKIT_ENCODING_QP_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// @ingroup classic_text
/// The upper-case hexadecimal digits.
extern "C" TOOLKIT_API const char* const HEX;

/// Quoted-printable (RFC 2045) of a text's UTF-8 bytes, with the set of escaped characters of encoded words
/// in mail headers: control characters, space and the specials; the result is safe in a header and in a body.
/// A text that has no UTF-8 form gives an empty one, and every text ends at its first NUL, but for the narrow
/// HasToBeQP. Any thread may call it.
///
/// @code
/// const Toolkit::TString<wchar_t> subject(L"Caf\u00e9");
/// const Toolkit::TString<wchar_t> word = Toolkit::QP::ToQP(subject); // Caf=C3=A9
/// const bool same = Toolkit::QP::ToUNICODE(word) == subject;
/// @endcode
class TOOLKIT_API QP
{
public:
    /// True when `length` is greater than `limit` or the text holds a line feed; otherwise, unless
    /// `onlyLength`, when a byte of it needs an escape.
    static bool HasToBeQP(const TString<char>& text, unsigned int length, unsigned int limit,
                          bool onlyLength);
    /// The same for wide text.
    static bool HasToBeQP(const TString<wchar_t>& text, unsigned int length, unsigned int limit,
                          bool onlyLength);

    /// Encodes without line breaks; line ends of the text are escaped as well.
    static TString<wchar_t> ToQP(const TString<wchar_t>& text);
    /// Encodes with soft line breaks ("=", carriage return, line feed): the first line holds `firstLine` - 1
    /// encoded characters and "=", each further one `lineLength` - 1 and "=". A line length below 4 or a
    /// first line of 0 breaks nothing. Quirk: a break never follows "=" directly but may fall between the two
    /// digits of an escape.
    static TString<wchar_t> ToQP(const TString<wchar_t>& text, unsigned int firstLine,
                                 unsigned int lineLength);

    /// Decodes. Bytes that are not UTF-8 then give an empty text. Quirk: a soft line break loses only its
    /// "=", so its line end stays in the text. Quirk: "G" and "g" are digits worth 16.
    static TString<wchar_t> ToUNICODE(const TString<wchar_t>& text);
};

} // namespace Toolkit

#endif
