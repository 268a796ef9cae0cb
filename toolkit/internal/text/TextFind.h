// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_TEXTFIND_H
#define TOOLKIT_INTERNAL_TEXT_TEXTFIND_H

#include <cstddef>
#include <cstring>
#include <string_view>

#include "toolkit/internal/text/LinearSearch.h"

// The standard strings' `find` with the same results, but in a time that is linear in both texts even where
// `what` nearly occurs everywhere.
namespace Toolkit::TextFind
{

inline std::size_t In(std::string_view text, std::string_view what)
{
    const void* const found = memmem(text.data(), text.size(), what.data(), what.size());
    return found == nullptr ? text.npos
                            : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

inline std::size_t In(std::wstring_view text, std::wstring_view what)
{
    // What is short costs the standard search no more than that many times the length.
    const std::size_t shortest = 32;
    if (what.size() < shortest)
        return text.find(what);
    const auto itself = [](wchar_t element) { return element; };
    return LinearSearch<wchar_t, decltype(itself)>(what.data(), what.size(), itself)
        .Find(text.data(), text.size());
}

} // namespace Toolkit::TextFind

#endif
