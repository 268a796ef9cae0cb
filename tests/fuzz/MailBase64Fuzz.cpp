// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/reference/PlainBase64.h"
#include "tests/support/FuzzCheck.h"
#include "toolkit/encoding/Base64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Toolkit::Base64;
    namespace Plain = ToolkitTest::PlainBase64;
    const std::string text(reinterpret_cast<const char*>(data), size);
    TOOLKIT_FUZZ_CHECK(Base64::Encode(text) == Plain::Encode(text));
    TOOLKIT_FUZZ_CHECK(Base64::Decode(Base64::Encode(text)).value_or("failed") == text);

    const Toolkit::Result<std::string> strict = Base64::Decode(text);
    if (strict)
        TOOLKIT_FUZZ_CHECK(Plain::Encode(*strict) == text);
    else
        TOOLKIT_FUZZ_CHECK(Plain::Encode(Plain::Decode(text)) != text);

    std::string line;
    std::copy_if(text.begin(), text.end(), std::back_inserter(line),
                 [](char character) { return character != '\r' && character != '\n'; });
    const Toolkit::Result<std::string> mail = Base64::DecodeMime(text);
    const Toolkit::Result<std::string> whole = Base64::Decode(line);
    TOOLKIT_FUZZ_CHECK(!whole || (mail && *mail == *whole));
    if (mail)
    {
        line.erase(line.find_last_not_of('=') + 1);
        const std::string again = Plain::Encode(*mail);
        // The last character may have bits that are part of no byte.
        const std::size_t certain = line.size() % 4 == 0 ? line.size() : line.size() - 1;
        TOOLKIT_FUZZ_CHECK(again.substr(0, certain) == line.substr(0, certain));
    }
    return 0;
}
