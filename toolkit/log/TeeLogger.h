// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_TEELOGGER_H
#define TOOLKIT_LOG_TEELOGGER_H

#include <vector>

#include "toolkit/core/smart_ptr.h"
#include "toolkit/log/ILogger.h"

namespace Toolkit
{

/// An ILogger that passes each piece on to several others, so that classic sinks stand beside each other. It
/// shares them with the caller, and each gets what its own threshold passes, by the severity that was
/// selected in the TeeLogger or that a whole line names. Its threshold is the highest of theirs when it is
/// made. Any thread may call `Write` if they allow it. What one of them throws passes to the caller after all
/// others got the piece.
///
/// @code
/// Toolkit::smart_ptr<Toolkit::ILogger> both(new Toolkit::TeeLogger(
///     {Toolkit::smart_ptr<Toolkit::ILogger>(new Toolkit::ConsoleLogger(Toolkit::LogSeverity::Warning)),
///      Toolkit::smart_ptr<Toolkit::ILogger>(
///          new Toolkit::FileLogger(Toolkit::LogSeverity::Info, L"desk", 1 << 20))}));
/// Toolkit::ILogger::SetLogger(both);
/// @endcode
class TOOLKIT_API TeeLogger : public ILogger
{
public:
    /// Null loggers are left out.
    explicit TeeLogger(const std::vector<smart_ptr<ILogger>>& loggers);
    ~TeeLogger() override;

    void Write(const TString<wchar_t>& text) override;

private:
    std::vector<smart_ptr<ILogger>> m_loggers;
};

} // namespace Toolkit

#endif
