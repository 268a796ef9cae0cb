// SPDX-License-Identifier: MIT
#include "toolkit/log/LogLine.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "toolkit/app/GetTickCount.h"
#include "toolkit/internal/log/KeptName.h"
#include "toolkit/internal/system/NoCancellation.h"
#include "toolkit/internal/system/ThreadNumber.h"
#include "toolkit/internal/text/CodePoints.h"
#include "toolkit/internal/text/DecimalDigits.h"
#include "toolkit/internal/text/Utf8Repair.h"
#include "toolkit/log/Log.h"

namespace Toolkit
{

namespace
{

thread_local LogSeverity s_begunSeverity = LogSeverity::Verbose;

const std::size_t s_uUsualMessage = 80;
const wchar_t s_replacement = L'\uFFFD';

// True for what would keep a file from holding the line: a zero, or no Unicode character.
bool IsUnwritable(wchar_t character)
{
    const std::uint32_t value = static_cast<std::uint32_t>(character);
    return value == 0 || !CodePoints::IsCharacter(value);
}

// Hands the fields before the function, one by one and in their order, to `take`.
template <class Take>
void ForEachFieldBefore(LogSeverity severity, unsigned int line, Take take)
{
    take(severity);
    take(ILogger::c_strLogToken1);
    take(GetTickCount());
    take(ILogger::c_strLogToken2);
    take(line);
    take(ILogger::c_strLogToken2);
}

// The fields of a line before the function, put together without memory of their own.
struct FieldText
{
    void operator()(const TString<wchar_t>& token) { m_pEnd = std::copy(token.begin(), token.end(), m_pEnd); }
    template <class Number>
    void operator()(Number value)
    {
        m_pEnd = DecimalDigits::Write(m_pEnd, static_cast<unsigned int>(value));
    }

    // Three numbers, and the tokens between them.
    wchar_t m_text[3 * DecimalDigits::s_iMost + 16];
    wchar_t* m_pEnd = m_text;
};

// Begins a line's text, which will have about that length, with the fields before the message.
void BeginLine(TString<wchar_t>& text, LogSeverity severity, unsigned int line, const char* function,
               std::size_t length)
{
    const std::string_view name = function != nullptr ? function : "";
    FieldText fields;
    ForEachFieldBefore(severity, line, std::ref(fields));
    const auto size = static_cast<std::size_t>(fields.m_pEnd - fields.m_text);
    text.reserve(size + name.size() + ILogger::c_strLogToken2.size() + length);
    text.append(fields.m_text, size);
    LogText::Append(text, name);
    text += ILogger::c_strLogToken2;
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
    // Not as a chain, which would go on in the installed logger: its bridge made records of the rest again.
    const auto stream = [sink](const auto& field) { *sink << field; };
    ForEachFieldBefore(severity, line, stream);
    stream(function);
    stream(ILogger::c_strLogToken2);
    stream(message);
    stream(ILogger::c_strLogToken3);
}

void LogLine::Write(ILogger& sink, LogSeverity severity, unsigned int line, const char* function,
                    std::string_view message)
{
    TString<wchar_t> text;
    BeginLine(text, severity, line, function, message.size() + ILogger::c_strLogToken3.size());
    for (std::size_t end = message.find('\0'); end != std::string_view::npos; end = message.find('\0'))
    {
        LogText::Append(text, message.substr(0, end));
        text += s_replacement;
        message.remove_prefix(end + 1);
    }
    // Converted text holds nothing that cannot be written.
    LogText::Append(text, message);
    text += ILogger::c_strLogToken3;
    sink.Write(text);
}

LogLine::LogLine(LogSeverity severity, unsigned int line, const char* function)
{
    BeginLine(m_strText, severity, line, function, s_uUsualMessage);
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
