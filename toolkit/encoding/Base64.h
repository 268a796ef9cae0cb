// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_BASE64_H
#define TOOLKIT_ENCODING_BASE64_H

#include <string>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// Base64 by RFC 4648, in the standard alphabet and with padding. `Decode` is strict: every text that it
/// takes is exactly what its bytes encode to. Any thread may call all of it.
///
/// @code
/// const std::string text = Toolkit::Base64::Encode("bytes");
/// Toolkit::Result<std::string> bytes = Toolkit::Base64::Decode(text);
/// if (!bytes)
///     std::cerr << bytes.error().Message() << '\n';
/// @endcode
class TOOLKIT_API Base64
{
public:
    Base64() = delete;

    /// One line, without a line end.
    static std::string Encode(std::string_view bytes);

    /// `Errc::Malformed`, with the place in the message, for a character outside the alphabet (white space
    /// and line ends are no exception), for padding that is missing, too much or not at the end, and for bits
    /// that are set after the last byte.
    static Result<std::string> Decode(std::string_view text);

    /// The same for the body of a mail. Carriage returns and line feeds are skipped wherever they stand, and
    /// nothing else is; as in Python, padding may be missing, and bits after the last byte are ignored.
    static Result<std::string> DecodeMime(std::string_view text);
};

} // namespace Toolkit

#endif
