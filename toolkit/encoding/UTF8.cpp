// SPDX-License-Identifier: MIT
#include "toolkit/encoding/UTF8.h"

#include "toolkit/internal/text/Utf8Codec.h"

namespace Toolkit
{

TString<wchar_t> UTF8::ToUNICODE(const TString<char>& text)
{
    return Utf8Codec::Decode(text);
}

TString<char> UTF8::ToUTF8(const TString<wchar_t>& text)
{
    return Utf8Codec::Encode(text);
}

void UTF8::Encode(const TString<wchar_t>& text, TString<char>& bytes)
{
    Utf8Codec::EncodeInto(text, bytes);
}

bool UTF8::HasToBeUTF8(const TString<wchar_t>& text)
{
    return ToUTF8(text).size() != text.size();
}

} // namespace Toolkit
