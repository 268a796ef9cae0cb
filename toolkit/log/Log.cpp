// SPDX-License-Identifier: MIT
#include "toolkit/log/Log.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "toolkit/internal/log/LineFormat.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/Transfer.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/RunLog.h"

namespace Toolkit
{

namespace
{

// A sink in its place.
struct Place
{
    std::shared_ptr<LogSink> m_pSink;
    // The same sink when it is a RunLog, which needs no record of a line; otherwise null.
    RunLog* m_pFile;
};

using Sinks = std::vector<Place>;

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
    for (const Place& place : *sinks)
        most = std::max(most, static_cast<std::int64_t>(place.m_pSink->Threshold()));
    return std::min(most, static_cast<std::int64_t>(s_threshold.load(std::memory_order_relaxed)));
}

// A sink that is writing on this thread, and those in whose `Write` that happens.
struct Writing
{
    const LogSink* m_pSink;
    const Writing* m_pOuter;
};

// The innermost sink that is writing on this thread. Not inline: finding what belongs to a thread takes a
// while, and would be done at each use.
[[gnu::noinline]] const Writing*& Innermost()
{
    thread_local const Writing* s_pWriting = nullptr;
    return s_pWriting;
}

bool IsWriting(const Writing* writing, const LogSink& sink)
{
    for (; writing != nullptr; writing = writing->m_pOuter)
        if (writing->m_pSink == &sink)
            return true;
    return false;
}

// Calls `write`, which writes to the sink.
template <class Write>
void WriteTo(const LogSink& sink, const Writing*& innermost, Write write)
{
    const Writing writing{&sink, innermost};
    innermost = &writing;
    try
    {
        write();
    }
    catch (...)
    {
        // The line is lost in this sink alone.
    }
    innermost = writing.m_pOuter;
}

LogRecord RecordOf(const LineParts& parts)
{
    return {parts.time,
            static_cast<LogSeverity>(parts.severity),
            parts.thread,
            parts.file,
            parts.line,
            parts.function,
            std::string(parts.message)};
}

Sinks PlacesOf(std::vector<std::shared_ptr<LogSink>> sinks)
{
    Sinks places;
    for (std::shared_ptr<LogSink>& sink : sinks)
        if (RunLog* const file = dynamic_cast<RunLog*>(sink.get()); sink != nullptr)
            places.push_back({std::move(sink), file});
    return places;
}

class ConsoleSink : public LogSink
{
public:
    explicit ConsoleSink(LogSeverity threshold) : LogSink(threshold) {}

    void Write(const LogRecord& record) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const std::string_view line = m_format.Of(LineParts::Of(record));
        WriteAll(STDERR_FILENO, line.data(), line.size());
    }

private:
    std::mutex m_mutex;
    LineFormat m_format;
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
    Sinks places = PlacesOf(std::move(sinks));
    std::shared_ptr<const Sinks> installed;
    if (!places.empty())
        installed = std::make_shared<const Sinks>(std::move(places));
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
        WriteWhole(LineParts::Of(record), &record);
}

void Log::WriteWhole(const LineParts& parts, const LogRecord* record)
{
    const std::shared_ptr<const Sinks> sinks = Snapshot();
    if (sinks == nullptr)
        return;
    LogRecord made;
    const auto whole = [&]() -> const LogRecord&
    {
        if (record == nullptr)
            record = &(made = RecordOf(parts));
        return *record;
    };
    const Writing*& innermost = Innermost();
    for (const Place& place : *sinks)
    {
        LogSink& sink = *place.m_pSink;
        if (parts.severity > sink.Threshold() || IsWriting(innermost, sink))
            continue;
        if (place.m_pFile != nullptr)
            WriteTo(sink, innermost, [&] { place.m_pFile->WriteLine(parts); });
        else
            WriteTo(sink, innermost, [&] { sink.Write(whole()); });
    }
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
