// SPDX-License-Identifier: MIT
#include "toolkit/log/ILogger.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "toolkit/encoding/UTF8.h"
#include "toolkit/internal/log/ClassicLine.h"
#include "toolkit/internal/log/KeptName.h"
#include "toolkit/internal/system/ThreadNumber.h"
#include "toolkit/internal/text/Utf8Repair.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/LogStatement.h"
#include "toolkit/log/NullLogger.h"

namespace Toolkit
{

namespace
{

// What was selected on this thread, and on the last thread that selected anything.
thread_local std::optional<LogSeverity> s_selected;
std::atomic<LogSeverity> s_lastSelected{LogSeverity::Verbose};

LogSeverity Selected()
{
    return s_selected.value_or(s_lastSelected.load(std::memory_order_relaxed));
}

void WriteRecord(LogSeverity severity, std::uint64_t thread, std::wstring_view text)
{
    const std::optional<ClassicLine> fields = ClassicLine::Of(text);
    LogRecord record;
    record.severity = fields ? static_cast<LogSeverity>(fields->severity) : severity;
    if (!Log::IsWanted(record.severity))
        return;
    record.time = std::chrono::system_clock::now();
    record.thread = thread;
    if (fields)
    {
        record.line = fields->line;
        std::string function;
        Utf8Repair::AppendWide(function, fields->function);
        record.function = KeptName(function);
    }
    Utf8Repair::AppendWide(record.message, fields ? fields->message : text);
    Log::Write(record);
}

// Guards which bridge there is.
std::mutex s_bridgeMutex;

} // namespace

// What is installed while the Log has sinks. Every piece passes it, whatever other threads select: each
// thread's own severity decides.
class LogBridge : public ILogger
{
public:
    explicit LogBridge(const smart_ptr<ILogger>& below) : ILogger(LogSeverity::Error), m_pBelow(below)
    {
        const std::lock_guard<std::mutex> lock(s_bridgeMutex);
        s_pLast = this;
    }

    ~LogBridge() override
    {
        {
            const std::lock_guard<std::mutex> lock(s_bridgeMutex);
            if (s_pLast == this)
                s_pLast = nullptr;
        }
        for (const auto& [thread, text] : m_lines.TakeBegun())
            WriteRecord(LogSeverity::Info, thread, text);
    }

    void Write(const TString<wchar_t>& text) override
    {
        // A whole line comes without its severity being selected.
        const std::optional<ClassicLine> line = ClassicLine::Of(text);
        const LogSeverity severity = line ? static_cast<LogSeverity>(line->severity) : Selected();
        const std::uint64_t thread = ThreadNumber();
        if (Log::IsWanted(severity))
            WriteLines(thread, severity, text, line.has_value());
        if (severity <= m_pBelow->GetThreshold())
            m_pBelow->Write(text);
    }

    const smart_ptr<ILogger>& Below() const { return m_pBelow; }

    static LogBridge* Last() { return s_pLast; }

private:
    void WriteLines(std::uint64_t thread, LogSeverity severity, const TString<wchar_t>& text, bool whole)
    {
        if (whole && text.back() == L'\n' && !m_lines.HasBegun(thread))
            WriteRecord(severity, thread, std::wstring_view(text).substr(0, text.size() - 1));
        else
            for (const std::wstring& line : m_lines.Add(thread, text))
                WriteRecord(severity, thread, line);
    }

    static std::atomic<LogBridge*> s_pLast;

