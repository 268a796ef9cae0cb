// SPDX-License-Identifier: MIT
#include "toolkit/log/NullLogger.h"

namespace Toolkit
{

NullLogger::NullLogger() : ILogger(LogSeverity::Error) {}

NullLogger::~NullLogger() = default;

void NullLogger::Write(const TString<wchar_t>&) {}

} // namespace Toolkit
