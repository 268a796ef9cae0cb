// SPDX-License-Identifier: MIT
#include "tests/support/Document.h"

#include <sstream>

#include "tests/support/TemporaryFolder.h"

namespace ToolkitTest
{

std::string DocumentedText(const std::string& fence)
{
    std::istringstream document(ReadBytes(TOOLKIT_SOURCE_FOLDER "/docs/file-formats.md"));
    std::string line;
    while (std::getline(document, line) && line != fence)
    {
    }
    std::string text;
    while (std::getline(document, line) && line != "```")
        text += line + "\n";
    return text;
}

std::string DocumentedBytes(const std::string& fence)
{
    std::istringstream text(DocumentedText(fence));
    std::string bytes;
    for (std::string line; std::getline(text, line);)
    {
        std::istringstream numbers(line.substr(0, line.find("  ")));
        for (unsigned int byte = 0; numbers >> std::hex >> byte;)
            bytes += static_cast<char>(byte);
    }
    return bytes;
}

} // namespace ToolkitTest
