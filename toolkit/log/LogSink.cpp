// SPDX-License-Identifier: MIT
#include "toolkit/log/LogSink.h"

#include "toolkit/log/Log.h"

namespace Toolkit
{

LogSink::LogSink(LogSeverity threshold) : m_threshold(threshold) {}

LogSink::~LogSink() = default;

void LogSink::SetThreshold(LogSeverity threshold)
{
    m_threshold.store(threshold, std::memory_order_relaxed);
    Log::ThresholdsChanged();
}

void LogSink::Reserved() {}

} // namespace Toolkit
