// SPDX-License-Identifier: MIT
#include "toolkit/regExp/Group.h"

namespace Toolkit
{

Group::Group(const TString<char>& value, const TString<char>& name, unsigned short index)
    : m_strValue(value), m_strName(name), m_uIndex(index)
{
}

Group::~Group() = default;

} // namespace Toolkit
