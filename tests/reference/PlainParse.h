// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINPARSE_H
#define TOOLKIT_TESTS_REFERENCE_PLAINPARSE_H

#include <optional>
#include <string>
#include <vector>

#include "toolkit/core/TString.h"

namespace ToolkitTest
{

// What CmdLineParser::Parse finds of one option alone, which the last argument decides that gave it a value:
// nothing when it is not there, and an empty value when it has none.
inline std::optional<std::wstring> PlainParse(const std::vector<Toolkit::TString<wchar_t>>& arguments,
                                              const std::wstring& name)
{
    std::optional<std::wstring> found;
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        if (arguments[i] != L"-" + name)
            continue;
        if (!found.has_value())
            found.emplace();
        const bool hasNext = i + 1 < arguments.size();
        if (hasNext && (arguments[i + 1].empty() || arguments[i + 1][0] != L'-'))
            found = arguments[i + 1];
    }
    return found;
}

} // namespace ToolkitTest

#endif
