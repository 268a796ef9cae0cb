// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_TESTS_SUPPORT_RECORDINGSINK_H
#define TOOLKIT_TESTS_SUPPORT_RECORDINGSINK_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "toolkit/log/Log.h"

namespace ToolkitTest
{

// Keeps the records that it gets. Any thread may write.
class RecordingSink : public Toolkit::LogSink
{
public:
    using LogSink::LogSink;

    void Write(const Toolkit::LogRecord& record) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_records.push_back(record);
    }

    std::vector<Toolkit::LogRecord> Records() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_records;
    }

    std::vector<std::string> Messages() const
    {
        std::vector<std::string> messages;
        for (const Toolkit::LogRecord& record : Records())
            messages.push_back(record.message);
        return messages;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Toolkit::LogRecord> m_records;
};

// The sinks of the log for a scope.
class InstalledSinks
{
public:
    explicit InstalledSinks(std::vector<std::shared_ptr<Toolkit::LogSink>> sinks)
    {
        Toolkit::Log::Install(std::move(sinks));
    }
    ~InstalledSinks()
    {
        Toolkit::Log::Install({});
        Toolkit::Log::SetThreshold(Toolkit::LogSeverity::Verbose);
    }

    InstalledSinks(const InstalledSinks&) = delete;
    InstalledSinks& operator=(const InstalledSinks&) = delete;
};

} // namespace ToolkitTest

#endif
