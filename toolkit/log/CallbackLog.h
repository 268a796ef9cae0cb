// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_CALLBACKLOG_H
#define TOOLKIT_LOG_CALLBACKLOG_H

#include <functional>
#include <mutex>

#include "toolkit/log/LogSink.h"

namespace Toolkit
{

/// A sink that calls a function of the host with each record, on the thread that logged. Calls come one at a
/// time, whichever threads log; so the function must not wait for another thread that logs. What it logs
/// itself does not come back to it, and what it throws is swallowed. It is called no more once the sink was
/// taken out of the Log and the records that were on their way are done.
///
/// @code
/// Toolkit::Log::Install({std::make_shared<Toolkit::CallbackLog>(
///     Toolkit::LogSeverity::Info,
///     [](const Toolkit::LogRecord& record) { std::cerr << record.message << '\n'; })});
/// @endcode
class TOOLKIT_API CallbackLog : public LogSink
{
public:
    /// An empty function is never called.
    CallbackLog(LogSeverity threshold, std::function<void(const LogRecord&)> callback);
    ~CallbackLog() override;

    void Write(const LogRecord& record) override;

private:
    const std::function<void(const LogRecord&)> m_callback;
    std::mutex m_mutex;
};

} // namespace Toolkit

#endif
