// SPDX-License-Identifier: MIT
#ifndef DESK_REDACT_RULE_H
#define DESK_REDACT_RULE_H

#include "Text.h"
#include "toolkit/core/TString.h"
#include "toolkit/regExp/RegExp.h"

namespace Desk
{

// What is to be hidden: a regular expression under a name. Where the expression names a group "hide", that
// group is hidden in every match; otherwise the whole match gives way to the rule's name in brackets.
class Rule
{
public:
    // Throws smart_ptr<RegExpException> for a pattern that is none.
    Rule(const Text& name, const Text& pattern);

    // Hides in `line`, which is UTF-8, and answers how often.
    std::size_t Apply(Toolkit::TString<char>& line) const;

private:
    std::size_t HideGroups(Toolkit::TString<char>& line) const;
    std::size_t HideMatches(Toolkit::TString<char>& line) const;

    Toolkit::RegExp m_expression;
    Toolkit::TString<char> m_strLabel;
    bool m_bHidesGroup;
};

} // namespace Desk

#endif
