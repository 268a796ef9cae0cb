// SPDX-License-Identifier: MIT
#include "toolkit/log/RunLog.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "toolkit/app/Folders.h"
#include "toolkit/internal/log/LineFormat.h"
#include "toolkit/internal/log/LineQueue.h"
#include "toolkit/internal/log/LogFiles.h"
#include "toolkit/internal/system/AbsolutePath.h"
#include "toolkit/internal/system/FalseWithoutMemory.h"
#include "toolkit/internal/system/LeakOnPurpose.h"
#include "toolkit/internal/system/MovedFrom.h"
#include "toolkit/internal/system/SystemFailure.h"
#include "toolkit/internal/system/ThreadNumber.h"

namespace Toolkit
{

namespace
{

const std::size_t s_uMostAtOnce = 65536;
const std::size_t s_uLongestName = 200;

bool IsName(const std::string& name)
{
    return !name.empty() && name.size() <= s_uLongestName && name != "." && name != ".." &&
           name.find('/') == std::string::npos && name.find('\0') == std::string::npos;
}

// The length of the first lines that together are no longer than `most`, or of the first one.
std::size_t PieceOf(std::string_view lines, std::size_t most)
{
    if (lines.size() <= most)
        return lines.size();
    const std::size_t last = most == 0 ? std::string_view::npos : lines.rfind('\n', most - 1);
    return (last != std::string_view::npos ? last : lines.find('\n')) + 1;
}

} // namespace

struct RunLogOptions::Content
{
    std::string m_strName;
    std::filesystem::path m_folder;
    unsigned int m_uKeep = 5;
    std::uint64_t m_uMaxSize = 8 << 20;
    LogSeverity m_threshold = LogSeverity::Verbose;
    // Of the queue; 0 without one.
    std::size_t m_uCapacity = 0;
};

RunLogOptions::RunLogOptions(std::string_view name) : m_pContent(std::make_unique<Content>())
{
    m_pContent->m_strName = name;
}

RunLogOptions::RunLogOptions(const RunLogOptions& other) : m_pContent(MovedFrom::CopyOf(other.m_pContent)) {}

RunLogOptions::RunLogOptions(RunLogOptions&& other) noexcept = default;

RunLogOptions& RunLogOptions::operator=(RunLogOptions other) noexcept
{
    m_pContent.swap(other.m_pContent);
    return *this;
}

RunLogOptions::~RunLogOptions() = default;

RunLogOptions& RunLogOptions::Folder(std::filesystem::path folder)
{
    MovedFrom::Renewed(m_pContent).m_folder = std::move(folder);
    return *this;
}

RunLogOptions& RunLogOptions::Keep(unsigned int files)
{
    MovedFrom::Renewed(m_pContent).m_uKeep = files;
    return *this;
}

RunLogOptions& RunLogOptions::MaxSize(std::uint64_t bytes)
{
    MovedFrom::Renewed(m_pContent).m_uMaxSize = bytes;
    return *this;
}

RunLogOptions& RunLogOptions::Threshold(LogSeverity threshold)
{
    MovedFrom::Renewed(m_pContent).m_threshold = threshold;
    return *this;
}

RunLogOptions& RunLogOptions::Background(std::size_t capacity)
{
    MovedFrom::Renewed(m_pContent).m_uCapacity = std::max<std::size_t>(capacity, 1);
    return *this;
}

struct RunLog::Content
{
    Content(const std::filesystem::path& folder, const RunLogOptions::Content& options)
        : m_files(folder, options.m_strName, options.m_uKeep, options.m_uMaxSize)
    {
    }

    // With the guard held. What cannot be written, for want of memory too, is lost, and counted before the
    // next that can.
    void Write(std::string_view lines, std::size_t count, std::chrono::system_clock::time_point time)
    {
        CountLost();
        if (!FalseWithoutMemory([&] { return m_files.Write(lines, time); }))
            m_uLost += count;
    }

    // With the guard held.
    void CountLost()
    {
        if (m_uLost != 0 && FalseWithoutMemory([this] { return WriteLost(); }))
            m_uLost = 0;
    }

