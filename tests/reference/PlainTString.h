// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_REFERENCE_PLAINTSTRING_H
#define TOOLKIT_TESTS_REFERENCE_PLAINTSTRING_H

#include <cctype>
#include <cstddef>
#include <cwctype>
#include <string>

#include "toolkit/core/TString.h"

namespace ToolkitTest
{

// The string operations in their plain forms, one element after the other, to compare the fast ones with.

inline int PlainLower(wchar_t element)
{
    return static_cast<int>(std::towlower(static_cast<std::wint_t>(element)));
}

inline int PlainLower(char byte)
{
    return std::tolower(static_cast<signed char>(byte));
}

template <class C>
bool PlainHasSubstring(const Toolkit::TString<C>& text, const Toolkit::TString<C>& what)
{
    std::basic_string<C> foldedText;
    std::basic_string<C> foldedWhat;
    for (const C element : text)
        foldedText.push_back(static_cast<C>(std::tolower(static_cast<int>(element))));
    for (const C element : what)
        foldedWhat.push_back(static_cast<C>(std::tolower(static_cast<int>(element))));
    return foldedText.find(foldedWhat) != foldedText.npos;
}

template <class C>
int PlainCompareNoCase(const Toolkit::TString<C>& a, const Toolkit::TString<C>& b)
{
    for (std::size_t i = 0; i < a.size() && i < b.size(); ++i)
        if (PlainLower(a[i]) != PlainLower(b[i]))
            return PlainLower(a[i]) < PlainLower(b[i]) ? -1 : 1;
    if (a.size() == b.size())
        return 0;
    return a.size() < b.size() ? -1 : 1;
}

// Starts again at the beginning after each replacement. False when it has not ended after so many steps.
inline bool PlainReplace(std::wstring& text, const std::wstring& what, const std::wstring& with,
                         unsigned int steps)
{
    for (std::size_t found = text.find(what); found != text.npos; found = text.find(what))
    {
        if (steps-- == 0)
            return false;
        text.replace(found, what.size(), with);
    }
    return true;
}

} // namespace ToolkitTest

#endif
