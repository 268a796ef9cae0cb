// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_PLAINLINES_H
#define TOOLKIT_TESTS_SUPPORT_PLAINLINES_H

#include <string>
#include <vector>

namespace ToolkitTest
{

// Splits a text into its lines, one character at a time: the plain form of what text files do. "\n", "\r\n"
// and
// "\r" end a line; what follows the last one is a line only if it is not empty.
inline std::vector<std::wstring> PlainLines(const std::wstring& text)
{
    std::vector<std::wstring> lines;
    std::wstring line;
    bool open = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        open = text[i] != L'\n' && text[i] != L'\r';
        if (open)
        {
            line += text[i];
            continue;
        }
        if (text[i] == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n')
            ++i;
        lines.push_back(line);
        line.clear();
    }
    if (open)
        lines.push_back(line);
    return lines;
}

} // namespace ToolkitTest

#endif
