// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOG_CLASSICLINE_H
#define TOOLKIT_INTERNAL_LOG_CLASSICLINE_H

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Toolkit
{

// The fields of a log line in the classic layout: severity, tick count, source line, function, message. In
// the lines of wxWidgets the tick count is missing and "wx" stands for the source line.
struct ClassicLine
{
    unsigned int severity = 0;
    unsigned int line = 0;
    std::wstring_view function;
    std::wstring_view message;

    // The fields are parts of `text`, whose line feed at the end, if there is one, belongs to none.
    static std::optional<ClassicLine> Of(std::wstring_view text);
};

// Puts the pieces that threads write one at a time together to lines, each thread's for itself. Any thread
// may call it.
class LineCollector
{
public:
    // The lines that this piece of a thread's text completes, without their line feeds. What grows too long
    // for a line passes for one.
    std::vector<std::wstring> Add(std::uint64_t thread, std::wstring_view piece);

    // True when the thread has begun a line.
    bool HasBegun(std::uint64_t thread);

    // What was begun and never ended.
    std::map<std::uint64_t, std::wstring> TakeBegun();

private:
    std::mutex m_mutex;
    std::map<std::uint64_t, std::wstring> m_begun;
};

} // namespace Toolkit

#endif
