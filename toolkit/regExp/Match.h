// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_MATCH_H
#define TOOLKIT_REGEXP_MATCH_H

#include <cstddef>
#include <memory>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Failure.h"

namespace Toolkit
{

struct PatternSearch;

/// What a `Pattern` found in a text: true for a match, false without one. A search that could not be ended is
/// false as well, and `Error()` says why: a limit was reached (`Errc::LimitReached`), or the text is not
/// UTF-8 (`Errc::Malformed`). Groups are numbered as their parentheses open, 0 is the whole match; they are
/// parts of the text, which must live as long as they are used. A value that needs its pattern no longer;
/// several threads may read one at once.
///
/// @code
/// Toolkit::Match match = pattern->Find(line);
/// if (match)
///     settings[std::string(match["key"])] = match["value"];
/// else if (const Toolkit::Failure* failure = match.Error())
///     std::cerr << failure->Message() << '\n';
/// @endcode
class TOOLKIT_API Match
{
public:
    /// No match.
    Match() noexcept;
    Match(const Match& other);
    Match(Match&& other) noexcept;
    Match& operator=(const Match& other);
    Match& operator=(Match&& other) noexcept;
    ~Match();

    /// True for a match.
    explicit operator bool() const noexcept;

    /// Why the search could not be ended; null for a match, and when there is none.
    const Failure* Error() const noexcept;

    /// What the group matched; empty when it took no part in the match, and when the pattern has no such
    /// group. Of several groups of one name it is the first that took part.
    std::string_view operator[](std::size_t group) const noexcept;
    /// The same by name; of several groups of one name it is the first that took part.
    std::string_view operator[](std::string_view name) const noexcept;

    /// True when the group took part in the match.
    bool Has(std::size_t group) const noexcept;
    /// The same by name.
    bool Has(std::string_view name) const noexcept;

    /// The byte of the text where the group begins; `std::string_view::npos` when it took no part.
    std::size_t Position(std::size_t group = 0) const noexcept;
    /// The same by name.
    std::size_t Position(std::string_view name) const noexcept;

    /// The bytes of the group; 0 when it took no part.
    std::size_t Length(std::size_t group = 0) const noexcept;
    /// The same by name.
    std::size_t Length(std::string_view name) const noexcept;

    /// The groups of the pattern with the whole match; 0 without a match.
    std::size_t Count() const noexcept;

private:
    friend class Matches;
    friend class Pattern;

    // Takes the search.
    explicit Match(PatternSearch* search);
    std::size_t NumberOf(std::string_view name) const noexcept;
    void Release() noexcept;

    PatternSearch* m_pSearch = nullptr;
    std::unique_ptr<const Failure> m_pError;
};

} // namespace Toolkit

#endif
