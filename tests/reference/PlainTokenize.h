// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINTOKENIZE_H
#define TOOLKIT_TESTS_REFERENCE_PLAINTOKENIZE_H

#include <vector>

#include "toolkit/core/TString.h"

namespace ToolkitTest
{

// What CmdLineParser::Tokenize answers, written down step by step without regard to speed.
inline std::vector<Toolkit::TString<wchar_t>> PlainTokenize(const Toolkit::TString<wchar_t>& line)
{
    const auto none = Toolkit::TString<wchar_t>::npos;
    std::vector<Toolkit::TString<wchar_t>> tokens;
    std::size_t start = line.find_first_not_of(L" \t", 0);
    std::size_t end = line.find_first_of(L" \t", start);
    while (start != none || end != none)
    {
        const Toolkit::TString<wchar_t> token = line.substr(start, end == none ? none : end - start);
        if (token.front() == L'"')
        {
            const std::size_t closing = line.find(L'"', start + 1);
            if (closing == none)
                return tokens;
            tokens.push_back(line.substr(start + 1, closing - start - 1));
            end = closing + 1;
        }
        else
            tokens.push_back(token);
        start = line.find_first_not_of(L" \t", end);
        end = line.find_first_of(L" \t", start);
    }
    return tokens;
}

} // namespace ToolkitTest

#endif
