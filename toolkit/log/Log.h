// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_LOG_H
#define TOOLKIT_LOG_LOG_H

#include <cstdint>
#include <memory>
#include <vector>

#include "toolkit/core/Export.h"
#include "toolkit/log/LogRecord.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogSink.h"
#include "toolkit/log/LogStatement.h"

namespace Toolkit
{

struct LineParts;

/// The log of the process for new code: what TOOLKIT_LOG and the library itself log, and what is streamed
/// into the ILogger piece by piece, reaches every installed LogSink as a whole LogRecord. It works before, in
/// and after a ToolkitSession, and beside an ILogger that the host installed. Any thread may call it at any
/// time, but while a session runs the first `Install` replaces the installed ILogger by one that passes
/// pieces on to it, so that nothing may be logged meanwhile, as for ILogger::SetLogger. Sinks are shared with
/// the host and are given up when the library's static objects are destroyed. Nothing fails.
///
/// @code
/// Toolkit::Log::Install({Toolkit::Log::Console(Toolkit::LogSeverity::Warning)});
/// TOOLKIT_LOG(Toolkit::LogSeverity::Warning) << "read " << path << " in " << 30ms;
/// Toolkit::Log::SetThreshold(Toolkit::LogSeverity::Error);
/// @endcode
class TOOLKIT_API Log
{
public:
    /// Installs these sinks in place of those before; none at all switches the log off. Null ones are left
    /// out. A sink that was replaced may still get records that other threads had begun to write.
    static void Install(std::vector<std::shared_ptr<LogSink>> sinks);

    /// A new sink that writes each record to the standard error output, in the form that RunLog writes it and
    /// by one `write`.
    static std::shared_ptr<LogSink> Console(LogSeverity threshold = LogSeverity::Verbose);

    /// Records of a higher value reach no sink, whatever the sink's own threshold is. It is Verbose at first,
    /// so that each sink has its own, and `Install` leaves it alone. An ILogger keeps its own threshold.
    static void SetThreshold(LogSeverity threshold);
    /// What `SetThreshold` set.
    static LogSeverity Threshold();

    /// True when a sink takes records of this severity.
    static bool IsWanted(LogSeverity severity);

    /// Hands a record to each sink that wants it.
    static void Write(const LogRecord& record);

private:
    friend class ILogger;
    friend class LogSink;
    friend class LogStatement;

    // For a line that is wanted, on a thread that cannot be cancelled. Without `record`, the first sink that
    // needs one has it made.
    static void WriteWhole(const LineParts& parts, const LogRecord* record = nullptr);
    static void ThresholdsChanged();
    // The highest severity that some sink takes; -1 without one.
    static std::int64_t Widest();
};

} // namespace Toolkit

#endif
