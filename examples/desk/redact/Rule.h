// SPDX-License-Identifier: MIT
#ifndef DESK_REDACT_RULE_H
#define DESK_REDACT_RULE_H

#include <cstddef>
#include <string>

#include "toolkit/core/Result.h"
#include "toolkit/regExp/Pattern.h"

namespace Desk
{

// What is to be hidden: a regular expression under a name. Where the expression names a group "hide", that
// group is hidden in every match; otherwise the whole match gives way to the rule's name in brackets.
class Rule
{
public:
    // Fails as `Pattern::Compile` does; the message names the rule.
    static Toolkit::Result<Rule> Make(const std::string& name, const std::string& pattern);

    // Hides in a text of UTF-8, and returns how often. A text that cannot be searched to its end stays as it
    // is.
    std::size_t Apply(std::string& text) const;

private:
    Rule(const std::string& name, const Toolkit::Pattern& pattern);

    Toolkit::Pattern m_pattern;
    std::string m_strLabel;
};

} // namespace Desk

#endif
