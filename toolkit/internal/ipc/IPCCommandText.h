// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_IPCCOMMANDTEXT_H
#define TOOLKIT_INTERNAL_IPC_IPCCOMMANDTEXT_H

#include <optional>
#include <string>
#include <vector>

#include "toolkit/core/TString.h"

namespace Toolkit::IPCCommandText
{

// The one text that an `IPCServer` takes as its command: a single argument as it is, several as
// `CmdLineParser` takes them apart. None for what is no such text.
std::optional<TString<char>> FromArguments(const std::vector<std::string>& arguments);

} // namespace Toolkit::IPCCommandText

#endif
