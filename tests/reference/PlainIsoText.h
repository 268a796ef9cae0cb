// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINISOTEXT_H
#define TOOLKIT_TESTS_REFERENCE_PLAINISOTEXT_H

#include <array>
#include <cstddef>
#include <locale>
#include <sstream>
#include <string>

#include "toolkit/datetime/DateTime.h"

// An ISO text read by a real stream, and the value that its fields make: what the fast form is compared with.
namespace ToolkitTest::PlainIsoText
{

struct Fields
{
    std::array<int, 6> numbers = {-1, -1, -1, -1, -1, -1};
    wchar_t zone = L' ';
};

inline Fields Read(const std::wstring& text)
{
    std::wistringstream stream(text);
    stream.imbue(std::locale::classic());
    Fields fields;
    for (int& number : fields.numbers)
    {
        stream >> number;
        stream.ignore(1);
    }
    stream >> fields.zone;
    return fields;
}

// Years before 0, which the constructors do not take, are reached from a year with the same calendar.
inline Toolkit::DateTime Value(const std::wstring& text)
{
    const Fields fields = Read(text);
    std::array<unsigned int, 6> n = {};
    for (std::size_t i = 0; i < n.size(); ++i)
    {
        // A field below 0 is none, and nor is one that the constructors would take modulo 65536.
        if (i > 0 && (fields.numbers[i] < 0 || fields.numbers[i] > 61))
            return Toolkit::DateTime(0, 0, 0, 0, 0, 0);
        n[i] = static_cast<unsigned int>(fields.numbers[i]);
    }
    const unsigned int back = fields.numbers[0] < 0 ? (0 - n[0]) / 400 * 400 + 400 : 0;
    n[0] += back;
    Toolkit::DateTime value(n[0], n[1], n[2], n[3], n[4], n[5]);
    if (fields.zone == L'Z')
        value = Toolkit::DateTime(n[0], n[1], n[2], n[3], n[4], n[5], 0);
    value.Remove(back, 0, 0, 0);
    return value;
}

} // namespace ToolkitTest::PlainIsoText

#endif
