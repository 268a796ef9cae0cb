// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_REGEXPBACKEND_H
#define TOOLKIT_INTERNAL_REGEX_REGEXPBACKEND_H

#include <cstddef>
#include <optional>

#include "toolkit/core/TString.h"

namespace Toolkit
{

// A compiled pattern; only the backend looks inside.
struct RegExpCode;
// Memory that the searches of one run share; only the backend looks inside.
struct RegExpWorkspace;

} // namespace Toolkit

// What RegExp asks of the library of regular expressions. Pcre2Backend.cpp and PcreBackend.cpp are two forms
// of it, of which one is built. Results, options, offsets and error texts are those of PCRE 8 in both;
// patterns and subjects are UTF-8. Any thread may call.
namespace Toolkit::RegExpBackend
{

extern const int s_iNoMatch;
extern const int s_iPartial;
extern const int s_iNullArgument;
extern const int s_iMatchLimit;
extern const int s_iBadUtf8;
extern const int s_iBadUtf8Offset;
extern const int s_iBadLength;

// Not at the start of a line, not at its end, and not empty.
extern const int s_iWholeMatchOptions;
// The subject was found to be UTF-8 before, and `start` to begin a character.
extern const int s_iCheckedOption;
// The end of the subject is not the end of the text: the result is `s_iPartial` once an attempt to match asks
// for what follows it, and the first offset is the place where that attempt began.
extern const int s_iPartialOption;

// Null when the pattern is invalid: `errorText` is then a static message and `errorOffset` the byte where
// the compilation stopped. The caller frees the code with `Free`.
RegExpCode* Compile(const TString<char>& pattern, const char*& errorText, int& errorOffset);
void Free(RegExpCode* code);

// How many characters before its place an attempt to match may look at, when the library itself tells of the
// pattern that the attempt depends on nothing but those and the text from its place on: not on the place
// where the search began, nor on attempts before it.
std::optional<std::size_t> FindReach(const TString<char>& pattern);

// The result of pcre_exec. Two thirds of the vector receive pairs of offsets.
int Execute(const RegExpCode* code, const char* subject, std::size_t length, std::size_t start, int options,
            int* offsets, int vectorSize, RegExpWorkspace* workspace = nullptr);

// Null when there is nothing to share. One thread at a time may search with it, and the caller frees it
// with `FreeWorkspace`.
RegExpWorkspace* NewWorkspace();
void FreeWorkspace(RegExpWorkspace* workspace);

// The name table: false when the library does not tell.
bool GetNameCount(const RegExpCode* code, int& count);
bool GetNameEntrySize(const RegExpCode* code, int& size);
bool GetNameTable(const RegExpCode* code, const char*& table);

} // namespace Toolkit::RegExpBackend

#endif
