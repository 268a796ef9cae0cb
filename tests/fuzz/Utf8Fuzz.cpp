// SPDX-License-Identifier: MIT
#include <cstdint>
#include <cstring>
#include <string>

#include "tests/reference/PlainUtf8.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzText.h"
#include "toolkit/encoding/UTF8.h"

// The input is taken as UTF-8, as a text made of it, and as the elements of a wide text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    namespace Plain = ToolkitTest::PlainUtf8;
    using Toolkit::UTF8;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    TOOLKIT_FUZZ_CHECK(UTF8::ToUNICODE(bytes) == Plain::Decode(bytes));

    std::wstring elements(size / sizeof(wchar_t), L'\0');
    if (!elements.empty())
        std::memcpy(elements.data(), data, elements.size() * sizeof(wchar_t));
    for (const std::wstring& text : {ToolkitTest::FuzzText(data, size), elements})
    {
        const std::string encoded = Plain::Encode(text);
        TOOLKIT_FUZZ_CHECK(UTF8::ToUTF8(text) == encoded);
        Toolkit::TString<char> reused("before");
        UTF8::Encode(text, reused);
        TOOLKIT_FUZZ_CHECK(reused == encoded);
        TOOLKIT_FUZZ_CHECK(UTF8::HasToBeUTF8(text) == (encoded.size() != text.size()));
        TOOLKIT_FUZZ_CHECK(UTF8::ToUNICODE(encoded) == Plain::Decode(encoded));
    }
    return 0;
}
