// SPDX-License-Identifier: MIT
#include "toolkit/regExp/Matches.h"

#include <utility>

#include "toolkit/internal/regex/RegexPart.h"

namespace Toolkit
{

Matches::Iterator::Iterator() noexcept = default;

Matches::Iterator::Iterator(Match match) noexcept : m_match(std::move(match)) {}

Matches::Iterator& Matches::Iterator::operator++()
{
    PatternSearch* const search = m_match.m_pSearch;
    if (search != nullptr)
        LoadedRegex().searchNext(*search);
    if (search == nullptr)
        m_match = Match();
    else if (!search->IsFound())
        m_match = Match(std::exchange(m_match.m_pSearch, nullptr));
    return *this;
}

Matches::Iterator Matches::Iterator::operator++(int)
{
    Iterator before(*this);
    ++*this;
    return before;
}

// The places of one loop: only the end is compared with.
bool Matches::Iterator::operator==(const Iterator& other) const noexcept
{
    const auto isEnd = [](const Iterator& it)
    { return it.m_match.m_pSearch == nullptr && it.m_match.m_pError == nullptr; };
    if (isEnd(*this) || isEnd(other))
        return isEnd(*this) && isEnd(other);
    return m_match.Position() == other.m_match.Position() && m_match.Length() == other.m_match.Length();
}

Matches::Matches(std::shared_ptr<const CompiledPattern> pattern, std::string_view text) noexcept
    : m_pPattern(std::move(pattern)), m_strText(text)
{
}

Matches::Iterator Matches::begin() const
{
    return Iterator(Match(LoadedRegex().search(m_pPattern, m_strText)));
}

} // namespace Toolkit
