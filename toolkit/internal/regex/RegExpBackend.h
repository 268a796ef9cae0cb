// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_REGEX_REGEXPBACKEND_H
#define TOOLKIT_INTERNAL_REGEX_REGEXPBACKEND_H

#include <cstddef>
#include <optional>

namespace Toolkit
{

// A compiled pattern; only the backend looks inside.
struct RegExpCode;
// Memory that the searches of one run share; only the backend looks inside.
struct RegExpWorkspace;

} // namespace Toolkit

// What RegExp asks of the library of regular expressions, in the part of `RegexPart.h`. Pcre2Backend.cpp and
// PcreBackend.cpp are two forms of it, of which one is built. Results, options, offsets and error texts are
// those of PCRE 8 in both; patterns and subjects are UTF-8, and a pattern ends at its first NUL. Any thread
// may call.
namespace Toolkit::RegExpBackend
{

inline constexpr int s_iNoMatch = -1;
inline constexpr int s_iPartial = -12;
inline constexpr int s_iNullArgument = -2;
inline constexpr int s_iMatchLimit = -8;
inline constexpr int s_iBadUtf8 = -10;
inline constexpr int s_iBadUtf8Offset = -11;
inline constexpr int s_iBadLength = -32;

// Not at the start of a line, not at its end, and not empty.
inline constexpr int s_iWholeMatchOptions = 0x580;
// The subject was found to be UTF-8 before, and `start` to begin a character.
inline constexpr int s_iCheckedOption = 0x2000;
// The end of the subject is not the end of the text: the result is `s_iPartial` once an attempt to match asks
// for what follows it, and the first offset is the place where that attempt began.
inline constexpr int s_iPartialOption = 0x08000000;

// Null when the pattern is invalid: `errorText` is then a static message and `errorOffset` the byte where
// the compilation stopped. The caller frees the code with `Free`.
RegExpCode* Compile(const char* pattern, const char*& errorText, int& errorOffset);
void Free(RegExpCode* code);

// How many characters before its place an attempt to match may look at, when the library itself tells of the
// pattern that the attempt depends on nothing but those and the text from its place on: not on the place
// where the search began, nor on attempts before it.
std::optional<std::size_t> FindReach(const char* pattern);

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
