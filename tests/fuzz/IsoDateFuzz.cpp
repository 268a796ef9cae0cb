// SPDX-License-Identifier: MIT
#include "tests/reference/PlainIsoText.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzText.h"
#include "toolkit/datetime/DateTime.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Toolkit::DateTime;
    using Toolkit::TString;
    const TString<wchar_t> text(ToolkitTest::FuzzText(data, size));
    DateTime time;
    const bool read = time.ParseIsoString(text);
    TOOLKIT_FUZZ_CHECK(read == time.IsValid());
    TOOLKIT_FUZZ_CHECK(time == ToolkitTest::PlainIsoText::Value(text));
    TString<wchar_t> written;
    time.GetIsoString(written, true);
    DateTime again;
    TOOLKIT_FUZZ_CHECK(again.ParseIsoString(written) == read && again == time);
    TString<char> bytes;
    time.GetIsoString(bytes, false);
    TOOLKIT_FUZZ_CHECK(again.ParseIsoString(bytes) == read && again <= time);
    return 0;
}
