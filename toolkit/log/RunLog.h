// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_RUNLOG_H
#define TOOLKIT_LOG_RUNLOG_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "toolkit/core/Export.h"
#include "toolkit/core/Result.h"
#include "toolkit/log/LogSink.h"

namespace Toolkit
{

struct LineParts;

/// How a RunLog writes: a value with chained setters. Copies are independent of each other; one that was
/// moved from is as new, but without a name.
///
/// @code
/// auto options = Toolkit::RunLogOptions("watch").Folder(logs).Keep(10).MaxSize(1 << 20).Background();
/// if (Toolkit::Result<std::shared_ptr<Toolkit::RunLog>> log = Toolkit::RunLog::Open(options))
///     Toolkit::Log::Install({*log});
/// @endcode
class TOOLKIT_API RunLogOptions
{
public:
    /// The files are named after `name`, which is a plain name of a file.
    explicit RunLogOptions(std::string_view name);
    RunLogOptions(const RunLogOptions& other);
    RunLogOptions(RunLogOptions&& other) noexcept;
    /// Takes over the options of `other`.
    RunLogOptions& operator=(RunLogOptions other) noexcept;
    ~RunLogOptions();

    /// Where the files lie; made when it is missing, for its user alone. Unless said, it is `State() /
    /// "logs"` of the application `name` (see Folders).
    RunLogOptions& Folder(std::filesystem::path folder);
    /// How many files stay, the one that is written included; 5 unless said, and 0 keeps all.
    RunLogOptions& Keep(unsigned int files);
    /// The bytes of a file before a line begins another; 8 MiB unless said, and 0 is no limit. A longer line
    /// has a file for itself.
    RunLogOptions& MaxSize(std::uint64_t bytes);
    /// The threshold of the sink; Verbose unless said.
    RunLogOptions& Threshold(LogSeverity threshold);
    /// Lines are queued, of at most that many bytes together, and a thread of the log writes them some
    /// milliseconds later. What does not fit is dropped, and a line in the file counts it.
    RunLogOptions& Background(std::size_t capacity = 4 << 20);

private:
    friend class RunLog;
    struct Content;

    std::unique_ptr<Content> m_pContent;
};

/// A sink that writes one file for each run of a program: "<name>-<time>.log", by UTC to the millisecond. A
/// line is the time by RFC 3339 with milliseconds and the offset of the local zone, the severity as a word,
/// the number of the thread, the function or "-", and the message; control characters are escaped as in C, so
/// that one line stays one line. Each line is in the file by one `write` before the statement that logs it
/// ends, so that no end of the process loses it; with RunLogOptions::Background it is queued, and lost only
/// with the process. A full disk, want of memory, a folder that was removed or a file that was taken away
/// costs the lines that cannot be written meanwhile; a line that counts them comes before the next that fits.
/// Any thread may call it.
///
/// @code
/// auto file = Toolkit::RunLog::Open(Toolkit::RunLogOptions("watch").Folder(logs).Keep(5));
/// if (!file)
///     return Fail(file.error().Message());
/// Toolkit::Log::Install({*file});
/// @endcode
class TOOLKIT_API RunLog : public LogSink
{
public:
    /// Makes the file of this run, and removes the oldest ones that are too many and that no process writes.
    /// Fails with `std::errc::invalid_argument` for a name that is no name of a file, and with the system's
    /// code when the folder or the file cannot be made, or the thread of `Background`.
    static Result<std::shared_ptr<RunLog>> Open(const RunLogOptions& options);

    /// Writes what is queued.
    ~RunLog() override;

    void Write(const LogRecord& record) override;

    /// Waits until everything that was logged before is in the file, or has been lost; true unless that takes
    /// longer. It never waits without `Background`.
    bool Flush();
    /// The same with a time-out, after which it returns false.
    bool Flush(std::chrono::nanoseconds timeout);

    /// The file that is written now; it changes with the size. Empty while no file can be made.
    std::filesystem::path File() const;

private:
    friend class Log;
    struct Content;

    RunLog(const RunLogOptions& options, const std::filesystem::path& folder);

    void StartQueue(std::size_t capacity);
    // The same as `Write`, without a record.
    void WriteLine(const LineParts& parts);

    std::unique_ptr<Content> m_pContent;
};

} // namespace Toolkit

#endif
