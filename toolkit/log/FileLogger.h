// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_LOG_FILELOGGER_H
#define TOOLKIT_LOG_FILELOGGER_H

#include <deque>

#include "toolkit/core/TString.h"
#include "toolkit/core/smart_ptr.h"
#include "toolkit/log/ILogger.h"
#include "toolkit/threading/EventObject.h"
#include "toolkit/threading/Mutex.h"
#include "toolkit/threading/Thread.h"

namespace Toolkit
{

class FFile;
class ForkShield;

/// The sink that writes a file in the temporary folder: a piece is queued, and the logger's own thread writes
/// it. The file is `name`.vxlog, emptied when it is opened; while that one cannot be opened, another
/// time-stamped name is tried every 10 ms. Any thread may call `Write`, but none any more when the owner
/// destroys the logger. No failure is reported: a piece is lost when the disk does not take it, when there is
/// no memory to write it, and when the logger is destroyed before any file could be opened. `Write` throws
/// std::bad_alloc where a piece cannot be queued.
///
/// @code
/// const auto logger = new Toolkit::FileLogger(Toolkit::LogSeverity::Info, L"desk", 1 << 20);
/// Toolkit::ILogger::SetLogger(Toolkit::smart_ptr<Toolkit::ILogger>(logger));
/// TOOLKIT_LOG(Toolkit::LogSeverity::Info) << "it begins";
/// @endcode
class TOOLKIT_API FileLogger : public ILogger, public Thread
{
public:
    /// The mode in which the file is opened, for FFile.
    static const TString<wchar_t> c_strOpenMode;
    /// The extension of the file's name.
    static const TString<wchar_t> c_strLogExtension;
    /// Stands between the name and the tick count in a time-stamped file name.
    static const TString<wchar_t> c_strTickSeparator;

    /// An empty `name` stands for the application's. Quirk: the file is not ended at `maxSize` bytes: what is
    /// written after that goes over the oldest text, from the start of the file, and the last writing before
    /// that may go past it.
    FileLogger(LogSeverity level, const TString<wchar_t>& name, unsigned int maxSize);
    /// Writes all that is queued. Quirk: it waits for the end of half a second without a `Write`,
    /// part of which may be over already.
    ~FileLogger() override;

    /// Queues a copy of `text` and never waits for the disk; the text is in the file up to 200 ms later.
    void Write(const TString<wchar_t>& text) override;

protected:
    /// Opens the file and writes the queue to it until the logger is destroyed. The exit code is 0, or 1 if
    /// no file could be opened until then.
    ExitCode DoWork() override;

private:
    // False also when there is no memory for it, as there may be at the next try.
    bool OpenPrimary(ForkShield& shield);
    bool OpenFallback(ForkShield& shield);
    bool OpenFile(const TString<wchar_t>& path, ForkShield& shield);
    TString<wchar_t> PathWithoutExtension() const;
    TString<wchar_t> PrimaryPath() const;
    TString<wchar_t> FallbackPath() const;
    bool HasMoreToDo();
    void DrainQueue();
    void WritePiece(const TString<wchar_t>& piece);
    void WrapAround();

    std::deque<TString<wchar_t>> m_pending;
    Mutex m_mutex;
    // What the thread is writing; made beforehand, so that it needs no memory for it.
    std::deque<TString<wchar_t>> m_writing;
    const smart_ptr<EventObject> m_pWorkEvent;
    const smart_ptr<EventObject> m_pStopEvent;
    const TString<wchar_t> m_strName;
    smart_ptr<FFile> m_pFile;
    const unsigned int m_uMaxSize;
    bool m_bRuns;
};

} // namespace Toolkit

#endif
