// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_LOGSEVERITY_H
#define TOOLKIT_LOG_LOGSEVERITY_H

#include <cstdint>

namespace Toolkit
{

/// Holds the unscoped enumerations, so that `using namespace Toolkit;` brings none of their enumerators into
/// scope.
namespace Enumerations
{

/// How serious a log line is; lower is more serious. A sink passes what is at most its threshold. Its values
/// are written qualified (`LogSeverity::Info`) and convert to numbers.
enum LogSeverity : std::uint32_t
{
    Error = 0,
    Warning = 1,
    Info = 2,
    Debug = 3,
    Verbose = 4
};

} // namespace Enumerations

using Enumerations::LogSeverity;

} // namespace Toolkit

#endif
