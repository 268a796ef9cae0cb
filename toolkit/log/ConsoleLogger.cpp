// SPDX-License-Identifier: MIT
#include "toolkit/log/ConsoleLogger.h"

#include "toolkit/internal/system/WideOutput.h"

namespace Toolkit
{

ConsoleLogger::ConsoleLogger(LogSeverity level) : ILogger(level) {}

ConsoleLogger::~ConsoleLogger() = default;

void ConsoleLogger::Write(const TString<wchar_t>& text)
{
    WriteToWideOutput(text);
}

} // namespace Toolkit