    bool WriteLost()
    {
        const std::string message =
            std::to_string(m_uLost) + (m_uLost == 1 ? " line was lost" : " lines were lost");
        const auto now = std::chrono::system_clock::now();
        LineFormat format;
        return m_files.Write(format.Of({now, LogSeverity::Warning, ThreadNumber(), "", 0, "RunLog", message}),
                             now);
    }

    void Drain(std::string_view lines, std::uint64_t dropped)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_uLost += dropped;
        while (!lines.empty())
        {
            const std::size_t size = PieceOf(lines, std::min(s_uMostAtOnce, m_files.Room()));
            const std::string_view piece = lines.substr(0, size);
            const auto count = std::count(piece.begin(), piece.end(), '\n');
            Write(piece, static_cast<std::size_t>(count), std::chrono::system_clock::now());
            lines.remove_prefix(size);
        }
        CountLost();
    }

    mutable std::mutex m_mutex;
    LogFiles m_files;
    std::uint64_t m_uLost = 0;
    // Guarded by the queue where there is one, which must not wait for the disk.
    LineFormat m_format;
    // Its thread ends before the rest is destroyed.
    std::optional<LineQueue> m_queue;
};

Result<std::shared_ptr<RunLog>> RunLog::Open(const RunLogOptions& options)
{
    const std::string name = options.m_pContent != nullptr ? options.m_pContent->m_strName : std::string();
    if (!IsName(name))
        return Failure(std::make_error_code(std::errc::invalid_argument),
                       "cannot write the log " + name + ": that is no name of a file");
    std::filesystem::path folder = options.m_pContent->m_folder;
    if (folder.empty())
    {
        Result<Folders> folders = Folders::Of(name);
        if (!folders)
            return folders.error();
        folder = folders->State() / "logs";
    }
    folder = AbsolutePath(folder);
    const std::shared_ptr<RunLog> log(new RunLog(options, folder));
    if (!log->m_pContent->m_files.Open())
        return SystemFailure("cannot write a log in", folder.native(), errno);
    try
    {
        log->StartQueue(options.m_pContent->m_uCapacity);
    }
    catch (const std::system_error& failure)
    {
        return SystemFailure("cannot start the thread of the log", name, failure.code().value());
    }
    return log;
}

RunLog::RunLog(const RunLogOptions& options, const std::filesystem::path& folder)
    : LogSink(options.m_pContent->m_threshold),
      m_pContent(std::make_unique<Content>(folder, *options.m_pContent))
{
}

RunLog::~RunLog()
{
    // The queue of a forked process is the other one's: not even its locks can be destroyed.
    if (m_pContent->m_queue && m_pContent->m_queue->IsOfAnotherProcess())
        LeakOnPurpose(m_pContent.release());
}

void RunLog::StartQueue(std::size_t capacity)
{
    if (capacity == 0)
        return;
    Content& content = *m_pContent;
    content.m_queue.emplace(capacity, [&content](std::string_view lines, std::uint64_t dropped)
                            { content.Drain(lines, dropped); });
}

void RunLog::Write(const LogRecord& record)
{
    WriteLine(LineParts::Of(record));
}

void RunLog::WriteLine(const LineParts& parts)
{
    Content& content = *m_pContent;
    if (content.m_queue)
    {
        content.m_queue->Push([&](std::string& lines) { lines += content.m_format.Of(parts); });
        return;
    }
    const std::lock_guard<std::mutex> lock(content.m_mutex);
    content.Write(content.m_format.Of(parts), 1, parts.time);
}

bool RunLog::Flush()
{
    return Flush(std::chrono::nanoseconds::max());
}

bool RunLog::Flush(std::chrono::nanoseconds timeout)
{
    using Clock = std::chrono::steady_clock;
    if (!m_pContent->m_queue)
        return true;
    const Clock::time_point now = Clock::now();
    const bool isEndless = timeout > Clock::time_point::max() - now;
    return m_pContent->m_queue->Flush(isEndless ? Clock::time_point::max() : now + timeout);
}

std::filesystem::path RunLog::File() const
{
    const std::lock_guard<std::mutex> lock(m_pContent->m_mutex);
    return m_pContent->m_files.Path();
}

} // namespace Toolkit
