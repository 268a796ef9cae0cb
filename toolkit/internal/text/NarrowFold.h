// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_NARROWFOLD_H
#define TOOLKIT_INTERNAL_TEXT_NARROWFOLD_H

#include <cctype>

// Elements of a text as the narrow `tolower` of the calling thread's locale folds them.
namespace Toolkit::NarrowFold
{

// Those that the C library defines it for, from -128 to 255; every other one stays as it is.
inline wchar_t Of(wchar_t element)
{
    return element < -128 || element > 255 ? element : std::tolower(element);
}

// A byte counts as signed.
inline char Of(char byte)
{
    return static_cast<char>(std::tolower(static_cast<signed char>(byte)));
}

} // namespace Toolkit::NarrowFold

#endif
