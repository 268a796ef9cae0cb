// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_NARROWFOLD_H
#define TOOLKIT_INTERNAL_TEXT_NARROWFOLD_H

#include <cctype>
#include <cstddef>
#include <cstdint>

namespace Toolkit
{

// The narrow `tolower` of the calling thread's locale, looked up once: the C library's own table, which is
// defined from -128 to 255. Every other element stays as it is. Used where many elements are folded; it does
// not outlive a change of the locale.
class NarrowFold
{
public:
    // What the table begins with, and how much it holds.
    static const int s_iFirst = -128;
    static const std::size_t s_uCount = 384;

    NarrowFold() : m_pTable(*__ctype_tolower_loc() + s_iFirst) {}

    wchar_t operator()(wchar_t element) const
    {
        const int last = s_iFirst + static_cast<int>(s_uCount) - 1;
        return element < s_iFirst || element > last ? element : m_pTable[element - s_iFirst];
    }
    // A byte counts as signed.
    int operator()(char byte) const { return m_pTable[static_cast<signed char>(byte) - s_iFirst]; }

    // The results for s_iFirst and what follows.
    const std::int32_t* Table() const { return m_pTable; }

private:
    const std::int32_t* const m_pTable;
};

} // namespace Toolkit

#endif
