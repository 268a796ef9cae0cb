// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_LOGLINE_H
#define TOOLKIT_LOG_LOGLINE_H

#include <string_view>

#include "toolkit/log/ILogger.h"
#include "toolkit/log/LogStatement.h"

namespace Toolkit
{

/// The one place that knows how a log line is laid out: severity, " ", tick count, " : ", source line, " : ",
/// function, " : ", message, line feed; TOOLKIT_LOG makes such lines, too. An object collects one line and
/// writes it when it is destroyed, with U+FFFD for NULs and for what is no Unicode character; it belongs to
/// one thread and reports no failure. It leaves the severity selected in the sink alone.
///
/// @code
/// const Toolkit::TString<wchar_t> message(L"three mails");
/// if (Toolkit::LogLine::IsWanted(Toolkit::LogSeverity::Debug))
///     Toolkit::LogLine::Stream(Toolkit::LogSeverity::Debug, __LINE__, __func__, message);
/// @endcode
class TOOLKIT_API LogLine
{
public:
    /// True when the installed sink passes lines of this severity.
    static bool IsWanted(LogSeverity severity)
    {
        return ILogger::s_pInstance != nullptr && severity <= (*ILogger::s_pInstance)->GetThreshold();
    }

    /// True when the line is wanted. This, `BegunSeverity` and the object itself stay for programs that were
    /// built when TOOLKIT_LOG was made of them; LogStatement took their place.
    static bool Begins(LogSeverity severity)
    {
        if (!IsWanted(severity))
            return false;
        Begin(severity);
        return true;
    }
    /// The severity that `Begins` kept.
    static LogSeverity BegunSeverity();

    /// Gives both branches of the macro one type, which is none.
    struct End
    {
        /// Drops the line's value.
        void operator&(const LogLine&) const {}
    };

    /// The library's own lines: hands the line to the sinks of the Log, and streams it piece by piece into
    /// the installed logger. `function` is narrow text.
    static void Stream(LogSeverity severity, unsigned int line, const TString<char>& function,
                       const TString<wchar_t>& message);

    /// Writes a whole line into `sink`. `message` is well-formed UTF-8.
    static void Write(ILogger& sink, LogSeverity severity, unsigned int line, const char* function,
                      std::string_view message);

    /// Begins a line; both pointers stay the caller's.
    LogLine(LogSeverity severity, unsigned int line, const char* function);
    ~LogLine();

    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;

    /// Adds the text of a value, in the form of LogText.
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
