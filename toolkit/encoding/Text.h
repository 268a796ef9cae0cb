// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_TEXT_H
#define TOOLKIT_ENCODING_TEXT_H

#include <string>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// Conversions between UTF-8, which is the text of the library, wide text and the other charsets. What has no
/// form on the other side is a failure (`Errc::Malformed`) that says where it stands; `Text::Replace` puts a
/// replacement there instead. NUL is a character like any other. UTF-8 is strict (RFC 3629): an overlong
/// form, a surrogate and a value above 10FFFF are none. Any thread may call all of it.
///
/// @code
/// Toolkit::Result<std::string> text = Toolkit::Text::FromCharset(bytes, "iso-8859-1");
/// if (!text)
///     std::cerr << text.error().Message() << '\n';
/// Toolkit::Result<std::wstring> wide = Toolkit::Text::ToWide("gr\u00f6\u00dfe");
/// @endcode
class TOOLKIT_API Text
{
public:
    /// What becomes of what has no form on the other side.
    enum Loss : unsigned int
    {
        /// It makes the whole conversion a failure.
        Refuse = 0,
        /// U+FFFD stands for it in Unicode, "?" in another charset.
        Replace = 1,
    };

    Text() = delete;

    /// UTF-8 to wide text.
    static Result<std::wstring> ToWide(std::string_view utf8, Loss loss = Refuse);
    /// Wide text to UTF-8.
    static Result<std::string> FromWide(std::wstring_view wide, Loss loss = Refuse);

    /// True when all of it is UTF-8; an empty text is.
    static bool IsUtf8(std::string_view bytes) noexcept;

    /// The UTF-8 form of bytes in a charset that has one of the names of IANA, or another one that ICU knows;
    /// case does not matter. A byte-order mark is taken away where the charset says so ("utf-16"), and kept
    /// otherwise. An unknown charset is a failure, `std::errc::invalid_argument`, with and without `Replace`.
    /// The first call loads ICU; where that fails, the failure is `std::errc::not_supported` and says why,
    /// and the next call tries it again.
    static Result<std::string> FromCharset(std::string_view bytes, const std::string& charset,
                                           Loss loss = Refuse);
    /// The other way round.
    static Result<std::string> ToCharset(std::string_view utf8, const std::string& charset,
                                         Loss loss = Refuse);
};

} // namespace Toolkit

#endif
