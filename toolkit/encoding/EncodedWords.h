// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_ENCODING_ENCODEDWORDS_H
#define TOOLKIT_ENCODING_ENCODEDWORDS_H

#include <string>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"

namespace Toolkit
{

/// The encoded words of RFC 2047, which bring text of any charset into the headers of mails: a subject, or
/// the name beside an address. Charsets are those of `Text`. Any thread may call all of it.
///
/// @code
/// const std::string subject = Toolkit::EncodedWords::Decode("=?utf-8?Q?Caf=C3=A9?=");
/// Toolkit::Result<std::string> header = Toolkit::EncodedWords::Encode(subject);
/// if (header)
///     std::cout << "Subject: " << *header << "\r\n"; // =?utf-8?Q?Caf=C3=A9?=
/// @endcode
class TOOLKIT_API EncodedWords
{
public:
    EncodedWords() = delete;

    /// The text of a header in UTF-8; it is for people, and may hold line ends that somebody encoded. Words
    /// are decoded wherever they stand and however long they are. Blanks and line ends between two of them
    /// are dropped, and the bytes of neighbours of one charset are joined, so that a character may be divided
    /// among them. A language after the charset (RFC 2231) is ignored, and Base64 may lack its padding. Bytes
    /// that are no character of their charset become U+FFFD. What is broken otherwise or has an unknown
    /// charset stays as it stands, as does everything that is no word.
    static std::string Decode(std::string_view header);

    /// The text itself when it is of printable ASCII and holds no "=?". Otherwise all of it in words of at
    /// most 75 characters, each of whole characters, with a single space between them, at which the header
    /// may be folded. `Errc::Malformed` for a text that is no UTF-8 or has no form in the charset,
    /// `std::errc::invalid_argument` for a charset that is unknown, or whose name leaves a word no room or
    /// has a character that no word may have there, such as ":".
    static Result<std::string> Encode(std::string_view utf8, const std::string& charset = "utf-8");
};

} // namespace Toolkit

#endif
