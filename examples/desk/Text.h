// SPDX-License-Identifier: MIT
#ifndef DESK_TEXT_H
#define DESK_TEXT_H

#include <vector>

#include "toolkit/core/TString.h"

namespace Desk
{

using Text = Toolkit::TString<wchar_t>;

// The decimal form of a number.
Text ToText(unsigned long long number);

// Folder and name with one separator in between.
Text Join(const Text& folder, const Text& name);

// True when a file name ends in `extension`, which begins with a dot.
bool HasExtension(const Text& fileName, const Text& extension);

// The last part of a path.
Text FileName(const Text& path);

// The path from the root on; `path` itself if there is none.
Text Absolute(const Text& path);

// Appends the lines of a text file to `lines`; false when it cannot be read.
bool ReadLines(const Text& path, std::vector<Text>& lines);

// Writes UTF-8 to the standard output, with a line feed. Any thread may do so.
void PrintLine(const Text& line = Text());

} // namespace Desk

#endif
