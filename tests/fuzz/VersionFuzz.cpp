// SPDX-License-Identifier: MIT
#include "tests/reference/PlainVersion.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzText.h"
#include "toolkit/app/Version.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Toolkit::Version;
    const Toolkit::TString<wchar_t> text(ToolkitTest::FuzzText(data, size));
    const auto parts = ToolkitTest::PlainVersion::Parse(text);
    const Version version(text);
    TOOLKIT_FUZZ_CHECK(version == Version(parts[0], parts[1], parts[2], parts[3]));
    TOOLKIT_FUZZ_CHECK(Version(version.ToString()) == version);
    TOOLKIT_FUZZ_CHECK(version.CompareVersion(text) == 0);
    return 0;
}
