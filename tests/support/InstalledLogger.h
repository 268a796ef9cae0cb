// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_INSTALLEDLOGGER_H
#define TOOLKIT_TESTS_SUPPORT_INSTALLEDLOGGER_H

#include <mutex>
#include <string>
#include <vector>

#include "toolkit/log/ILogger.h"

namespace ToolkitTest
{

// What a RecordingLogger got; it outlives the logger.
class Record
{
public:
    void Add(const std::wstring& piece);
    std::vector<std::wstring> Pieces() const;
    // All pieces, one after the other.
    std::wstring Text() const;
    void Clear();

private:
    mutable std::mutex m_mutex;
    std::vector<std::wstring> m_pieces;
};

// A sink that keeps each piece. Any thread may write.
class RecordingLogger : public Toolkit::ILogger
{
public:
    explicit RecordingLogger(Record& record, Toolkit::LogSeverity threshold = Toolkit::LogSeverity::Verbose)
        : ILogger(threshold), m_record(record)
    {
    }

    void Write(const Toolkit::TString<wchar_t>& text) override { m_record.Add(text); }

private:
    Record& m_record;
};

// The process-wide logger for a scope, for tests that need nothing else of the library's modules.
class InstalledLogger
{
public:
    InstalledLogger();
    // Installs `logger` and owns it.
    explicit InstalledLogger(Toolkit::ILogger* logger);
    ~InstalledLogger();

    InstalledLogger(const InstalledLogger&) = delete;
    InstalledLogger& operator=(const InstalledLogger&) = delete;
};

} // namespace ToolkitTest

#endif
