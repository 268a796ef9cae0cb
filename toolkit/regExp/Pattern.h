// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_PATTERN_H
#define TOOLKIT_REGEXP_PATTERN_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"
#include "toolkit/regExp/Match.h"
#include "toolkit/regExp/Matches.h"
#include "toolkit/regExp/PatternLimits.h"

namespace Toolkit
{

class CompiledPattern;

/// A regular expression in PCRE2's syntax that is compiled once, into machine code where PCRE2 can (that of
/// PCRE2 10.42 goes wrong where "*+" repeats a group: such a pattern goes without, and is slower). Patterns
/// and texts are UTF-8, positions are bytes, and a text that is not UTF-8 never matches. A value that is
/// cheap to copy; any number of threads may search with one at once, each with what it needs for itself.
/// Matches are parts of the text that was searched, which is why a temporary `std::string` is refused.
///
/// @code
/// auto pattern = Toolkit::Pattern::Compile(R"((?<key>\w+)=(?<value>\d+))");
/// if (!pattern)
///     return Fail(pattern.error().Message());
/// for (const Toolkit::Match& each : pattern->All(text))
///     std::cout << each["key"] << ": " << each["value"] << '\n';
/// Toolkit::Result<std::string> turned = pattern->Replace(text, "${value}=${key}");
/// @endcode
class TOOLKIT_API Pattern
{
    template <class T>
    using EnableForTemporary = std::enable_if_t<std::is_same_v<std::remove_cv_t<T>, std::string>, int>;

    template <class T>
    using EnableForFunction =
        std::enable_if_t<std::is_invocable_v<T&, const Match&> && !std::is_convertible_v<T, std::string_view>,
                         int>;

public:
    /// What changes the meaning of a pattern; options are joined by "|".
    enum Options : std::uint32_t
    {
        Default = 0,
        /// Upper-case and lower-case letters match each other.
        IgnoreCase = 1,
        /// "^" and "$" match at the ends of lines as well.
        Multiline = 2,
        /// "." matches line ends as well.
        DotAll = 4,
        /// White space in the pattern counts for nothing, and "#" begins a comment.
        Extended = 8
    };

    friend constexpr Options operator|(Options left, Options right) noexcept
    {
        return static_cast<Options>(static_cast<std::uint32_t>(left) | static_cast<std::uint32_t>(right));
    }

    /// A pattern is never empty: to move one is to copy it.
    Pattern(const Pattern& other) = default;
    Pattern& operator=(const Pattern& other) = default;
    ~Pattern() = default;

    /// `Errc::Malformed` for a pattern that is invalid, with PCRE2's reason and the byte where it stopped;
    /// `Errc::LimitReached` for one that is too large or too deeply nested. The first call loads PCRE2; where
    /// that fails, the failure is `std::errc::not_supported` and says why, and the next call tries it again.
    static Result<Pattern> Compile(std::string_view pattern, Options options = Default,
                                   const PatternLimits& limits = PatternLimits());

    /// The first match.
    Match Find(std::string_view text) const;
    template <class T, EnableForTemporary<T> = 0>
    Match Find(T&& text) const = delete;

    /// All matches that do not overlap. After an empty one the search goes on with one at the same place that
    /// is not empty, or else after the next character.
    Matches All(std::string_view text) const;
    template <class T, EnableForTemporary<T> = 0>
    Matches All(T&& text) const = delete;

    /// The text with every match replaced. In the replacement "$1" and "${1}" stand for a group by its
    /// number, "${name}" by its name, and "$$" for a dollar; a group that took no part is empty.
    /// `Errc::Malformed` for a "$" with anything else after it, for a group that the pattern does not have,
    /// and for a text that is not UTF-8; `Errc::LimitReached` for a search that reached a limit.
    Result<std::string> Replace(std::string_view text, std::string_view replacement) const;

    /// The text with every match replaced by what `replace(match)` returns, text of any kind, as it is. It
    /// fails as a search does. What the function throws is passed on.
    template <class Function, EnableForFunction<Function> = 0>
    Result<std::string> Replace(std::string_view text, Function&& replace) const
    {
        return ReplaceEach(text,
                           [&replace](const Match& match, std::string& to)
                           {
                               const auto& replacement = replace(match);
                               to += std::string_view(replacement);
                           });
    }

    /// The parts of the text between the matches, each match's groups after the part before it; a group that
    /// took no part is an empty view without data. A text without a match is one part. It fails as a search
    /// does.
    Result<std::vector<std::string_view>> Split(std::string_view text) const;
    template <class T, EnableForTemporary<T> = 0>
    Result<std::vector<std::string_view>> Split(T&& text) const = delete;

private:
    explicit Pattern(std::shared_ptr<const CompiledPattern> pattern) noexcept;

    Result<std::string> ReplaceEach(std::string_view text,
                                    const std::function<void(const Match&, std::string&)>& append) const;

    std::shared_ptr<const CompiledPattern> m_pPattern;
};

} // namespace Toolkit

#endif
