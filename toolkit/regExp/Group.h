// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_GROUP_H
#define TOOLKIT_REGEXP_GROUP_H

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"

namespace Toolkit
{

/// One captured piece of a text: its bytes, the name that the pattern gives it, and its number. Groups are
/// made by RegExp::Match and shared through smart_ptr; afterwards nothing changes them, so any thread may
/// read one.
///
/// @code
/// const Toolkit::smart_ptr<Toolkit::Group> key = match->Find("key");
/// if (!key.IsNull())
///     Show(key->GetName() + " is " + key->GetValue());
/// @endcode
class TOOLKIT_API Group
{
public:
    /// Keeps copies of both texts.
    Group(const TString<char>& value, const TString<char>& name, unsigned short index);
    virtual ~Group();

    /// Empty for a group that took no part in the match.
    const TString<char>& GetValue() const { return m_strValue; }
    /// Empty for a group without a name.
    const TString<char>& GetName() const { return m_strName; }
    /// 0 is the whole match.
    unsigned short GetIndex() const { return m_uIndex; }

private:
    friend class GroupCollection;

    TString<char> m_strValue;
    TString<char> m_strName;
    unsigned short m_uIndex;
};

} // namespace Toolkit

#endif
