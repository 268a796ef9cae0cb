// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOG_LINEFORMAT_H
#define TOOLKIT_INTERNAL_LOG_LINEFORMAT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "toolkit/internal/log/LineParts.h"

namespace Toolkit
{

// Lays out the lines of the log files of new code: the time by RFC 3339 in the local zone with milliseconds,
// the severity as a word, the number of the thread, the function or "-", and the message, with one space
// between them and a line feed at the end. A line feed or another control character within is written as an
// escape of C, so that one line stays one line. One thread at a time uses it.
class LineFormat
{
public:
    // The line, which stays until the next one is laid out.
    std::string_view Of(const LineParts& parts);

private:
    // The parts of the time that stay the same for a second, which is counted from 1970 on.
    void SetSecond(std::int64_t second);
    // All that comes before the function, but for the milliseconds.
    void SetFields(unsigned int severity, std::uint64_t thread);
    void SetMilliseconds(unsigned int count);
    // A line that is long or must be escaped; the fields are set.
    std::string_view LongLine(std::string_view function, std::string_view message);

    // Of the last line.
    std::int64_t m_nSecond = 0;
    // Empty before the first line.
    std::string m_strDate;
    std::string m_strOffset;
    unsigned int m_uSeverity = 0;
    std::uint64_t m_uThread = 0;
    // The length of the fields, with which the line begins; 0 while they must be made anew.
    std::size_t m_uFields = 0;
    char m_line[512];
    std::string m_strLongLine;
};

} // namespace Toolkit

#endif
