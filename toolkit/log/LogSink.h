// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_LOGSINK_H
#define TOOLKIT_LOG_LOGSINK_H

#include <atomic>

#include "toolkit/core/Export.h"
#include "toolkit/log/LogRecord.h"
#include "toolkit/log/LogSeverity.h"

namespace Toolkit
{

/// Takes the records of the log; Log::Install puts sinks into their place. A sink gets each record whose
/// severity is at most its own threshold and at most that of the Log. `Write` is called on the thread that
/// logged, on several threads at once, and must not wait for long. A sink gets no record of what is logged
/// within its own `Write`. What `Write` throws is swallowed; the other sinks still get the record.
///
/// @code
/// struct Counter : Toolkit::LogSink
/// {
///     void Write(const Toolkit::LogRecord&) override { ++count; }
///     std::atomic<int> count{0};
/// };
/// @endcode
class TOOLKIT_API LogSink
{
public:
    /// A sink that takes severities up to `threshold`.
    explicit LogSink(LogSeverity threshold = LogSeverity::Verbose);
    virtual ~LogSink();

    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;

    /// Takes one record.
    virtual void Write(const LogRecord& record) = 0;

    /// Any thread may change the threshold at any time.
    void SetThreshold(LogSeverity threshold);
    /// The highest severity that the sink takes.
    LogSeverity Threshold() const { return m_threshold.load(std::memory_order_relaxed); }

private:
    // Keeps a place in the virtual table for an operation that may come.
    virtual void Reserved();

    std::atomic<LogSeverity> m_threshold;
};

} // namespace Toolkit

#endif
