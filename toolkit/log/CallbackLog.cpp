// SPDX-License-Identifier: MIT
#include "toolkit/log/CallbackLog.h"

#include <utility>

namespace Toolkit
{

CallbackLog::CallbackLog(LogSeverity threshold, std::function<void(const LogRecord&)> callback)
    : LogSink(threshold), m_callback(std::move(callback))
{
}

CallbackLog::~CallbackLog() = default;

void CallbackLog::Write(const LogRecord& record)
{
    if (!m_callback)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_callback(record);
}

} // namespace Toolkit
