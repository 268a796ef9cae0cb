#ifndef TOOLKIT_LOG_SETSEVERITY_H
#define TOOLKIT_LOG_SETSEVERITY_H

#include "toolkit/log/LogSeverity.h"

namespace Toolkit
{

// Streamed into a logger, selects the severity of the pieces that follow.
struct SetSeverity
{
    explicit SetSeverity(LogSeverity value) : severity(value) {}

    LogSeverity severity;
};

} // namespace Toolkit

#endif