    const smart_ptr<ILogger> m_pBelow;
    LineCollector m_lines;
};

std::atomic<LogBridge*> LogBridge::s_pLast{nullptr};

smart_ptr<ILogger>* ILogger::s_pInstance = nullptr;

TOOLKIT_ONCE const TString<wchar_t> ILogger::c_strLogToken1(L" ");
TOOLKIT_ONCE const TString<wchar_t> ILogger::c_strLogToken2(L" : ");
TOOLKIT_ONCE const TString<wchar_t> ILogger::c_strLogToken3(L"\n");

ILogger::ILogger(LogSeverity threshold) : m_threshold(threshold)
{
    LogStatement::AddThreshold(threshold);
}

ILogger::~ILogger()
{
    LogStatement::RemoveThreshold(GetThreshold());
}

smart_ptr<ILogger> ILogger::Create()
{
    return smart_ptr<ILogger>(new NullLogger);
}

void ILogger::SetLogger(smart_ptr<ILogger> logger)
{
    if (s_pInstance == nullptr)
        return;
    if (const auto* const bridge = dynamic_cast<const LogBridge*>(logger.get()))
        logger = bridge->Below();
    // Released after the new sink is installed: what is logged while the previous one is destroyed must not
    // reach it.
    const smart_ptr<ILogger> previous(*s_pInstance);
    *s_pInstance = logger.IsNull() ? Create() : logger;
    SetBridge();
}

void ILogger::SetThreshold(LogSeverity threshold)
{
    const LogBridge* const bridge = LogBridge::Last();
    ILogger& changed = this == bridge ? *bridge->Below() : *this;
    changed.ChangeThreshold(threshold);
    BridgeThresholdChanged();
}

void ILogger::ChangeThreshold(LogSeverity threshold)
{
    const LogSeverity before = m_threshold.exchange(threshold, std::memory_order_relaxed);
    LogStatement::AddThreshold(threshold);
    LogStatement::RemoveThreshold(before);
}

ILogger* ILogger::BelowBridge()
{
    if (s_pInstance == nullptr)
        return nullptr;
    ILogger* const installed = s_pInstance->get();
    const LogBridge* const bridge = LogBridge::Last();
    return installed == bridge ? bridge->Below().get() : installed;
}

void ILogger::SetBridge()
{
    // A bridge that has no sinks any more stays, as other threads may be using it.
    if (s_pInstance == nullptr || !Log::IsWanted(LogSeverity::Error) ||
        s_pInstance->get() == LogBridge::Last())
        return;
    *s_pInstance = smart_ptr<ILogger>(new LogBridge(*s_pInstance));
    LogBridge* const bridge = LogBridge::Last();
    bridge->ILogger::m_severity.store(LogSeverity::Error, std::memory_order_relaxed);
    BridgeThresholdChanged();
}

void ILogger::BridgeThresholdChanged()
{
    const std::lock_guard<std::mutex> lock(s_bridgeMutex);
    if (LogBridge* const bridge = LogBridge::Last())
        bridge->ChangeThreshold(static_cast<LogSeverity>(
            std::max(static_cast<std::int64_t>(bridge->Below()->GetThreshold()), Log::Widest())));
}

ILogger& ILogger::operator<<(const SetSeverity& selection)
{
    if (const LogBridge* const bridge = LogBridge::Last(); this == bridge)
    {
        s_selected = selection.severity;
        s_lastSelected.store(selection.severity, std::memory_order_relaxed);
        *bridge->Below() << selection;
    }
    else
        m_severity.store(selection.severity, std::memory_order_relaxed);
    return Installed();
}

ILogger& ILogger::operator<<(const TString<wchar_t>& text)
{
    if (Passes())
        Write(text);
    return Installed();
}

ILogger& ILogger::operator<<(const TString<char>& text)
{
    if (Passes())
        Write(UTF8::ToUNICODE(text));
    return Installed();
}

ILogger& ILogger::operator<<(short value)
{
    return operator<< <short>(value);
}

ILogger& ILogger::operator<<(int value)
{
    return operator<< <int>(value);
}

ILogger& ILogger::operator<<(long long value)
{
    return operator<< <long long>(value);
}

ILogger& ILogger::operator<<(unsigned short value)
{
    return operator<< <unsigned short>(value);
}

ILogger& ILogger::operator<<(unsigned int value)
{
    return operator<< <unsigned int>(value);
}

ILogger& ILogger::operator<<(unsigned long long value)
{
    return operator<< <unsigned long long>(value);
}

} // namespace Toolkit
