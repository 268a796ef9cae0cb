// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_PATTERNLIMITS_H
#define TOOLKIT_REGEXP_PATTERNLIMITS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "toolkit/core/Export.h"

namespace Toolkit
{

/// How far one search of a `Pattern` may go before it ends with an error: a pattern such as "(a+)+$" would
/// otherwise take for ever on some texts. A value. PCRE2 counts anew at each place of the text
/// that it tries, so that what a search takes at most grows with the text: with the defaults some seconds for
/// each ten thousand characters.
///
/// @code
/// const Toolkit::PatternLimits limits = Toolkit::PatternLimits().Steps(100000);
/// auto pattern = Toolkit::Pattern::Compile("(a+)+$", Toolkit::Pattern::Default, limits);
/// if (pattern && pattern->Find(text).Error() != nullptr)
///     return Fail("the search took too long");
/// @endcode
class TOOLKIT_API PatternLimits
{
public:
    PatternLimits();
    PatternLimits(const PatternLimits& other);
    PatternLimits& operator=(const PatternLimits& other);
    ~PatternLimits();

    /// The steps of the search, by PCRE2's count; 10,000,000 unless said.
    PatternLimits& Steps(std::uint32_t steps);
    /// The bytes that the search may take for itself, in whole KiB. Unless said it is 20 MiB, and more for a
    /// pattern with some hundred groups and more.
    PatternLimits& Memory(std::size_t bytes);

private:
    friend class Pattern;

    struct Values;

    std::uint32_t GetSteps() const;
    const std::optional<std::size_t>& GetMemory() const;

    std::unique_ptr<Values> m_pValues;
};

} // namespace Toolkit

#endif
