// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_GROUPCOLLECTION_H
#define TOOLKIT_REGEXP_GROUPCOLLECTION_H

#include <cstddef>
#include <map>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/regExp/Group.h"

namespace Toolkit
{

/// The groups of one match in the order of their numbers, and the numbers of the named ones. It is filled by
/// RegExp::Match; afterwards nothing changes it, so any thread may read it.
///
/// @code
/// for (std::size_t i = 0; i < match->GetCount(); ++i)
///     Show((*match)[i]->GetValue());
/// for (const auto& [name, number] : match->GetNames())
///     std::cout << name << " is group " << number << '\n';
/// @endcode
class TOOLKIT_API GroupCollection
{
public:
    GroupCollection();
    virtual ~GroupCollection();

    /// How many groups there are, the whole match included.
    std::size_t GetCount() const { return m_groups.size(); }

    /// The group numbered `index`, which must be below GetCount().
    const smart_ptr<Group, smart_ptr_policy>& operator[](std::size_t index) const { return m_groups[index]; }

    /// From name to number. A name that the pattern gives to several groups stands for the first of them.
    /// Quirk: groups numbered 128 to 255 are listed with that number less 256, although they are not
    /// reported.
    const std::map<TString<char>, int>& GetNames() const { return m_names; }

    /// The group of that name; null if there is none or if it was not reported.
    smart_ptr<Group, smart_ptr_policy> Find(const TString<char>& name) const;

protected:
    /// Removes all groups and names.
    void Clear();
    /// Takes the memory for so many groups.
    void Reserve(std::size_t count);
    /// Adds the next group, without a name.
    void AddGroup(const TString<char>& value);
    /// Lists the name and gives it to the group of that number, where there is one.
    void AddName(const TString<char>& name, int number);

private:
    bool IsReported(int number) const;

    std::vector<smart_ptr<Group, smart_ptr_policy>> m_groups;
    std::map<TString<char>, int> m_names;
};

} // namespace Toolkit

#endif
