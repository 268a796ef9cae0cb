// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_REGEXPOPTIONS_H
#define TOOLKIT_REGEXP_REGEXPOPTIONS_H

namespace Toolkit
{

/// What a host may say about a pattern when it makes a RegExp.
struct RegExpOptions
{
    /// Quirk: every value is kept with the pattern and none changes a result; options are written into the
    /// pattern itself, "(?i)" for instance.
    enum Modifiers : unsigned int
    {
        Default = 0
    };
};

} // namespace Toolkit

#endif
