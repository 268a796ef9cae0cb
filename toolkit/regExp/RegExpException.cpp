// SPDX-License-Identifier: MIT
#include "toolkit/regExp/RegExp.Exceptions"

#include "toolkit/core/smart_ptr.h"
#include "toolkit/encoding/UTF8.h"

namespace Toolkit
{

RegExpException::RegExpException() = default;

RegExpException::~RegExpException() noexcept = default;

const char* RegExpException::what() const noexcept
{
    return m_strMessage.c_str();
}

void RegExpException::Throw(const TString<wchar_t>& message)
{
    smart_ptr<RegExpException, smart_ptr_policy> exception(new RegExpException);
    exception->m_strMessage = UTF8::ToUTF8(message);
    exception->m_strFile = "toolkit/regExp/RegExp.Exceptions";
    exception->m_strLine = TString<char>(std::string(1, '\x07'));
    exception->m_strFunction = "Throw";
    throw exception;
}

} // namespace Toolkit
