// SPDX-License-Identifier: MIT
#include "toolkit/log/LogStatement.h"

#include <charconv>
#include <chrono>
#include <cstring>
#include <cwchar>
#include <typeinfo>
#include <utility>

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

template <class T>
void AppendDecimal(std::string& text, T value)
{
    char digits[24];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof(digits), value);
    text.append(digits, result.ptr);
}

// True when the sink, which may be null, would take a line of this severity.
bool Takes(const ILogger* sink, LogSeverity severity)
{
    return sink != nullptr && severity <= sink->GetThreshold() && typeid(*sink) != typeid(NullLogger);
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
    m_strText.reserve(120);
}

LogStatement::~LogStatement()
{
    const NoCancellation whole;
    try
    {
        LogRecord record;
        record.time = std::chrono::system_clock::now();
        record.severity = m_severity;
        record.thread = ThreadNumber();
        record.file = m_strFile;
        record.line = m_uLine;
        record.function = m_strFunction;
        record.message = std::move(m_strText);
        Utf8Repair::Repair(record.message);
        Log::Write(record);
        if (ILogger* const sink = ILogger::BelowBridge(); Takes(sink, m_severity))
            LogLine::Write(*sink, m_severity, m_uLine, m_strFunction, record.message);
    }
    catch (...)
    {
        // A line that cannot be written is lost; it must not end the process.
    }
}

void LogStatement::Widen(LogSeverity severity)
{
    const auto wide = static_cast<std::int64_t>(severity);
    std::int64_t widest = s_iWidest.load();
    while (widest < wide && !s_iWidest.compare_exchange_weak(widest, wide))
        continue;
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
    m_strText.append(text, strnlen(text, limit));
}

void LogStatement::AppendArray(const wchar_t* text, std::size_t limit)
{
    AppendWide(std::wstring_view(text, wcsnlen(text, limit)));
}

void LogStatement::AppendNumber(long long value)
{
    AppendDecimal(m_strText, value);
}

void LogStatement::AppendNumber(unsigned long long value)
{
    AppendDecimal(m_strText, value);
}

void LogStatement::AppendWide(std::wstring_view text)
{
    Utf8Repair::AppendWide(m_strText, text);
}

void LogStatement::AppendUnit(std::intmax_t numerator, std::intmax_t denominator)
{
    for (const Unit& unit : s_units)
        if (unit.numerator == numerator && unit.denominator == denominator)
        {
            m_strText += unit.name;
            return;
        }
    m_strText += '[';
    AppendNumber(static_cast<long long>(numerator));
    m_strText += '/';
    AppendNumber(static_cast<long long>(denominator));
    m_strText += "]s";
}

} // namespace Toolkit
