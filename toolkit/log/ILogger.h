// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_ILOGGER_H
#define TOOLKIT_LOG_ILOGGER_H

#include <atomic>

#include "toolkit/core/Export.h"
#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/log/LogSeverity.h"
#include "toolkit/log/LogText.h"
#include "toolkit/log/SetSeverity.h"

namespace Toolkit
{

/// The process-wide logger: the interface of every sink, and the stream through which text reaches the
/// installed one. Each streamed value is one piece, written at once by one `Write` when the selected severity
/// is at most the sink's threshold; the selected severity stays until the next SetSeverity. The stream takes
/// no lock: pieces that several threads stream at once interleave, while TOOLKIT_LOG writes whole lines.
/// Failures of a sink are not reported.
///
/// @code
/// struct Counter : Toolkit::ILogger
/// {
///     Counter() : ILogger(Toolkit::LogSeverity::Info) {}
///     void Write(const Toolkit::TString<wchar_t>&) override { ++count; }
///     std::atomic<int> count{0};
/// };
/// @endcode
class TOOLKIT_API ILogger
{
public:
    virtual ~ILogger();

    /// The sink's output of one piece. A sink that several threads use protects its own output.
    virtual void Write(const TString<wchar_t>& text) = 0;

    ILogger(const ILogger&) = delete;
    ILogger& operator=(const ILogger&) = delete;

    /// A new NullLogger.
    static smart_ptr<ILogger> Create();

    /// Installs `logger`, shared with the caller, or a new NullLogger for a null one, and gives up the
    /// previous sink. For start-up and shutdown: nothing may be logged at the same time. Does nothing while
    /// no logger exists.
    static void SetLogger(smart_ptr<ILogger> logger);

    /// The highest severity that the sink passes.
    LogSeverity GetThreshold() const { return m_threshold.load(std::memory_order_relaxed); }
    /// Any thread may change the threshold at any time.
    void SetThreshold(LogSeverity threshold);
    /// The severity of the pieces that are streamed next.
    LogSeverity GetSeverity() const { return m_severity.load(std::memory_order_relaxed); }

    /// Selects the severity of the pieces that follow. All operators return the installed logger. Quirk: a
    /// chain continues on the installed logger, not on the object that it began with.
    ILogger& operator<<(const SetSeverity& selection);
    /// Writes a text.
    ILogger& operator<<(const TString<wchar_t>& text);
    /// `text` is UTF-8.
    ILogger& operator<<(const TString<char>& text);
    /// Writes a decimal number.
    ILogger& operator<<(short value);
    /// Writes a decimal number.
    ILogger& operator<<(int value);
    /// Writes a decimal number.
    ILogger& operator<<(long long value);
    /// Writes a decimal number.
    ILogger& operator<<(unsigned short value);
    /// Writes a decimal number.
    ILogger& operator<<(unsigned int value);
    /// Writes a decimal number.
    ILogger& operator<<(unsigned long long value);
    /// Everything else, in the form that LogText gives it.
    template <class T>
    ILogger& operator<<(const T& value)
    {
        if (Passes())
            WriteTextOf(value);
        return Installed();
    }

    /// The installed sink; null before the modules are initialised and after they are released. Never holds
    /// null.
    static smart_ptr<ILogger>* s_pInstance;

    /// " ", which stands after the severity of a line.
    static const TString<wchar_t> c_strLogToken1;
    /// " : ", which stands between the other fields of a line.
    static const TString<wchar_t> c_strLogToken2;
    /// The line feed at the end of a line.
    static const TString<wchar_t> c_strLogToken3;

protected:
    /// A sink that passes severities up to `threshold`.
    explicit ILogger(LogSeverity threshold);

private:
    friend class Log;
    friend class LogLine;
    friend class LogStatement;
    friend class ToolkitModule;

    bool Passes() const { return GetSeverity() <= GetThreshold(); }

    // Not inline: a piece that is dropped takes little more than a comparison.
    template <class T>
    [[gnu::noinline]] void WriteTextOf(const T& value)
    {
        Write(LogText::Of(value));
    }

    ILogger& Installed() { return s_pInstance != nullptr ? **s_pInstance : *this; }

    // The bridge is the ILogger that is installed while the Log has sinks: it passes pieces on to the logger
    // below it, and makes records of them.
    static ILogger* BelowBridge();
    static void SetBridge();
    static void BridgeThresholdChanged();

    void ChangeThreshold(LogSeverity threshold);

    std::atomic<LogSeverity> m_threshold;
    std::atomic<LogSeverity> m_severity{LogSeverity::Verbose};
};

} // namespace Toolkit

#endif
