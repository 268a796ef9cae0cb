// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOG_LINEPARTS_H
#define TOOLKIT_INTERNAL_LOG_LINEPARTS_H

#include <chrono>
#include <cstdint>
#include <string_view>

namespace Toolkit
{

// What a line of the log consists of. Unlike a LogRecord, which a sink may keep, it has no text of its own,
// and so needs no memory.
struct LineParts
{
    // Those of a LogRecord, which must outlive them.
    template <class Record>
    static LineParts Of(const Record& record)
    {
        return {record.time, record.severity, record.thread, record.file,
                record.line, record.function, record.message};
    }

    std::chrono::system_clock::time_point time;
    unsigned int severity = 0;
    std::uint64_t thread = 0;
    std::string_view file;
    unsigned int line = 0;
    std::string_view function;
    std::string_view message;
};

} // namespace Toolkit

#endif
