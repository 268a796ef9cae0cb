// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_CONSOLELOGGER_H
#define TOOLKIT_LOG_CONSOLELOGGER_H

#include "toolkit/log/ILogger.h"

namespace Toolkit
{

/// A sink that inserts each piece into the standard wide output stream; no line feed is added and nothing is
/// flushed. Pieces from several threads may interleave, and none is
/// lost as long as nobody else writes to the stream. A character that the stream's locale cannot show is
/// lost, but no later one.
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
