// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_DOCUMENT_H
#define TOOLKIT_TESTS_SUPPORT_DOCUMENT_H

#include <string>

namespace ToolkitTest
{

// The first example of docs/file-formats.md below that line, which begins its block, "```ini" for instance;
// its lines as they stand there. Empty when there is none.
std::string DocumentedText(const std::string& fence);

// The bytes of such an example of hexadecimal numbers: each line holds bytes, two spaces and words.
std::string DocumentedBytes(const std::string& fence);

} // namespace ToolkitTest

#endif
