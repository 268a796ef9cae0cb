// SPDX-License-Identifier: MIT
#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/support/FuzzCheck.h"
#include "toolkit/encoding/EncodedWords.h"
#include "toolkit/encoding/Text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Toolkit::EncodedWords;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::string decoded = EncodedWords::Decode(text);
    TOOLKIT_FUZZ_CHECK(text.find("=?") != text.npos || decoded == text);
    TOOLKIT_FUZZ_CHECK(!Toolkit::Text::IsUtf8(text) || Toolkit::Text::IsUtf8(decoded));

    const Toolkit::Result<std::string> header = EncodedWords::Encode(text);
    TOOLKIT_FUZZ_CHECK(header.has_value() == Toolkit::Text::IsUtf8(text));
    if (header)
        TOOLKIT_FUZZ_CHECK(EncodedWords::Decode(*header) == text);
    return 0;
}
