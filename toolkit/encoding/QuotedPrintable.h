// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_QUOTEDPRINTABLE_H
#define TOOLKIT_ENCODING_QUOTEDPRINTABLE_H

#include <string>
#include <string_view>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// Quoted-printable by RFC 2045, for the bodies of mails. It takes and gives bytes: which characters they are
/// is what the mail says of them. Nothing of it fails; any thread may call it.
///
/// @code
/// const std::string body = Toolkit::QuotedPrintable::Encode("Caf\xC3\xA9\r\n"); // Caf=C3=A9
/// const std::string bytes = Toolkit::QuotedPrintable::Decode(body);
/// Show(bytes);
/// @endcode
class TOOLKIT_API QuotedPrintable
{
public:
    QuotedPrintable() = delete;

    /// Lines of at most 76 characters, broken by "=" and a line end (carriage return, line feed) where they
    /// are longer. Such a line end of the bytes stays one; a carriage return or a line feed alone, which a
    /// transport might change, becomes an escape, as does a blank before a line end. Decoding gives exactly
    /// these bytes again.
    static std::string Encode(std::string_view bytes);

    /// Decodes as Python does, which keeps the blanks that a transport put at a line's end: escapes in either
    /// case, and "=" at the end of a line joins it with the next one. What is no escape stays as it is, but
    /// for "==", which is one "=", "=" at the end of the text, which is nothing, and "=" before a carriage
    /// return, which takes everything up to the line feed with it.
    static std::string Decode(std::string_view text);
};

} // namespace Toolkit

#endif
