// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_NULLLOGGER_H
#define TOOLKIT_LOG_NULLLOGGER_H

#include "toolkit/log/ILogger.h"

namespace Toolkit
{

/// The sink that discards everything: installed until the host sets its own, and again during the teardown.
/// Its threshold is Error. Any thread may use it.
///
/// @code
/// Toolkit::smart_ptr<Toolkit::ILogger> nothing(new Toolkit::NullLogger);
/// Toolkit::ILogger::SetLogger(nothing);
/// TOOLKIT_LOG(Toolkit::LogSeverity::Error) << "nobody reads this";
/// @endcode
class TOOLKIT_API NullLogger : public ILogger
{
public:
    NullLogger();
    ~NullLogger() override;

    void Write(const TString<wchar_t>& text) override;
};

} // namespace Toolkit

#endif
