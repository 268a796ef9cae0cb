// SPDX-License-Identifier: MIT
#ifndef DESK_TEXT_H
#define DESK_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Desk
{

// The lines of a text without their line feeds.
std::vector<std::string> Lines(std::string_view text);

// The first `length` characters of a text in UTF-8, as one line: white space becomes single spaces.
std::string Preview(std::string_view text, std::size_t length);

// Writes a line to the standard output. Any thread may do so.
void PrintLine(std::string_view line = {});

} // namespace Desk

#endif
