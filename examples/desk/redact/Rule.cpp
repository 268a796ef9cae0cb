// SPDX-License-Identifier: MIT
#include "redact/Rule.h"

#include <utility>

#include "toolkit/log/Log.h"

namespace Desk
{

using namespace Toolkit;

Result<Rule> Rule::Make(const std::string& name, const std::string& pattern)
{
    const Result<Pattern> compiled = Pattern::Compile(pattern);
    if (!compiled)
        return Failure(compiled.error().Code(), name + ": " + compiled.error().Message());
    return Rule(name, *compiled);
}

Rule::Rule(const std::string& name, const Pattern& pattern) : m_pattern(pattern), m_strLabel('[' + name + ']')
{
}

std::size_t Rule::Apply(std::string& text) const
{
    std::size_t hidden = 0;
    Result<std::string> result = m_pattern.Replace(text,
                                                   [this, &hidden](const Match& match)
                                                   {
                                                       ++hidden;
                                                       if (!match.Has("hide"))
                                                           return m_strLabel;
                                                       std::string all(match[0]);
                                                       const std::size_t start =
                                                           match.Position("hide") - match.Position();
                                                       return all.replace(start, match.Length("hide"), "***");
                                                   });
    if (!result)
    {
        TOOLKIT_LOG(LogSeverity::Warning) << "redact: " << m_strLabel << ": " << result.error().Message();
        return 0;
    }
    text = *std::move(result);
    return hidden;
}

} // namespace Desk
