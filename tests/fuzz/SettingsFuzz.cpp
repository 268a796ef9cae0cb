// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/FuzzCheck.h"
#include "toolkit/internal/ini/IniDocument.h"

using Toolkit::IniDocument;

// The part up to the next byte 1, which the input loses.
static std::string Take(std::string_view& input)
{
    const std::size_t end = std::min(input.find('\1'), input.size());
    const std::string part(input.substr(0, end));
    input.remove_prefix(std::min(end + 1, input.size()));
    return part;
}

static void CheckEqual(const IniDocument& document, const IniDocument& other)
{
    const std::vector<std::string> sections = document.Sections();
    TOOLKIT_FUZZ_CHECK(sections == other.Sections());
    for (const std::string& section : sections)
    {
        const std::vector<std::string> keys = document.Keys(section);
        TOOLKIT_FUZZ_CHECK(keys == other.Keys(section));
        for (const std::string& key : keys)
            TOOLKIT_FUZZ_CHECK(document.Find(section, key) == other.Find(section, key));
    }
}

// The input is the text of a file, and then changes: a section, a key and a value, or "-" and no value, which
// removes the key.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string text = Take(input);
    IniDocument document(text);
    TOOLKIT_FUZZ_CHECK(document.ToText() == text);
    while (!input.empty())
    {
        const std::string section = Take(input);
        const std::string key = Take(input);
        const std::string value = Take(input);
        const std::string before = document.ToText();
        if (value == "-")
        {
            document.Remove(section, key);
            TOOLKIT_FUZZ_CHECK(!document.Find(section, key));
        }
        else if (document.Set(section, key, value))
            TOOLKIT_FUZZ_CHECK(document.Find(section, key) == value);
        else
            TOOLKIT_FUZZ_CHECK(document.ToText() == before);
        CheckEqual(document, IniDocument(document.ToText()));
    }
    return 0;
}
