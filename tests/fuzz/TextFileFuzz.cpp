// SPDX-License-Identifier: MIT
#include <vector>

#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzFile.h"
#include "tests/support/PlainLines.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/TextFile.h"

using Text = Toolkit::TString<wchar_t>;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ToolkitTest::FuzzFile file(data, size);
    Toolkit::TextFile text;
    const bool opened = text.Open(file.GetPath());
    std::vector<std::wstring> lines;
    for (Text line = text.GetFirstLine(); !text.Eof(); line = text.GetNextLine())
        lines.push_back(line);
    TOOLKIT_FUZZ_CHECK(opened || lines.empty());

    // What is no mark and holds no zero is UTF-8.
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (bytes.find('\0') != bytes.npos || bytes.substr(0, 1) == "\xEF")
        return 0;
    const Text plain = Toolkit::UTF8::ToUNICODE(bytes);
    if (plain.empty() && bytes.find_first_of("\xFE\xFF") == 0)
        return 0;
    TOOLKIT_FUZZ_CHECK(opened == (bytes.empty() || !plain.empty()));
    TOOLKIT_FUZZ_CHECK(lines == ToolkitTest::PlainLines(plain));
    return 0;
}
