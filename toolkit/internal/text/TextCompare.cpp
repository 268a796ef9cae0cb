// SPDX-License-Identifier: MIT
#include "toolkit/core/TString.h"

#include <algorithm>
#include <cctype>
#include <cwctype>

namespace Toolkit::Detail
{

namespace
{

int FoldForOrder(wchar_t element)
{
    return static_cast<int>(std::towlower(static_cast<std::wint_t>(element)));
}

// A byte counts as signed.
int FoldForOrder(char byte)
{
    return std::tolower(static_cast<signed char>(byte));
}

template <class C>
int Compare(const C* a, std::size_t aLength, const C* b, std::size_t bLength)
{
    const std::size_t common = std::min(aLength, bLength);
    for (std::size_t i = 0; i < common; ++i)
    {
        if (a[i] == b[i])
            continue;
        const int x = FoldForOrder(a[i]);
        const int y = FoldForOrder(b[i]);
        if (x != y)
            return x < y ? -1 : 1;
    }
    if (aLength == bLength)
        return 0;
    return aLength < bLength ? -1 : 1;
}

} // namespace

int CompareNoCase(const wchar_t* a, std::size_t aLength, const wchar_t* b, std::size_t bLength)
{
    return Compare(a, aLength, b, bLength);
}

int CompareNoCase(const char* a, std::size_t aLength, const char* b, std::size_t bLength)
{
    return Compare(a, aLength, b, bLength);
}

} // namespace Toolkit::Detail
