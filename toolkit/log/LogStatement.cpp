// SPDX-License-Identifier: MIT
#include "toolkit/log/LogStatement.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <limits>
#include <mutex>
#include <typeinfo>
#include <utility>

#include "toolkit/internal/log/LineParts.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/ThreadNumber.h"
#include "toolkit/internal/text/Utf8Repair.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/log/Log.h"
#include "toolkit/log/LogLine.h"
#include "toolkit/log/NullLogger.h"

namespace Toolkit
{

namespace
{

thread_local LogSeverity s_begunSeverity = LogSeverity::Verbose;

struct Unit
{
    std::intmax_t numerator;
    std::intmax_t denominator;
    const char* name;
};

const Unit s_units[] = {{1, 1000000000, "ns"}, {1, 1000000, "us"}, {1, 1000, "ms"}, {1, 1, "s"},
                        {60, 1, "min"},        {3600, 1, "h"},     {86400, 1, "d"}};

const std::size_t s_uMostDigits = 24;

// How many ILoggers have each threshold; the last number is that of all above Verbose.
const std::size_t s_uThresholds = LogSeverity::Verbose + 2;
std::atomic<int> s_iLoggers[s_uThresholds];
std::mutex s_widestMutex;

std::atomic<int>& LoggersOf(LogSeverity threshold)
{
    return s_iLoggers[std::min<std::size_t>(threshold, s_uThresholds - 1)];
}

std::size_t Length(const char* begin, std::to_chars_result result)
{
    return static_cast<std::size_t>(result.ptr - begin);
}

// True when the sink, which may be null, would take a line of this severity. One that keeps nothing is told
// by its address alone, as comparing type names takes longer than dropping a line.
bool Takes(const ILogger* sink, LogSeverity severity)
{
    return sink != nullptr && severity <= sink->GetThreshold() && &typeid(*sink) != &typeid(NullLogger);
}

} // namespace

std::atomic<std::int64_t> LogStatement::s_iWidest{-1};

bool LogStatement::IsWanted(LogSeverity severity)
{
    return Log::IsWanted(severity) || Takes(ILogger::BelowBridge(), severity);
}

LogStatement::LogStatement(const char* file, unsigned int line, const char* function)
    : m_strFile(file), m_strFunction(function), m_uLine(line), m_severity(s_begunSeverity)
{
}

LogStatement::~LogStatement()
{
    const NoCancellation whole;
    try
    {
        std::string_view message(m_shortText, m_uLength);
        if (!m_strLongText.empty())
            message = m_strLongText;
        if (!Utf8Repair::IsAscii(message))
        {
            if (m_strLongText.empty())
                m_strLongText = message;
            Utf8Repair::Repair(m_strLongText);
            message = m_strLongText;
        }
        if (Log::IsWanted(m_severity))
            Log::WriteWhole({std::chrono::system_clock::now(), m_severity, ThreadNumber(), m_strFile, m_uLine,
                             m_strFunction, message});
        if (ILogger* const sink = ILogger::BelowBridge(); Takes(sink, m_severity))
            LogLine::Write(*sink, m_severity, m_uLine, m_strFunction, message);
    }
    catch (...)
    {
        // A line that cannot be written is lost; it must not end the process.
    }
}

void LogStatement::AddThreshold(LogSeverity threshold)
{
    ++LoggersOf(threshold);
    ThresholdsChanged();
}

void LogStatement::RemoveThreshold(LogSeverity threshold)
{
    --LoggersOf(threshold);
    ThresholdsChanged();
}

// One thread at a time: what another one has just stored must not be followed by what was true before.
void LogStatement::ThresholdsChanged()
{
    const std::lock_guard<std::mutex> lock(s_widestMutex);
    s_iWidest.store(Widest());
}

std::int64_t LogStatement::Widest()
{
    std::size_t loggers = s_uThresholds;
    while (loggers > 0 && s_iLoggers[loggers - 1] == 0)
        --loggers;
    if (loggers == s_uThresholds)
        return std::numeric_limits<std::int64_t>::max();
    return std::max(Log::Widest(), static_cast<std::int64_t>(loggers) - 1);
}

bool LogStatement::BeginsWanted(LogSeverity severity)
{
    if (!IsWanted(severity))
        return false;
    s_begunSeverity = severity;
    return true;
}

void LogStatement::AppendArray(const char* text, std::size_t limit)
{
    AppendText(std::string_view(text, strnlen(text, limit)));
}

void LogStatement::AppendArray(const wchar_t* text, std::size_t limit)
{
    AppendWide(std::wstring_view(text, wcsnlen(text, limit)));
}

void LogStatement::AppendText(std::string_view text)
{
    if (text.empty())
        return;
    if (m_strLongText.empty() && m_uLength + text.size() <= sizeof(m_shortText))
    {
        std::memcpy(m_shortText + m_uLength, text.data(), text.size());
        m_uLength += text.size();
        return;
    }
    if (m_strLongText.empty())
        m_strLongText.assign(m_shortText, m_uLength);
    m_strLongText += text;
}

void LogStatement::AppendNumber(long long value)
{
    char digits[s_uMostDigits];
    AppendText({digits, Length(digits, std::to_chars(digits, std::end(digits), value))});
}

void LogStatement::AppendNumber(unsigned long long value)
{
    char digits[s_uMostDigits];
    AppendText({digits, Length(digits, std::to_chars(digits, std::end(digits), value))});
}

void LogStatement::AppendWide(std::wstring_view text)
{
    std::string bytes;
    Utf8Repair::AppendWide(bytes, text);
    AppendText(bytes);
}

void LogStatement::AppendUnit(std::intmax_t numerator, std::intmax_t denominator)
{
    for (const Unit& unit : s_units)
        if (unit.numerator == numerator && unit.denominator == denominator)
        {
            AppendText(unit.name);
            return;
        }
    AppendText("[");
    AppendNumber(static_cast<long long>(numerator));
    AppendText("/");
    AppendNumber(static_cast<long long>(denominator));
    AppendText("]s");
}

} // namespace Toolkit
