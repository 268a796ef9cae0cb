// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <string>

#include "tests/reference/PlainQuotedPrintable.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzText.h"
#include "toolkit/encoding/QP.h"

// The first eight bytes are the lengths of the lines, the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    namespace Plain = ToolkitTest::PlainQuotedPrintable;
    using Toolkit::QP;
    unsigned int lines[2] = {0, 0};
    const std::size_t used = std::min(size, sizeof lines);
    std::memcpy(lines, data, used);

    const std::wstring text = ToolkitTest::FuzzText(data + used, size - used);
    const std::wstring encoded = QP::ToQP(text);
    TOOLKIT_FUZZ_CHECK(encoded == Plain::Encode(text));
    TOOLKIT_FUZZ_CHECK(QP::ToQP(text, lines[0], lines[1]) == Plain::Encode(text, lines[0], lines[1]));
    const unsigned int shortLines[2] = {lines[0] % 100, lines[1] % 100};
    TOOLKIT_FUZZ_CHECK(QP::ToQP(text, shortLines[0], shortLines[1]) ==
                       Plain::Encode(text, shortLines[0], shortLines[1]));
    TOOLKIT_FUZZ_CHECK(QP::ToUNICODE(text) == Plain::Decode(text));
    TOOLKIT_FUZZ_CHECK(Toolkit::UTF8::ToUTF8(QP::ToUNICODE(encoded)) == Toolkit::UTF8::ToUTF8(text));

    const bool needed = QP::HasToBeQP(Toolkit::TString<wchar_t>(text), 0, 0, false);
    TOOLKIT_FUZZ_CHECK(needed == (encoded != Toolkit::UTF8::ToUNICODE(Toolkit::UTF8::ToUTF8(text))));
    return 0;
}
