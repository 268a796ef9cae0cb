// SPDX-License-Identifier: MIT
#include "toolkit/core/TString.h"

#include "toolkit/internal/text/LinearSearch.h"
#include "toolkit/internal/text/NarrowFold.h"
#include "toolkit/internal/text/TextFind.h"

namespace Toolkit::Detail
{

namespace
{

template <class C>
bool SearchFolded(const C* text, std::size_t length, const C* what, std::size_t count)
{
    if (count == 0)
        return true;
    if (count > length)
        return false;
    const auto fold = [](C element) { return NarrowFold::Of(element); };
    const LinearSearch<C, decltype(fold)> search(what, count, fold);
    return search.Find(text, length) != search.s_uNone;
}

} // namespace

bool Contains(const wchar_t* text, std::size_t length, const wchar_t* what, std::size_t count)
{
    return TextFind::In(std::wstring_view(text, length), std::wstring_view(what, count)) !=
           std::wstring_view::npos;
}

bool Contains(const char* text, std::size_t length, const char* what, std::size_t count)
{
    return TextFind::In(std::string_view(text, length), std::string_view(what, count)) !=
           std::string_view::npos;
}

bool HasSubstring(const wchar_t* text, std::size_t length, const wchar_t* what, std::size_t count)
{
    return SearchFolded(text, length, what, count);
}

bool HasSubstring(const char* text, std::size_t length, const char* what, std::size_t count)
{
    return SearchFolded(text, length, what, count);
}

} // namespace Toolkit::Detail
