#ifndef TOOLKIT_TESTS_SUPPORT_PLAINISOTEXT_H
#define TOOLKIT_TESTS_SUPPORT_PLAINISOTEXT_H

#include <array>
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
    const auto [year, month, day, hour, minute, second] = fields.numbers;
    Toolkit::DateTime invalid(0, 0, 0, 0, 0, 0);
    for (const int number : {month, day, hour, minute, second})
        if (number < 0 || number > 61)
            return invalid;
    const unsigned int back = year < 0 ? (0U - static_cast<unsigned int>(year)) / 400 * 400 + 400 : 0;
    const auto make = [&, m = month, d = day, h = hour, min = minute, s = second](auto... offset)
    {
        return Toolkit::DateTime(static_cast<unsigned int>(year) + back, static_cast<unsigned int>(m),
                                 static_cast<unsigned int>(d), static_cast<unsigned int>(h),
                                 static_cast<unsigned int>(min), static_cast<unsigned int>(s), offset...);
    };
    Toolkit::DateTime value = fields.zone == L'Z' ? make(0) : make();
    value.Remove(back, 0, 0, 0);
    return value;
}

} // namespace ToolkitTest::PlainIsoText

#endif
