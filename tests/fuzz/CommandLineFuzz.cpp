// SPDX-License-Identifier: MIT
#include <cstdint>
#include <string>
#include <vector>

#include "tests/reference/PlainParse.h"
#include "tests/reference/PlainTokenize.h"
#include "tests/support/FuzzCheck.h"
#include "tests/support/FuzzText.h"
#include "toolkit/app/CmdLineOption.h"
#include "toolkit/app/CmdLineParser.h"

// The input is a command line, of which some options are declared.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Toolkit::CmdLineOption;
    using Toolkit::CmdLineParser;
    using Toolkit::smart_ptr;
    using Toolkit::TString;
    const TString<wchar_t> line = ToolkitTest::FuzzText(data, size);
    const std::vector<TString<wchar_t>> expected = ToolkitTest::PlainTokenize(line);
    std::vector<TString<wchar_t>> tokens = {L"before"};
    CmdLineParser::Tokenize(line, tokens);
    TOOLKIT_FUZZ_CHECK(tokens == expected);
    CmdLineParser(TString<char>(std::string(reinterpret_cast<const char*>(data), size))).Parse();

    CmdLineParser parser(line);
    TOOLKIT_FUZZ_CHECK(parser.GetArguments() == expected);
    std::vector<smart_ptr<CmdLineOption>> options;
    for (const wchar_t* const name : {L"a", L"culture", L"", L"-"})
    {
        options.push_back(new CmdLineOption(name, options.empty()));
        TOOLKIT_FUZZ_CHECK(parser.AddOption(options.back()));
        TOOLKIT_FUZZ_CHECK(!parser.AddOption(options.back()));
    }
    TOOLKIT_FUZZ_CHECK(parser.Parse() == ToolkitTest::PlainParse(expected, L"a").has_value());
    for (const smart_ptr<CmdLineOption>& option : options)
    {
        const auto found = ToolkitTest::PlainParse(expected, option->GetName());
        TOOLKIT_FUZZ_CHECK(option->IsFound() == found.has_value());
        TOOLKIT_FUZZ_CHECK(option->GetValue() == found.value_or(L""));
    }
    return 0;
}
