// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_LOGSTATEMENT_H
#define TOOLKIT_LOG_LOGSTATEMENT_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include "toolkit/core/Export.h"
#include "toolkit/log/LogSeverity.h"

/// A log line: TOOLKIT_LOG(LogSeverity::Info) << "read " << path << " in " << 30ms; makes one whole line with
/// the caller's file, line number and function, for every LogSink and for the installed ILogger. When each of
/// them would drop the line, nothing to the right is evaluated. It is one expression of type void and names
/// nothing, so that it may stand wherever an expression may, within another log line too. @ingroup log
#define TOOLKIT_LOG(severity)                                                                                \
    !::Toolkit::LogStatement::Begins(severity)                                                               \
        ? static_cast<void>(0)                                                                               \
        : ::Toolkit::LogStatement::End() & ::Toolkit::LogStatement(__FILE__, __LINE__, __func__)

namespace Toolkit
{

class ILogger;
class Log;

/// The text of one TOOLKIT_LOG, which hands the line on when it is destroyed. All text is UTF-8: char text of
/// every kind, wide text, and a path with the system's own bytes and without quotation marks; what is not
/// UTF-8 becomes U+FFFD. Numbers are those of the classic locale, a bool is 1 or 0, an enumerator its number,
/// and a duration has its unit. Everything else is what a stream makes of it. It belongs to one thread and
/// reports no failure.
class TOOLKIT_API LogStatement
{
public:
    /// True when some sink wants lines of this severity; it is then kept for this thread's next statement.
    static bool Begins(LogSeverity severity)
    {
        return static_cast<std::int64_t>(severity) <= s_iWidest.load(std::memory_order_relaxed) &&
               BeginsWanted(severity);
    }

    /// True when a LogSink or the installed ILogger wants lines of this severity.
    static bool IsWanted(LogSeverity severity);

    /// Makes a statement, streamed or not, an expression of type void.
    struct End
    {
        /// Drops the statement's value.
        void operator&(const LogStatement&) const {}
    };

    /// Begins a statement; both texts must outlive it, and the records that sinks keep.
    LogStatement(const char* file, unsigned int line, const char* function);
    ~LogStatement();

    LogStatement(const LogStatement&) = delete;
    LogStatement& operator=(const LogStatement&) = delete;

    /// Adds the text of a value.
    template <class T>
    LogStatement& operator<<(const T& value)
    {
        if constexpr (std::is_array_v<T>)
            AppendArray(value, std::extent_v<T>);
        else
            Append(value);
        return *this;
    }

private:
    friend class ILogger;
    friend class Log;

    template <class Stream, class T, class = void>
    struct IsStreamable : std::false_type
    {
    };
    template <class Stream, class T>
    struct IsStreamable<Stream, T, std::void_t<decltype(std::declval<Stream&>() << std::declval<const T&>())>>
        : std::true_type
    {
    };

    static bool BeginsWanted(LogSeverity severity);

    template <class T>
    void Append(const T& value)
    {
        if constexpr (std::is_same_v<T, char>)
            AppendText(std::string_view(&value, 1));
        else if constexpr (std::is_same_v<T, wchar_t>)
            AppendWide(std::wstring_view(&value, 1));
        else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>)
            AppendNumber(static_cast<long long>(value));
        else if constexpr (std::is_integral_v<T>)
            AppendNumber(static_cast<unsigned long long>(value));
        else if constexpr (std::is_enum_v<T>)
            Append(static_cast<std::underlying_type_t<T>>(value));
        else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, char*>)
            AppendText(value != nullptr ? std::string_view(value) : std::string_view());
        else if constexpr (std::is_same_v<T, const wchar_t*> || std::is_same_v<T, wchar_t*>)
            AppendWide(value != nullptr ? std::wstring_view(value) : std::wstring_view());
        else if constexpr (std::is_same_v<T, std::filesystem::path>)
            AppendText(value.native());
        else if constexpr (std::is_convertible_v<const T&, std::string_view>)
            AppendText(value);
        else if constexpr (std::is_convertible_v<const T&, std::wstring_view>)
            AppendWide(value);
        else
            AppendOther(value);
    }

    template <class Rep, class Period>
    void Append(const std::chrono::duration<Rep, Period>& value)
    {
        Append(value.count());
        AppendUnit(Period::num, Period::den);
    }

    // Up to the first NUL, at most all of the array.
    void AppendArray(const char* text, std::size_t limit);
    void AppendArray(const wchar_t* text, std::size_t limit);
    template <class T>
    void AppendArray(const T* array, std::size_t)
    {
        Append(array);
    }

    template <class T>
    void AppendOther(const T& value)
    {
        // A type that knows only wide streams has its text there.
        using Stream =
            std::conditional_t<IsStreamable<std::ostream, T>::value, std::ostringstream, std::wostringstream>;
        Stream stream;
        stream.imbue(std::locale::classic());
        stream << value;
        Append(stream.str());
    }

    void AppendText(std::string_view text);
    void AppendNumber(long long value);
    void AppendNumber(unsigned long long value);
    void AppendWide(std::wstring_view text);
    void AppendUnit(std::intmax_t numerator, std::intmax_t denominator);

    // What an ILogger that has this threshold now, or no more, changes.
    static void AddThreshold(LogSeverity threshold);
    static void RemoveThreshold(LogSeverity threshold);
    static void ThresholdsChanged();
    static std::int64_t Widest();

    // The highest severity that the Log or any ILogger wants, installed or not; -1 without one. No line above
    // it is looked at twice.
    static std::atomic<std::int64_t> s_iWidest;

    const char* const m_strFile;
    const char* const m_strFunction;
    const unsigned int m_uLine;
    const LogSeverity m_severity;
    // A text of usual length needs no memory.
    std::size_t m_uLength = 0;
    char m_shortText[168];
    // All of the text once it is longer.
    std::string m_strLongText;
};

} // namespace Toolkit

#endif
