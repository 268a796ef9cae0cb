// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_MATCHES_H
#define TOOLKIT_REGEXP_MATCHES_H

#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/regExp/Match.h"

namespace Toolkit
{

class CompiledPattern;

/// All matches of a `Pattern` in a text, from the first to the last, for a range-based `for`; each is
/// searched for when it is asked for. When a search could not be ended the last element is no match, but has
/// an `Error()`. The text must live as long; the pattern need not. Several threads may loop over one at once.
///
/// @code
/// for (const Toolkit::Match& each : pattern->All(text))
///     if (each)
///         std::cout << each[1] << '\n';
/// @endcode
class TOOLKIT_API Matches
{
public:
    /// Goes over the matches once.
    class TOOLKIT_API Iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Match;
        using difference_type = std::ptrdiff_t;
        using pointer = const Match*;
        using reference = const Match&;

        /// The end.
        Iterator() noexcept;

        /// The match; it changes when the iterator goes on.
        const Match& operator*() const noexcept { return m_match; }
        /// The members of the match.
        const Match* operator->() const noexcept { return &m_match; }
        /// Searches for the next match.
        Iterator& operator++();
        /// The same; returns the iterator as it was.
        Iterator operator++(int);

        /// True when both stand at the same place, or at the end.
        bool operator==(const Iterator& other) const noexcept;
        /// True when they stand at different places.
        bool operator!=(const Iterator& other) const noexcept { return !(*this == other); }

    private:
        friend class Matches;

        explicit Iterator(Match match) noexcept;

        Match m_match;
    };

    /// Searches for the first match.
    Iterator begin() const;
    /// The end.
    Iterator end() const noexcept { return Iterator(); }

private:
    friend class Pattern;

    Matches(std::shared_ptr<const CompiledPattern> pattern, std::string_view text) noexcept;

    std::shared_ptr<const CompiledPattern> m_pPattern;
    std::string_view m_strText;
};

} // namespace Toolkit

#endif
