// SPDX-License-Identifier: MIT
#include "toolkit/log/Log.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>
#include <utility>

#include <unistd.h>

#include "toolkit/internal/log/LineFormat.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/log/ILogger.h"

namespace Toolkit
{

namespace
{

using Sinks = std::vector<std::shared_ptr<LogSink>>;

// Guards what is installed.
std::mutex s_mutex;
std::atomic<LogSeverity> s_threshold{LogSeverity::Verbose};
// The highest severity that some sink takes; -1 without one.
std::atomic<std::int64_t> s_iWanted{-1};

// It is never destroyed, as other static objects may log when they are.
std::shared_ptr<const Sinks>& Installed()
{
    alignas(std::shared_ptr<const Sinks>) static unsigned char s_place[sizeof(std::shared_ptr<const Sinks>)];
    static auto* const s_pInstalled = new (s_place) std::shared_ptr<const Sinks>;
    return *s_pInstalled;
}

std::shared_ptr<const Sinks> Snapshot()
{
    const std::lock_guard<std::mutex> lock(s_mutex);
    return Installed();
}

// With the guard held.
std::int64_t WantedOf(const Sinks* sinks)
{
    if (sinks == nullptr || sinks->empty())
        return -1;
    std::int64_t most = 0;
    for (const std::shared_ptr<LogSink>& sink : *sinks)
        most = std::max(most, static_cast<std::int64_t>(sink->Threshold()));
    return std::min(most, static_cast<std::int64_t>(s_threshold.load(std::memory_order_relaxed)));
}

// A sink that is writing on this thread, and those in whose `Write` that happens.
struct Writing
{
    const LogSink* m_pSink;
    const Writing* m_pOuter;
};

thread_local const Writing* s_pWriting = nullptr;

bool IsWriting(const Writing* writing, const LogSink& sink)
{
    for (; writing != nullptr; writing = writing->m_pOuter)
        if (writing->m_pSink == &sink)
            return true;
    return false;
}

void WriteTo(LogSink& sink, const LogRecord& record, const Writing*& innermost)
{
    const Writing writing{&sink, innermost};
    innermost = &writing;
    try
    {
        sink.Write(record);
    }
    catch (...)
    {
        // The record is lost in this sink alone.
    }
    innermost = writing.m_pOuter;
}

class ConsoleSink : public LogSink
{
public:
    explicit ConsoleSink(LogSeverity threshold) : LogSink(threshold) {}

    void Write(const LogRecord& record) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_strLine.clear();
        m_format.Append(m_strLine, record.time, record.severity, record.thread, record.function,
                        record.message);
        WriteAll(STDERR_FILENO, m_strLine.data(), m_strLine.size());
    }

private:
    std::mutex m_mutex;
    LineFormat m_format;
    std::string m_strLine;
};

// Gives up the sinks when the library is unloaded or the process ends.
struct AtEnd
{
    ~AtEnd() { Log::Install({}); }
};

const AtEnd s_atEnd;

} // namespace

void Log::Install(std::vector<std::shared_ptr<LogSink>> sinks)
{
    const NoCancellation whole;
    sinks.erase(std::remove(sinks.begin(), sinks.end(), nullptr), sinks.end());
    std::shared_ptr<const Sinks> installed;
    if (!sinks.empty())
        installed = std::make_shared<const Sinks>(std::move(sinks));
    // Those before are destroyed without the guard.
    {
        const std::lock_guard<std::mutex> lock(s_mutex);
        Installed().swap(installed);
    }
    ThresholdsChanged();
    ILogger::SetBridge();
}

std::shared_ptr<LogSink> Log::Console(LogSeverity threshold)
{
    return std::make_shared<ConsoleSink>(threshold);
}

void Log::SetThreshold(LogSeverity threshold)
{
    s_threshold.store(threshold, std::memory_order_relaxed);
    ThresholdsChanged();
}

LogSeverity Log::Threshold()
{
    return s_threshold.load(std::memory_order_relaxed);
}

bool Log::IsWanted(LogSeverity severity)
{
    return static_cast<std::int64_t>(severity) <= s_iWanted.load(std::memory_order_relaxed);
}

void Log::Write(const LogRecord& record)
{
    const NoCancellation whole;
    if (IsWanted(record.severity))
        WriteWhole(record);
}

void Log::WriteWhole(const LogRecord& record)
{
    const std::shared_ptr<const Sinks> sinks = Snapshot();
    if (sinks == nullptr)
        return;
    const Writing*& innermost = s_pWriting;
    for (const std::shared_ptr<LogSink>& sink : *sinks)
        if (record.severity <= sink->Threshold() && !IsWriting(innermost, *sink))
            WriteTo(*sink, record, innermost);
}

void Log::ThresholdsChanged()
{
    {
        const std::lock_guard<std::mutex> lock(s_mutex);
        s_iWanted.store(WantedOf(Installed().get()));
    }
    LogStatement::ThresholdsChanged();
    ILogger::BridgeThresholdChanged();
}

std::int64_t Log::Widest()
{
    return s_iWanted.load();
}

} // namespace Toolkit
