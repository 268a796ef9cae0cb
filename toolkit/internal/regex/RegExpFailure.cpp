// SPDX-License-Identifier: MIT
#include "toolkit/internal/regex/RegExpFailure.h"

#include <string>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/regExp/RegExp.Exceptions"

namespace Toolkit
{

namespace
{

// `text` written over the beginning of `initial`.
TString<wchar_t> Overwrite(const std::wstring& initial, const std::wstring& text)
{
    return text.size() < initial.size() ? text + initial.substr(text.size()) : text;
}

} // namespace

void RegExpFailure::ThrowCompilation(const char* errorText, int errorOffset, const TString<char>& pattern)
{
    const std::wstring text = L" : " + UTF8::ToUNICODE(errorText) + L" (@offset: " +
                              std::to_wstring(errorOffset) + L") " + UTF8::ToUNICODE(pattern);
    RegExpException::Throw(Overwrite(L"pcre_compile failed with error ", text));
}

void RegExpFailure::ThrowExecution(int result)
{
    RegExpException::Throw(Overwrite(L"RegExp::Match return error: ", std::to_wstring(result)));
}

} // namespace Toolkit
