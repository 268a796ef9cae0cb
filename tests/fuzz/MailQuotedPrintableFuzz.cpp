// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/support/FuzzCheck.h"
#include "toolkit/encoding/QuotedPrintable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Toolkit::QuotedPrintable;
    const std::string text(reinterpret_cast<const char*>(data), size);
    TOOLKIT_FUZZ_CHECK(QuotedPrintable::Decode(text).size() <= text.size());
    const std::string encoded = QuotedPrintable::Encode(text);
    TOOLKIT_FUZZ_CHECK(QuotedPrintable::Decode(encoded) == text);
    for (std::size_t begin = 0; begin < encoded.size();)
    {
        const std::size_t end = std::min(encoded.find("\r\n", begin), encoded.size());
        TOOLKIT_FUZZ_CHECK(end - begin <= 76);
        TOOLKIT_FUZZ_CHECK(end == begin || (encoded[end - 1] != ' ' && encoded[end - 1] != '\t'));
        begin = end + 2;
    }
    return 0;
}
