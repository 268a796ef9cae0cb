// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_TEXT_WRITTENTEXT_H
#define TOOLKIT_INTERNAL_TEXT_WRITTENTEXT_H

#include <cstddef>
#include <functional>
#include <string>

namespace Toolkit
{

// Puts bytes into memory that has room for so many, and returns how many it put there.
using WriteText = std::function<std::size_t(char* memory, std::size_t room)>;

// Appends what `write` puts into memory for up to `room` bytes. Where the standard library offers it, that
// memory is not filled before, which would be a quarter of the time that a file of 1 MiB is read in. When
// `write` throws, what the text holds means nothing.
void AppendWritten(std::string& text, std::size_t room, const WriteText& write);

} // namespace Toolkit

#endif
