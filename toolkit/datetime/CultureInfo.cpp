// SPDX-License-Identifier: MIT
#include "toolkit/datetime/CultureInfo.h"

namespace Toolkit
{

CultureInfo::CultureInfo(const TString<wchar_t>& name, const TString<wchar_t>& displayName)
    : m_strName(name), m_strDisplayName(displayName)
{
}

} // namespace Toolkit
