// SPDX-License-Identifier: MIT
#include <memory>
#include <string>
#include <vector>

#include "tests/reference/PlainBase64.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzText.h"
#include "toolkit/encoding/B64.h"
#include "toolkit/encoding/Bytes.h"

namespace
{

using Conversion = int (*)(const unsigned char*, unsigned int, unsigned char**, unsigned int*);

std::string Convert(Conversion convert, const std::string& input)
{
    const std::vector<unsigned char> exact(input.begin(), input.end());
    unsigned char* out = nullptr;
    unsigned int size = 0;
    const int result = convert(exact.data(), static_cast<unsigned int>(exact.size()), &out, &size);
    const std::unique_ptr<unsigned char[]> owner(out);
    TOOLKIT_FUZZ_CHECK(result == (input.empty() ? 0 : 1));
    return std::string(out, out + size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    namespace Plain = ToolkitTest::PlainBase64;
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::string encoded = Convert(Toolkit::b64_decode_binary, input);
    TOOLKIT_FUZZ_CHECK(encoded == Plain::Encode(input));
    TOOLKIT_FUZZ_CHECK(Convert(Toolkit::b64_encode_binary, input) == Plain::Decode(input));
    if (input.size() % 3 == 0)
        TOOLKIT_FUZZ_CHECK(Convert(Toolkit::b64_encode_binary, encoded) == input);

    const Toolkit::TString<wchar_t> text(ToolkitTest::FuzzText(data, size));
    const std::string decoded = Plain::Decode(Toolkit::UTF8::ToUTF8(text));
    const std::string again = Plain::Encode(decoded);
    TOOLKIT_FUZZ_CHECK(Toolkit::B64::ToUNICODE(Toolkit::B64::ToB64(text)) ==
                       std::wstring(again.begin(), again.end()));
    return 0;
}
