// SPDX-License-Identifier: MIT
#include "toolkit/encoding/UTF7.h"

#include <algorithm>

namespace Toolkit
{

TString<wchar_t> UTF7::ToUNICODE(const TString<char>& text)
{
    const auto end = std::find(text.begin(), text.end(), '\0');
    TString<wchar_t> wide;
    wide.resize(static_cast<std::size_t>(end - text.begin()));
    std::transform(text.begin(), end, wide.begin(),
                   [](char byte) { return static_cast<wchar_t>(static_cast<unsigned char>(byte)); });
    return wide;
}

TString<char> UTF7::ToUTF7(const TString<wchar_t>& text)
{
    const auto end = std::find(text.begin(), text.end(), L'\0');
    TString<char> narrow;
    narrow.resize(static_cast<std::size_t>(end - text.begin()));
    std::transform(text.begin(), end, narrow.begin(),
                   [](wchar_t character)
                   { return character > 0 && character <= 127 ? static_cast<char>(character) : '_'; });
    return narrow;
}

} // namespace Toolkit
