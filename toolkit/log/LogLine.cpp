// SPDX-License-Identifier: MIT
#include "toolkit/log/LogLine.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>

#include "toolkit/app/GetTickCount.h"
#include "toolkit/internal/log/KeptName.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/ThreadNumber.h"
#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/Utf8Repair.h"
#include "toolkit/log/Log.h"

namespace Toolkit
{

namespace
{

thread_local LogSeverity s_begunSeverity = LogSeverity::Verbose;

const wchar_t s_replacement = L'\uFFFD';

// True for what would keep a file from holding the line: a zero, or no Unicode character.
bool IsUnwritable(wchar_t character)
{
    const std::uint32_t value = static_cast<std::uint32_t>(character);
    return value == 0 || !CodePoints::IsCharacter(value);
}

// Hands the fields before the message, one by one and in their order, to `take`.
template <class Function, class Take>
void ForEachField(LogSeverity severity, unsigned int line, const Function& function, Take take)
{
    take(severity);
    take(ILogger::c_strLogToken1);
    take(GetTickCount());
    take(ILogger::c_strLogToken2);
    take(line);
    take(ILogger::c_strLogToken2);
    take(function);
    take(ILogger::c_strLogToken2);
}

// Begins a line's text with the fields before the message.
void BeginLine(TString<wchar_t>& text, LogSeverity severity, unsigned int line, const char* function)
{
    text.reserve(128);
    ForEachField(severity, line, std::string_view(function != nullptr ? function : ""),
                 [&text](const auto& field) { LogText::Append(text, field); });
}

void FinishLine(TString<wchar_t>& text)
{
    std::replace_if(text.begin(), text.end(), IsUnwritable, s_replacement);
    text += ILogger::c_strLogToken3;
}

// Hands one of the library's own lines to the sinks of the Log.
void WriteRecord(LogSeverity severity, unsigned int line, const TString<char>& function,
                 const TString<wchar_t>& message)
{
    if (!Log::IsWanted(severity))
        return;
    LogRecord record;
    record.time = std::chrono::system_clock::now();
    record.severity = severity;
    record.thread = ThreadNumber();
    record.line = line;
    record.function = KeptName(function);
    Utf8Repair::AppendWide(record.message, message);
    Log::Write(record);
}

} // namespace

LogSeverity LogLine::BegunSeverity()
{
    return s_begunSeverity;
}

void LogLine::Stream(LogSeverity severity, unsigned int line, const TString<char>& function,
                     const TString<wchar_t>& message)
{
    WriteRecord(severity, line, function, message);
    ILogger* const sink = ILogger::BelowBridge();
    if (sink == nullptr)
        return;
    *sink << SetSeverity(severity);
    if (severity > sink->GetThreshold())
        return;
    ForEachField(severity, line, function, [sink](const auto& field) { *sink << field; });
    *sink << message << ILogger::c_strLogToken3;
}

void LogLine::Write(ILogger& sink, LogSeverity severity, unsigned int line, const char* function,
                    std::string_view message)
{
    TString<wchar_t> text;
    BeginLine(text, severity, line, function);
    for (std::size_t end = message.find('\0'); end != std::string_view::npos; end = message.find('\0'))
    {
        LogText::Append(text, message.substr(0, end));
        text += s_replacement;
        message.remove_prefix(end + 1);
    }
    LogText::Append(text, message);
    FinishLine(text);
    sink.Write(text);
}

LogLine::LogLine(LogSeverity severity, unsigned int line, const char* function)
{
    BeginLine(m_strText, severity, line, function);
}

LogLine::~LogLine()
{
    const NoCancellation whole;
    try
    {
        FinishLine(m_strText);
        if (ILogger::s_pInstance != nullptr)
            (*ILogger::s_pInstance)->Write(m_strText);
    }
    catch (...)
    {
        // A line that cannot be written is lost; it must not end the process.
    }
}

void LogLine::Begin(LogSeverity severity)
{
    s_begunSeverity = severity;
}

} // namespace Toolkit
