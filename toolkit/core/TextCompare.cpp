#include "toolkit/core/TString.h"

#include <algorithm>
#include <cwctype>

#include "toolkit/core/NarrowFold.h"

namespace Toolkit::Detail
{

namespace
{

int FoldForOrder(wchar_t element, const NarrowFold&)
{
    return static_cast<int>(std::towlower(static_cast<std::wint_t>(element)));
}

int FoldForOrder(char byte, const NarrowFold& fold)
{
    return fold(byte);
}

// The first position where the two differ as they stand; `length` if there is none.
template <class C>
std::size_t FindDifference(const C* a, const C* b, std::size_t position, std::size_t length)
{
    const std::size_t block = 8;
    for (; length - position >= block; position += block)
    {
        int different = 0;
        for (std::size_t i = 0; i < block; ++i)
            different |= static_cast<int>(a[position + i] != b[position + i]);
        if (different != 0)
            break;
    }
    while (position < length && a[position] == b[position])
        ++position;
    return position;
}

template <class C>
int Compare(const C* a, std::size_t aLength, const C* b, std::size_t bLength)
{
    const NarrowFold fold;
    const std::size_t common = std::min(aLength, bLength);
    for (std::size_t i = FindDifference(a, b, 0, common); i < common; i = FindDifference(a, b, i + 1, common))
    {
        const int x = FoldForOrder(a[i], fold);
        const int y = FoldForOrder(b[i], fold);
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
