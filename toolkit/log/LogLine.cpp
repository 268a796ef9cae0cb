#include "toolkit/log/LogLine.h"

#include <algorithm>
#include <cstdint>

#include "toolkit/app/GetTickCount.h"

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
    return value == 0 || (value >= 0xD800 && value <= 0xDFFF) || value > 0x10FFFF;
}

// Hands the fields before the message, one by one and in their order, to `take`.
template <class Take>
void ForEachField(LogSeverity severity, unsigned int line, const TString<char>& function, Take take)
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

} // namespace

LogSeverity LogLine::BegunSeverity()
{
    return s_begunSeverity;
}

void LogLine::Stream(LogSeverity severity, unsigned int line, const TString<char>& function,
                     const TString<wchar_t>& message)
{
    if (ILogger::s_pInstance == nullptr)
        return;
    **ILogger::s_pInstance << SetSeverity(severity);
    if (!IsWanted(severity))
        return;
    ForEachField(severity, line, function, [](const auto& field) { **ILogger::s_pInstance << field; });
    **ILogger::s_pInstance << message << ILogger::c_strLogToken3;
}

LogLine::LogLine(LogSeverity severity, unsigned int line, const char* function)
{
    m_strText.reserve(128);
    ForEachField(severity, line, function, [this](const auto& field) { *this << field; });
}

LogLine::~LogLine()
{
    try
    {
        std::replace_if(m_strText.begin(), m_strText.end(), IsUnwritable, s_replacement);
        m_strText += ILogger::c_strLogToken3;
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
