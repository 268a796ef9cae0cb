// SPDX-License-Identifier: MIT
#include "tests/reference/PlainIni.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzFile.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/TextFile.h"

using Text = Toolkit::TString<wchar_t>;

static void CheckSection(const Toolkit::IniFile& ini, const std::wstring& section,
                         const std::map<std::wstring, std::wstring>& plain)
{
    using ToolkitTest::PlainIni;
    TOOLKIT_FUZZ_CHECK(ini.HasSection(section));
    std::vector<Text> keys;
    ini.GetKeyList(section, keys);
    TOOLKIT_FUZZ_CHECK(keys.size() == plain.size());
    auto key = keys.begin();
    for (const auto& [name, value] : plain)
    {
        TOOLKIT_FUZZ_CHECK(*key++ == name);
        TOOLKIT_FUZZ_CHECK(ini.GetValue(section, name, L"none") == value);
        if (value.empty())
            continue;
        TOOLKIT_FUZZ_CHECK(ini.GetInt32(section, name, 5) == PlainIni::ReadNumber<int>(value));
        TOOLKIT_FUZZ_CHECK(ini.GetUint32(section, name, 5) == PlainIni::ReadNumber<unsigned int>(value));
    }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ToolkitTest::FuzzFile file(data, size);
    const Toolkit::IniFile ini(file.GetPath());
    Toolkit::TextFile text;
    TOOLKIT_FUZZ_CHECK(ini.IsLoaded() == text.Open(file.GetPath()));
    std::vector<std::wstring> lines;
    for (Text line = text.GetFirstLine(); !text.Eof(); line = text.GetNextLine())
        lines.push_back(line);
    for (const auto& [section, plain] : ToolkitTest::PlainIni(lines).sections)
        CheckSection(ini, section, plain);
    return 0;
}
