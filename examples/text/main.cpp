// SPDX-License-Identifier: MIT
// Text in other charsets, and the encodings of mails: text

#include <iostream>
#include <string>

#include <toolkit/encoding/Base64.h>
#include <toolkit/encoding/EncodedWords.h>
#include <toolkit/encoding/QuotedPrintable.h>
#include <toolkit/encoding/Text.h>

using namespace Toolkit;

int main()
{
    const Result<std::string> name = Text::FromCharset("Gr\xFC\xDF"
                                                       "e",
                                                       "iso-8859-1");
    std::cout << name.value() << ", " << Text::ToWide(*name)->size() << " characters\n"
              << Base64::Encode(*name) << '\n'
              << Base64::Decode("R3LDvMOfZQ==").value() << '\n'
              << QuotedPrintable::Decode("Gr=C3=BC=C3=9Fe") << '\n'
              << EncodedWords::Decode("=?utf-8?Q?Caf=C3=A9?=") << '\n';
    // What fails says why, and where.
    std::cout << Base64::Decode("R3L?").error().Message() << '\n'
              << Text::FromCharset("a", "no-such-charset").error().Message() << '\n';
}
