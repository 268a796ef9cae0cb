// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_LOGRECORD_H
#define TOOLKIT_LOG_LOGRECORD_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "toolkit/log/LogSeverity.h"

namespace Toolkit
{

/// One line of the log, as every LogSink gets it. The library fills it in; a sink reads it, and may copy it
/// to keep it. It belongs to one thread at a time. `file` points into the code that logged; after a
/// plug-in is unloaded it must not be read.
///
/// @code
/// void Show(const Toolkit::LogRecord& record)
/// {
///     std::cerr << record.function << ": " << record.message << '\n';
/// }
/// @endcode
struct LogRecord
{
    /// When the line was complete.
    std::chrono::system_clock::time_point time;
    /// How serious the line is.
    LogSeverity severity = LogSeverity::Info;
    /// The system's number of the thread that logged, as debuggers and `ps -L` show it.
    std::uint64_t thread = 0;
    /// The source file as the compiler named it; empty where the line does not tell it.
    std::string_view file;
    /// The line in that file, 0 where it is not known.
    unsigned int line = 0;
    /// Empty where it is not known.
    std::string_view function;
    /// UTF-8, without the line feed at the end. It may hold several lines.
    std::string message;
};

} // namespace Toolkit

#endif
