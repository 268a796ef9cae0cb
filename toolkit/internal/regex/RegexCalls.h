// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_REGEXCALLS_H
#define TOOLKIT_INTERNAL_REGEX_REGEXCALLS_H

#include "toolkit/internal/regex/CompiledPattern.h"
#include "toolkit/internal/regex/RegExpBackend.h"

namespace Toolkit
{

// What the part of the library does that is linked with PCRE2, and with PCRE where that was chosen for the
// classic regular expressions.
struct RegexCalls
{
    // For Pattern.
    decltype(&CompiledPattern::Compile) compilePattern;
    decltype(&CompiledPattern::Search) search;
    decltype(&CompiledPattern::SearchNext) searchNext;
    decltype(&CompiledPattern::Copy) copySearch;
    decltype(&CompiledPattern::Release) releaseSearch;
    decltype(&CompiledPattern::FindGroup) findGroup;
    decltype(&CompiledPattern::Describe) describe;

    // For RegExp.
    decltype(&RegExpBackend::Compile) compile;
    decltype(&RegExpBackend::Free) free;
    decltype(&RegExpBackend::FindReach) findReach;
    decltype(&RegExpBackend::Execute) execute;
    decltype(&RegExpBackend::NewWorkspace) newWorkspace;
    decltype(&RegExpBackend::FreeWorkspace) freeWorkspace;
    decltype(&RegExpBackend::GetNameCount) getNameCount;
    decltype(&RegExpBackend::GetNameEntrySize) getNameEntrySize;
    decltype(&RegExpBackend::GetNameTable) getNameTable;
};

// The name of the one function that the part exports, which returns them.
inline constexpr char c_strRegexEntry[] = "ToolkitRegexEntry";

} // namespace Toolkit

#endif
