// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_REGEXP_REGEXP_H
#define TOOLKIT_REGEXP_REGEXP_H

#include <map>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/regExp/MatchResult.h"
#include "toolkit/regExp/RegExp.Exceptions"
#include "toolkit/regExp/RegExpOptions.h"

namespace Toolkit
{

/// A regular expression (PCRE's syntax, UTF-8): tests, matches and rewrites texts. Wide text is converted to
/// UTF-8 first, and offsets are bytes. Nothing is cached and no operation changes the object, so any number
/// of threads may use one. An invalid pattern and a failed execution throw smart_ptr<RegExpException,
/// smart_ptr_policy>: a subject that is no UTF-8, for instance, or a search beyond a limit, which is
/// 10,000,000 steps and 20 MiB of memory with PCRE2, and what is left of the thread's stack with PCRE. So
/// does the first operation, with the reason of the loader, where PCRE2 or PCRE cannot be loaded.
///
/// @code
/// const Toolkit::RegExp setting("(?<key>\\w+)=(\\d+)", Toolkit::RegExpOptions::Default);
/// const Toolkit::smart_ptr<Toolkit::MatchResult> found = setting.Match(Toolkit::TString<char>("width=640"));
/// if (found->GetCount() > 2)
///     Show((*found)[2]->GetValue()); // 640
/// @endcode
class TOOLKIT_API RegExp
{
public:
    /// From group name to replacement text.
    using ReplacementMappedStrings = std::map<TString<char>, TString<char>>;

    /// The modifiers are kept and change nothing.
    RegExp(const TString<char>& pattern, RegExpOptions::Modifiers modifiers);
    /// The same for a wide pattern.
    RegExp(const TString<wchar_t>& pattern, RegExpOptions::Modifiers modifiers);

    /// The pattern as UTF-8.
    const TString<char>& GetPattern() const { return m_strPattern; }
    /// As given to the constructor.
    RegExpOptions::Modifiers GetModifiers() const { return m_modifiers; }

    /// True when the pattern matches somewhere.
    /// Quirk: false when a group takes part in the match that is numbered 20 or higher.
    bool IsMatch(const TString<char>& subject) const;
    /// The same for wide text.
    bool IsMatch(const TString<wchar_t>& subject) const;

    /// The groups of the first match; no groups and the result -1 without one.
    /// Quirk: no groups and the result 0 when one takes part that is numbered 20 or higher.
    smart_ptr<MatchResult, smart_ptr_policy> Match(const TString<char>& subject) const;
    /// The same for wide text; offsets are bytes of its UTF-8 form.
    smart_ptr<MatchResult, smart_ptr_policy> Match(const TString<wchar_t>& subject) const;

    /// The input with every match replaced by the same text, literally. Quirk: the last argument is ignored.
    /// Quirk: "^" never matches at the start of the input nor "$" at its end, nor does an empty match count.
    /// Quirk: a search that would begin at byte 65,536 or later begins at that position modulo 65,536, in
    /// text that was rewritten before. Quirk: a run that would never end throws as if a limit of PCRE were
    /// exceeded.
    /// The time grows with the text; but with the square of a text above 64 KiB on PCRE, and for a pattern
    /// that holds anything else than characters, classes, "(", "(?:", "(?>", "(?i)", alternatives,
    /// quantifiers, look-aheads, look-behinds, "\b" and "\B".
    TString<char> Replace(const TString<char>& replacement, const TString<char>& input, unsigned char) const;

    /// The input with group i of the first match replaced by text i - 1; std::out_of_range when there are
    /// fewer texts than reported groups. Quirk: without a match the result is empty. Quirk: a group in
    /// another is replaced at its old place, shifted as any other, whatever stands there by then. Quirk: a
    /// group that took no part stands one byte before the shift of the groups replaced so far: the text goes
    /// there, or std::out_of_range is thrown when that is before the start.
    TString<char> Replace(const std::vector<TString<char>>& replacements, const TString<char>& input) const;

    /// As by number, but group texts are looked up by name, and groups without a name stay.
    /// Quirk: a name that is missing is added to `replacements` with an empty text, which is then used.
    TString<char> Replace(ReplacementMappedStrings& replacements, const TString<char>& input) const;

    // The steps of the above, for a host's own record. A null record throws as PCRE's error -2.

    /// Compiles the record's pattern (not this object's) in place of what was compiled before.
    void RegExp_compile(smart_ptr<MatchResult, smart_ptr_policy>& result) const;

    /// Runs what was compiled on the record's subject from byte `start` on.
    void RegExp_exec(smart_ptr<MatchResult, smart_ptr_policy>& result, unsigned short start) const;

    /// Replaces in `target` the bytes where the record has the group, moved by `shift`. std::out_of_range
    /// when that begins outside the target or the record has no such group (0 to 29).
    /// Quirk: an end before the start replaces all the rest.
    void RegExp_replace(smart_ptr<MatchResult, smart_ptr_policy>& record, int group, TString<char>& target,
                        const TString<char>& replacement, int shift) const;

private:
    smart_ptr<MatchResult, smart_ptr_policy> NewRecord(const TString<char>& subject) const;
    static void CollectGroups(MatchResult& record);
    static void CollectNames(MatchResult& record);

    TString<char> m_strPattern;
    RegExpOptions::Modifiers m_modifiers;
};

} // namespace Toolkit

#endif
