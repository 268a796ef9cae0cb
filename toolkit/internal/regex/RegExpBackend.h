// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_REGEXPBACKEND_H
#define TOOLKIT_INTERNAL_REGEX_REGEXPBACKEND_H

#include <cstddef>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// What PCRE makes of a pattern; only RegExpBackend looks inside.
struct RegExpCode;
// What PCRE learns about the places where a match can begin.
struct RegExpHints;

// The only place that calls PCRE. Results are PCRE's own; patterns and subjects are UTF-8. PCRE recurses on
// the caller's stack: both compilation and execution fail as PCRE fails when what is left of it could run
// out. Any thread may call.
class RegExpBackend
{
public:
    static const int s_iNoMatch;
    static const int s_iPartial;
    static const int s_iNullArgument;
    static const int s_iMatchLimit;
    static const int s_iBadUtf8;
    static const int s_iBadUtf8Offset;
    static const int s_iBadLength;

    // Not at the start of a line, not at its end, and not empty.
    static const int s_iWholeMatchOptions;
    // The subject was found to be UTF-8 before, and `start` to begin a character.
    static const int s_iCheckedOption;
    // A search that would have to look at the end of the subject ends there with s_iPartial: elements 0 and 2
    // of the offsets are then where its attempt began and the first byte it looked at, in either order.
    static const int s_iPartialOption;

    static const std::size_t s_uWholeText = static_cast<std::size_t>(-1);

    // Null when the pattern is invalid: `errorText` is then PCRE's static message and `errorOffset` the byte
    // where it stopped. The caller frees the code with `Free`.
    static RegExpCode* Compile(const TString<char>& pattern, const char*& errorText, int& errorOffset);
    static void Free(RegExpCode* code);

    // What pcre_exec answers.
    static int Execute(const RegExpCode* code, const char* subject, std::size_t length, std::size_t start,
                       int options, int* offsets, int vectorSize, const RegExpHints* hints = nullptr);

    // Null when there are none, or when they could spare a search that PCRE would end for one of its limits.
    // The caller frees them with `FreeHints`.
    static RegExpHints* Study(const RegExpCode* code, const TString<char>& pattern);
    static void FreeHints(RegExpHints* hints);

    // The name table: false when PCRE does not answer.
    static bool GetNameCount(const RegExpCode* code, int& count);
    static bool GetNameEntrySize(const RegExpCode* code, int& size);
    static bool GetNameTable(const RegExpCode* code, const char*& table);

    // False when a search knows where it began and could end otherwise if it began at a later byte, even if
    // no match begins before that.
    static bool MayBeginLater(const RegExpCode* code, const TString<char>& pattern);

    // How many characters before the start of a search can decide its result; s_uWholeText without a bound.
    static std::size_t GetReach(const RegExpCode* code, const TString<char>& pattern);
};

} // namespace Toolkit

#endif
