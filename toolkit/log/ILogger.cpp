// SPDX-License-Identifier: MIT
#include "toolkit/log/ILogger.h"

#include "toolkit/encoding/UTF8.h"
#include "toolkit/log/NullLogger.h"

namespace Toolkit
{

smart_ptr<ILogger>* ILogger::s_pInstance = nullptr;

const TString<wchar_t> ILogger::c_strLogToken1(L" ");
const TString<wchar_t> ILogger::c_strLogToken2(L" : ");
const TString<wchar_t> ILogger::c_strLogToken3(L"\n");

ILogger::ILogger(LogSeverity threshold) : m_threshold(threshold) {}

ILogger::~ILogger() = default;

smart_ptr<ILogger> ILogger::Create()
{
    return smart_ptr<ILogger>(new NullLogger);
}

void ILogger::SetLogger(smart_ptr<ILogger> logger)
{
    if (s_pInstance == nullptr)
        return;
    *s_pInstance = logger.IsNull() ? Create() : logger;
}

ILogger& ILogger::operator<<(const SetSeverity& selection)
{
    m_severity.store(selection.severity, std::memory_order_relaxed);
    return Installed();
}

ILogger& ILogger::operator<<(const TString<wchar_t>& text)
{
    if (Passes())
        Write(text);
    return Installed();
}

ILogger& ILogger::operator<<(const TString<char>& text)
{
    if (Passes())
        Write(UTF8::ToUNICODE(text));
    return Installed();
}

ILogger& ILogger::operator<<(short value)
{
    return operator<< <short>(value);
}

ILogger& ILogger::operator<<(int value)
{
    return operator<< <int>(value);
}

ILogger& ILogger::operator<<(long long value)
{
    return operator<< <long long>(value);
}

ILogger& ILogger::operator<<(unsigned short value)
{
    return operator<< <unsigned short>(value);
}

ILogger& ILogger::operator<<(unsigned int value)
{
    return operator<< <unsigned int>(value);
}

ILogger& ILogger::operator<<(unsigned long long value)
{
    return operator<< <unsigned long long>(value);
}

} // namespace Toolkit
