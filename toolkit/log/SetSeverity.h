// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_SETSEVERITY_H
#define TOOLKIT_LOG_SETSEVERITY_H

#include "toolkit/core/Export.h"
#include "toolkit/log/LogSeverity.h"

namespace Toolkit
{

/// Streamed into a logger, selects the severity of the pieces that follow.
///
/// @code
/// Toolkit::ILogger& log = **Toolkit::ILogger::s_pInstance;
/// log << Toolkit::SetSeverity(Toolkit::LogSeverity::Warning);
/// log << L"only " << 3 << L" left\n";
/// @endcode
struct TOOLKIT_API SetSeverity
{
    /// Selects this severity.
    explicit SetSeverity(LogSeverity value) : severity(value) {}

    /// The severity that is selected.
    LogSeverity severity;
};

} // namespace Toolkit

#endif
