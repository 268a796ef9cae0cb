// SPDX-License-Identifier: MIT
#ifndef DESK_TOURTEXT_H
#define DESK_TOURTEXT_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "toolkit/core/TString.h"

namespace Desk
{

// Text for the classic classes, and theirs for us.
Toolkit::TString<wchar_t> Wide(const std::string& text);
std::string Narrow(const Toolkit::TString<wchar_t>& text);

// The lines of a file; none if it cannot be read.
std::vector<std::string> LinesOf(const std::filesystem::path& file);

bool BeginsWith(const std::string& text, const std::string& beginning);

// The position of the first line that ends in `message`; the number of lines if none does.
std::size_t FindMessage(const std::vector<std::string>& lines, const std::string& message);

} // namespace Desk

#endif
