// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_LOGLINE_H
#define TOOLKIT_LOG_LOGLINE_H

#include "toolkit/log/ILogger.h"

// A host's log line: TOOLKIT_LOG(LogSeverity::Info) << "opened " << path; writes one whole line with the
// caller's line number and function in a single `Write` of the installed sink. When the line would be
// dropped, or while no logger exists, nothing to the right is evaluated. It is one expression of type void
// and names nothing, so that it may stand wherever an expression may, within another log line too.
#define TOOLKIT_LOG(severity)                                                                                \
    !::Toolkit::LogLine::Begins(severity)                                                                    \
        ? static_cast<void>(0)                                                                               \
        : ::Toolkit::LogLine::End() &                                                                        \
              ::Toolkit::LogLine(::Toolkit::LogLine::BegunSeverity(), __LINE__, __func__)

namespace Toolkit
{

// The one place that knows how a log line is laid out: severity, " ", tick count, " : ", source line, " : ",
// function, " : ", message, line feed. An object collects one line and writes it when it goes, with U+FFFD
// for zeros and for what is no Unicode character; it belongs to one thread and reports no failure. It leaves
// the severity selected in the sink alone.
class TOOLKIT_API LogLine
{
public:
    // True when the installed sink passes lines of this severity.
    static bool IsWanted(LogSeverity severity)
    {
        return ILogger::s_pInstance != nullptr && severity <= (*ILogger::s_pInstance)->GetThreshold();
    }

    // For TOOLKIT_LOG: IsWanted, and when it is, keeps the severity for this thread until `BegunSeverity`.
    static bool Begins(LogSeverity severity)
    {
        if (!IsWanted(severity))
            return false;
        Begin(severity);
        return true;
    }
    static LogSeverity BegunSeverity();

    // For TOOLKIT_LOG: makes a line, streamed or not, an expression of type void.
    struct End
    {
        void operator&(const LogLine&) const {}
    };

    // The library's own lines: streams the line piece by piece into the installed logger. `function` is
    // narrow text.
    static void Stream(LogSeverity severity, unsigned int line, const TString<char>& function,
                       const TString<wchar_t>& message);

    LogLine(LogSeverity severity, unsigned int line, const char* function);
    ~LogLine();

    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;

    template <class T>
    LogLine& operator<<(const T& value)
    {
        LogText::Append(m_strText, value);
        return *this;
    }

private:
    static void Begin(LogSeverity severity);

    TString<wchar_t> m_strText;
};

} // namespace Toolkit

#endif
