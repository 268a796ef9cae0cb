// SPDX-License-Identifier: MIT
#include "toolkit/log/DebuggerLogger.h"

#include "toolkit/internal/system/WideOutput.h"

namespace Toolkit
{

DebuggerLogger::DebuggerLogger(LogSeverity level) : ILogger(level) {}

DebuggerLogger::~DebuggerLogger() = default;

void DebuggerLogger::Write(const TString<wchar_t>& text)
{
    WriteToWideOutput(text);
}

} // namespace Toolkit
