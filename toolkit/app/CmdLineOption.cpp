// SPDX-License-Identifier: MIT
#include "toolkit/app/CmdLineOption.h"

#include <cctype>

namespace Toolkit
{

CmdLineOption::CmdLineOption(const TString<wchar_t>& name, bool required)
    : m_strName(name), m_bRequired(required)
{
    for (wchar_t& c : m_strName)
        c = static_cast<wchar_t>(std::tolower(static_cast<int>(c)));
}

CmdLineOption::~CmdLineOption() = default;

} // namespace Toolkit
