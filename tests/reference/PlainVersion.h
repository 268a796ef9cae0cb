// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINVERSION_H
#define TOOLKIT_TESTS_REFERENCE_PLAINVERSION_H

#include <array>
#include <cstddef>
#include <locale>
#include <sstream>
#include <string>

// A version's text read by real streams: what the fast form is compared with.
namespace ToolkitTest::PlainVersion
{

inline std::array<unsigned int, 4> Parse(const std::wstring& text)
{
    std::array<unsigned int, 4> parts{};
    std::size_t count = 0;
    std::size_t begin = text.find_first_not_of(L'.');
    while (begin != text.npos && count < parts.size())
    {
        const std::size_t end = text.find(L'.', begin);
        std::wistringstream stream(text.substr(begin, end - begin));
        stream.imbue(std::locale::classic());
        unsigned int value = 0;
        stream >> value;
        parts[count++] = value;
        begin = text.find_first_not_of(L'.', end);
    }
    return parts;
}

} // namespace ToolkitTest::PlainVersion

#endif
