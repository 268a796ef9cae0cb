// SPDX-License-Identifier: MIT
#include "toolkit/core/TString.h"

namespace Toolkit
{

template <>
const TString<char>& TString<char>::Empty()
{
    static const TString<char> s_strEmpty;
    return s_strEmpty;
}

template <>
const TString<wchar_t>& TString<wchar_t>::Empty()
{
    static const TString<wchar_t> s_strEmpty;
    return s_strEmpty;
}

} // namespace Toolkit
