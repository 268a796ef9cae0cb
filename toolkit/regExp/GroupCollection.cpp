// SPDX-License-Identifier: MIT
#include "toolkit/regExp/GroupCollection.h"

namespace Toolkit
{

GroupCollection::GroupCollection() = default;

GroupCollection::~GroupCollection() = default;

smart_ptr<Group, smart_ptr_policy> GroupCollection::Find(const TString<char>& name) const
{
    const auto found = m_names.find(name);
    if (found == m_names.end() || !IsReported(found->second))
        return nullptr;
    return m_groups[static_cast<std::size_t>(found->second)];
}

void GroupCollection::Clear()
{
    m_groups.clear();
    m_names.clear();
}

void GroupCollection::Reserve(std::size_t count)
{
    m_groups.reserve(count);
}

void GroupCollection::AddGroup(const TString<char>& value)
{
    const auto index = static_cast<unsigned short>(m_groups.size());
    m_groups.emplace_back(new Group(value, TString<char>(), index));
}

void GroupCollection::AddName(const TString<char>& name, int number)
{
    m_names.emplace(name, number);
    if (IsReported(number))
        m_groups[static_cast<std::size_t>(number)]->m_strName = name;
}

bool GroupCollection::IsReported(int number) const
{
    return number >= 0 && static_cast<std::size_t>(number) < m_groups.size();
}

} // namespace Toolkit
