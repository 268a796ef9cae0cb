// SPDX-License-Identifier: MIT
#include "toolkit/log/TeeLogger.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "toolkit/internal/log/ClassicLine.h"

namespace Toolkit
{

namespace
{

LogSeverity HighestOf(const std::vector<smart_ptr<ILogger>>& loggers)
{
    LogSeverity highest = LogSeverity::Error;
    for (const smart_ptr<ILogger>& logger : loggers)
        if (!logger.IsNull())
            highest = std::max(highest, logger->GetThreshold());
    return highest;
}

} // namespace

TeeLogger::TeeLogger(const std::vector<smart_ptr<ILogger>>& loggers) : ILogger(HighestOf(loggers))
{
    for (const smart_ptr<ILogger>& logger : loggers)
        if (!logger.IsNull())
            m_loggers.push_back(logger);
}

TeeLogger::~TeeLogger() = default;

void TeeLogger::Write(const TString<wchar_t>& text)
{
    // A whole line comes without its severity being selected.
    const std::optional<ClassicLine> line = ClassicLine::Of(text);
    const LogSeverity severity = line ? static_cast<LogSeverity>(line->severity) : GetSeverity();
    std::exception_ptr failure;
    for (const smart_ptr<ILogger>& logger : m_loggers)
        try
        {
            if (severity <= logger->GetThreshold())
                logger->Write(text);
        }
        catch (...)
        {
            failure = std::current_exception();
        }
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace Toolkit
