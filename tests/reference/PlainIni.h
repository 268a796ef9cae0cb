// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAININI_H
#define TOOLKIT_TESTS_REFERENCE_PLAININI_H

#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace ToolkitTest
{

// Settings in ordered maps, and numbers out of a real stream: the plain form of what INI files do.
class PlainIni
{
public:
    explicit PlainIni(const std::vector<std::wstring>& lines)
    {
        std::map<std::wstring, std::wstring>* current = nullptr;
        for (const std::wstring& line : lines)
        {
            const std::size_t equals = line.find(L'=');
            if (line.empty())
                continue;
            if (line.front() == L'[' && line.back() == L']')
                current = &sections[line.substr(1, line.size() - 2)];
            else if (line.front() != L';' && equals != line.npos && current != nullptr)
                current->emplace(Trim(line.substr(0, equals)), Trim(line.substr(equals + 1)));
        }
    }

    // What a stream in the classic locale leaves in a number that was 0.
    template <class Number>
    static Number ReadNumber(const std::wstring& text)
    {
        std::wistringstream stream(text);
        stream.imbue(std::locale::classic());
        Number number = 0;
        stream >> number;
        return number;
    }

    std::map<std::wstring, std::map<std::wstring, std::wstring>> sections;

private:
    static std::wstring Trim(const std::wstring& text)
    {
        const std::size_t begin = text.find_first_not_of(L" \t");
        if (begin == text.npos)
            return std::wstring();
        return text.substr(begin, text.find_last_not_of(L" \t") - begin + 1);
    }
};

} // namespace ToolkitTest

#endif
