// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_ZONES_READINSTANT_H
#define TOOLKIT_INTERNAL_ZONES_READINSTANT_H

#include <cstdint>

namespace Toolkit
{

// An instant that was read from a text, or why the text holds none.
struct ReadInstant
{
    // Since 1970-01-01 00:00:00 UTC, without leap seconds, and the nanoseconds of that second.
    std::int64_t second = 0;
    std::int64_t nanosecond = 0;
    // Null for an instant.
    const char* problem = nullptr;

    static ReadInstant Problem(const char* problem) { return {0, 0, problem}; }
};

} // namespace Toolkit

#endif
