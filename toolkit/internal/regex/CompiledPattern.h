// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_COMPILEDPATTERN_H
#define TOOLKIT_INTERNAL_REGEX_COMPILEDPATTERN_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "toolkit/internal/regex/Pcre2.h"

namespace Toolkit
{

class CompiledPattern;

// One search with its subject and what it found. It shares the pattern that it searched with, so that it
// outlives every other owner of that.
struct PatternSearch
{
    explicit PatternSearch(Pcre2Ptr<pcre2_match_data> matchData);

    bool IsFound() const { return result > 0; }
    // True for a group of a match that took part in it.
    bool Has(std::size_t group) const
    {
        return result > 0 && group < static_cast<std::size_t>(result) && offsets[2 * group] != PCRE2_UNSET;
    }

    std::shared_ptr<const CompiledPattern> pattern;
    const Pcre2Ptr<pcre2_match_data> data;
    // The begin and the end of each group.
    PCRE2_SIZE* const offsets;
    std::string_view subject;
    // The groups that are told of, or PCRE2's number for what happened.
    int result = PCRE2_ERROR_NOMATCH;
    // The byte where the search found its match, and where a text that is not UTF-8 goes wrong.
    std::size_t place = 0;
    // PCRE2 keeps memory in `data` that it took from the heap.
    bool holdsHeap = false;
};

// A pattern that was compiled once, with just-in-time code where PCRE2 has some for this machine and this
// pattern, and that code finds what it should. Any number of threads may search with it at once. All of it is
// in the part of `RegexPart.h`; what is static is called from outside.
class CompiledPattern
{
public:
    struct Settings
    {
        // PCRE2's for compilation.
        std::uint32_t options = 0;
        std::uint32_t steps = 0;
        // Nothing for what the library grants.
        std::optional<std::size_t> memory;
    };

    struct Error
    {
        int number = 0;
        std::size_t offset = 0;
        std::string text;
    };

    // Null and `error` when the pattern is invalid. Throws std::bad_alloc.
    static std::shared_ptr<const CompiledPattern> Compile(std::string_view pattern, const Settings& settings,
                                                          Error& error);
    ~CompiledPattern();

    CompiledPattern(const CompiledPattern&) = delete;
    CompiledPattern& operator=(const CompiledPattern&) = delete;

    // The groups of the pattern without the whole match.
    std::size_t GetGroupCount() const { return m_uGroups; }

    static const std::size_t s_uNoGroup = static_cast<std::size_t>(-1);

    // The first group of that name that took part in the match, or else the first of that name, or else
    // s_uNoGroup. Without a search none took part.
    static std::size_t FindGroup(const CompiledPattern& pattern, std::string_view name,
                                 const PatternSearch* search);

    // Searches for the first match; the search has the result. The caller gives it back by `Release`. Throws
    // std::bad_alloc.
    static PatternSearch* Search(std::shared_ptr<const CompiledPattern> pattern, std::string_view subject);

    // Searches for the match after the one that the search found before. After an empty one it goes on as
    // PCRE2's manual says: with a match at the same place that is not empty, or else after the next
    // character. Throws std::bad_alloc.
    static void SearchNext(PatternSearch& search);

    // A search that found the same, which the caller gives back by `Release`. Throws std::bad_alloc.
    static PatternSearch* Copy(const PatternSearch& search);

    // Gives a search back to its pattern, which keeps some for later ones.
    static void Release(PatternSearch* search);

    // PCRE2's text for a result.
    static std::string Describe(int result);

private:
    struct ReleaseSearch
    {
        void operator()(PatternSearch* search) const { Release(search); }
    };
    using SearchPtr = std::unique_ptr<PatternSearch, ReleaseSearch>;

    CompiledPattern(Pcre2Ptr<pcre2_code> code, const Settings& settings);
    void MakeMachineCode();
    static SearchPtr NewSearch(std::shared_ptr<const CompiledPattern> pattern, std::string_view subject);
    void FindNext(PatternSearch& search) const;
    void Find(PatternSearch& search, std::size_t start, std::uint32_t options) const;
    std::size_t NextCharacter(std::string_view subject, std::size_t index) const;
    int Execute(PatternSearch& search, std::size_t start, std::uint32_t options,
                pcre2_match_context* context) const;
    int FindOnLargerStack(PatternSearch& search, std::size_t start, std::uint32_t options) const;
    static std::size_t GetSlot();

    const Pcre2Ptr<pcre2_code> m_pCode;
    const Pcre2Ptr<pcre2_match_context> m_pContext;
    std::size_t m_uMemory = 0;
    std::size_t m_uGroups = 0;
    bool m_bCrlf = false;
    bool m_bHasMachineCode = false;
    // The pattern may begin with "(*NOTEMPTY)", which pcre2_jit_match does not look at.
    bool m_bRefusesEmpty = false;
    // Searches that nobody uses, mostly one for each thread.
    static const std::size_t s_uSpare = 8;
    mutable std::array<std::atomic<PatternSearch*>, s_uSpare> m_spare = {};
};

} // namespace Toolkit

#endif
