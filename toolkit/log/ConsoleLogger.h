// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_CONSOLELOGGER_H
#define TOOLKIT_LOG_CONSOLELOGGER_H

#include "toolkit/log/ILogger.h"

namespace Toolkit
{

/// A sink that inserts each piece into the standard wide output stream; no line feed is added and nothing is
/// flushed. Pieces from several threads may interleave; none is lost as long as only this sink writes to the
/// stream. A character that the stream's locale cannot show is left out; what follows it is not.
///
/// @code
/// Toolkit::smart_ptr<Toolkit::ILogger> console(new Toolkit::ConsoleLogger(Toolkit::LogSeverity::Info));
/// Toolkit::ILogger::SetLogger(console);
/// TOOLKIT_LOG(Toolkit::LogSeverity::Info) << "it begins";
/// @endcode
class TOOLKIT_API ConsoleLogger : public ILogger
{
public:
    /// Passes pieces of severities up to `level`.
    explicit ConsoleLogger(LogSeverity level);
    ~ConsoleLogger() override;

    void Write(const TString<wchar_t>& text) override;
};

} // namespace Toolkit

#endif
