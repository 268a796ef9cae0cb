// SPDX-License-Identifier: MIT
#include "redact/Rule.h"

#include "toolkit/encoding/UTF8.h"
#include "toolkit/regExp/RegExpOptions.h"

namespace Desk
{

using Bytes = Toolkit::TString<char>;

namespace
{

const char* const c_strGroup = "hide";
const char* const c_strHidden = "***";

std::size_t Count(const Bytes& text, const Bytes& what)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + what.size()))
        ++count;
    return count;
}

} // namespace

Rule::Rule(const Text& name, const Text& pattern)
    : m_expression(pattern, Toolkit::RegExpOptions::Default),
      m_strLabel(Toolkit::UTF8::ToUTF8(L"[" + name + L"]")),
      m_bHidesGroup(pattern.Contains(L"(?<hide>"))
{
    // A pattern is compiled when it is used: a bad one should show at once.
    m_expression.IsMatch(Bytes());
}

std::size_t Rule::Apply(Bytes& line) const
{
    return m_bHidesGroup ? HideGroups(line) : HideMatches(line);
}

std::size_t Rule::HideGroups(Bytes& line) const
{
    std::size_t hidden = 0;
    Toolkit::RegExp::ReplacementMappedStrings texts = {{c_strGroup, c_strHidden}};
    // Each round hides the first match, which is none afterwards; a pattern that matches what hides it ends
    // here.
    while (hidden < line.size() && m_expression.IsMatch(line))
    {
        line = m_expression.Replace(texts, line);
        ++hidden;
    }
    return hidden;
}

std::size_t Rule::HideMatches(Bytes& line) const
{
    const std::size_t before = Count(line, m_strLabel);
    line = m_expression.Replace(m_strLabel, line, 0);
    return Count(line, m_strLabel) - before;
}

} // namespace Desk
