// SPDX-License-Identifier: MIT
#include "toolkit/internal/ipc/IPCCommandText.h"

#include "toolkit/internal/ipc/IPCMessage.h"
#include "toolkit/internal/text/Utf8Codec.h"

namespace Toolkit
{

namespace
{

// Several arguments as `CmdLineParser` takes them apart; none where it cannot.
std::optional<TString<char>> CommandLine(const std::vector<std::string>& arguments)
{
    TString<char> line;
    for (const std::string& argument : arguments)
    {
        const bool isGrouped =
            argument.empty() || argument.front() == '"' || argument.find_first_of(" \t") != argument.npos;
        if (isGrouped && argument.find('"') != argument.npos)
            return std::nullopt;
        line.append(line.empty() ? "" : " ").append(isGrouped ? "\"" + argument + "\"" : argument);
    }
    return line;
}

} // namespace

std::optional<TString<char>> IPCCommandText::FromArguments(const std::vector<std::string>& arguments)
{
    const std::optional<TString<char>> line =
        arguments.size() == 1 ? TString<char>(arguments.front()) : CommandLine(arguments);
    if (!line || line->find('\0') != line->npos || Utf8Codec::Decode(*line).empty() != line->empty() ||
        line->size() >= IPCMessage::s_uLargestPart)
        return std::nullopt;
    return line;
}

} // namespace Toolkit
