// SPDX-License-Identifier: MIT
#include "toolkit/core/TString.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <cwctype>

#include "toolkit/internal/text/NarrowFold.h"

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

// True when the locale folds the bytes of ASCII as ASCII does, which eight-bit Turkish, say, does not.
bool FoldsAsciiPlainly(const NarrowFold& fold)
{
    static const auto s_plain = []
    {
        std::array<std::int32_t, 128> table{};
        for (std::size_t i = 0; i < table.size(); ++i)
            table[i] = static_cast<std::int32_t>(i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
        return table;
    }();
    return std::memcmp(fold.Table() - NarrowFold::s_iFirst, s_plain.data(), sizeof s_plain) == 0;
}

// Eight bytes of ASCII in lower case. No sum reaches the next byte, and its highest bit says whether the byte
// is at least "A", or above "Z".
std::uint64_t LowerAscii(std::uint64_t bytes)
{
    const std::uint64_t every = 0x0101010101010101U;
    const std::uint64_t fromA = bytes + every * (0x80 - 'A');
    const std::uint64_t aboveZ = bytes + every * (0x7F - 'Z');
    return bytes | ((fromA & ~aboveZ & every * 0x80) >> 2);
}

// For byte text that may differ from `position` on: goes over the blocks of ASCII that are equal but for the
// case of their letters, and answers where the first other block begins.
std::size_t SkipEqualAscii(const char* a, const char* b, std::size_t position, std::size_t length,
                           const NarrowFold& fold)
{
    const std::size_t block = 2 * sizeof(std::uint64_t);
    if (length - position < block || !FoldsAsciiPlainly(fold))
        return position;
    for (; length - position >= block; position += block)
    {
        std::uint64_t x[2];
        std::uint64_t y[2];
        std::memcpy(x, a + position, block);
        std::memcpy(y, b + position, block);
        if (((x[0] | x[1] | y[0] | y[1]) & 0x8080808080808080U) != 0 ||
            LowerAscii(x[0]) != LowerAscii(y[0]) || LowerAscii(x[1]) != LowerAscii(y[1]))
            break;
    }
    return position;
}

// Wide elements fold through `towlower`, which has no table to look at.
std::size_t SkipEqualAscii(const wchar_t*, const wchar_t*, std::size_t position, std::size_t,
                           const NarrowFold&)
{
    return position;
}

template <class C>
int Compare(const C* a, std::size_t aLength, const C* b, std::size_t bLength)
{
    const NarrowFold fold;
    const std::size_t common = std::min(aLength, bLength);
    std::size_t start = FindDifference(a, b, 0, common);
    start = SkipEqualAscii(a, b, start, common, fold);
    for (std::size_t i = FindDifference(a, b, start, common); i < common;
         i = FindDifference(a, b, i + 1, common))
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
