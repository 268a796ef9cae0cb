// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_DEBUGGERLOGGER_H
#define TOOLKIT_LOG_DEBUGGERLOGGER_H

#include "toolkit/log/ILogger.h"

namespace Toolkit
{

/// A sink for debugging hosts.
/// Quirk: it has no debugger channel of its own; it writes to the standard wide output stream as
/// ConsoleLogger does.
///
/// @code
/// Toolkit::smart_ptr<Toolkit::ILogger> output(new Toolkit::DebuggerLogger(Toolkit::LogSeverity::Debug));
/// Toolkit::ILogger::SetLogger(output);
/// TOOLKIT_LOG(Toolkit::LogSeverity::Debug) << "it begins";
/// @endcode
class TOOLKIT_API DebuggerLogger : public ILogger
{
public:
    /// Passes pieces of severities up to `level`.
    explicit DebuggerLogger(LogSeverity level);
    ~DebuggerLogger() override;

    void Write(const TString<wchar_t>& text) override;
};

} // namespace Toolkit

#endif
