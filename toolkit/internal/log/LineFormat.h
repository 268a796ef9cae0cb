// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOG_LINEFORMAT_H
#define TOOLKIT_INTERNAL_LOG_LINEFORMAT_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace Toolkit
{

// Lays out the lines of the log files of new code: the time by RFC 3339 in the local zone with milliseconds,
// the severity as a word, the number of the thread, the function or "-", and the message, with one space
// between them and a line feed at the end. A line feed or another control character within is written as an
// escape of C, so that one line stays one line. One thread at a time uses it.
class LineFormat
{
public:
    void Append(std::string& text, std::chrono::system_clock::time_point time, unsigned int severity,
                std::uint64_t thread, std::string_view function, std::string_view message);

private:
    using Second = std::chrono::time_point<std::chrono::system_clock, std::chrono::seconds>;

    // The parts of the time that stay the same for a second.
    void SetSecond(Second second);
    // All that comes before the function, but for the milliseconds.
    void SetFields(unsigned int severity, std::uint64_t thread);
    void SetMilliseconds(unsigned int count);

    // Far from every time that can be logged without being set first.
    Second m_second = Second(std::chrono::hours(-1000000));
    std::string m_strDate;
    std::string m_strOffset;
    unsigned int m_uSeverity = 0;
    std::uint64_t m_uThread = 0;
    // Empty while it must be made anew.
    std::string m_strFields;
};

} // namespace Toolkit

#endif
