// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_DECIMALDIGITS_H
#define TOOLKIT_INTERNAL_TEXT_DECIMALDIGITS_H

namespace Toolkit
{

// Whole numbers as wide decimal text.
class DecimalDigits
{
public:
    // Of any number, with its sign.
    static constexpr int s_iMost = 20;

    // Writes the digits and answers their end.
    static wchar_t* Write(wchar_t* text, unsigned long long value)
    {
        wchar_t* const end = text + Count(value);
        for (text = end; value >= 100; value /= 100)
        {
            const auto two = static_cast<unsigned int>(value % 100);
            *--text = static_cast<wchar_t>(L'0' + two % 10);
            *--text = static_cast<wchar_t>(L'0' + two / 10);
        }
        const auto rest = static_cast<unsigned int>(value);
        *--text = static_cast<wchar_t>(L'0' + rest % 10);
        if (rest >= 10)
            *--text = static_cast<wchar_t>(L'0' + rest / 10);
        return end;
    }

    static wchar_t* Write(wchar_t* text, long long value)
    {
        if (value >= 0)
            return Write(text, static_cast<unsigned long long>(value));
        *text = L'-';
        return Write(text + 1, 0 - static_cast<unsigned long long>(value));
    }

private:
    static int Count(unsigned long long value)
    {
        int count = 1;
        for (; value >= 10000; value /= 10000)
            count += 4;
        return count + (value >= 10 ? 1 : 0) + (value >= 100 ? 1 : 0) + (value >= 1000 ? 1 : 0);
    }
};

} // namespace Toolkit

#endif
