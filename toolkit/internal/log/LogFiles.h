// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_LOG_LOGFILES_H
#define TOOLKIT_INTERNAL_LOG_LOGFILES_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "toolkit/internal/system/Descriptor.h"
#include "toolkit/internal/system/UnsharedDescriptor.h"

namespace Toolkit
{

// The files of a run's log: "<name>-<moment of its making>.log" in one folder, of which the newest are kept.
// A file is never written over, and none is removed that another run still writes. When the current one is
// full, was removed or moved, or went with its folder, the next line begins another. One thread at a time
// uses it.
class LogFiles
{
public:
    LogFiles(std::filesystem::path folder, std::string name, unsigned int keep, std::uint64_t maxSize);

    // Makes the first file, and the folder if it is missing. False when that fails, and errno tells why.
    bool Open();

    // Writes whole lines at that time, all by one `write` where the system takes it so; they stay in one
    // file. False when nothing of them could be written, and errno tells why.
    bool Write(std::string_view lines, std::chrono::system_clock::time_point time);

    // How many bytes the current file still takes.
    std::size_t Room() const;

    // The path of the file that is written; empty while there is none.
    const std::filesystem::path& Path() const { return m_path; }

private:
    using Moment = std::chrono::time_point<std::chrono::system_clock, std::chrono::milliseconds>;

    bool Append(std::string_view lines);
    // Takes back the bytes that were written of lines that did not fit; errno stays.
    void TakeBack(std::size_t written);
    // Tells other runs that the file is in use by this process.
    void Lock(const Descriptor& file);
    // True when the file is still where it was made.
    bool IsInPlace() const;
    // True when it must be looked whether the file is still there: at each line, but for those of a program
    // that does nothing but log, which follow each other closely; there now and then.
    bool IsTimeToLook(std::chrono::system_clock::time_point time);
    // Makes a file with a name that no other has.
    bool OpenNext();
    bool OpenAt(Moment moment);
    std::filesystem::path PathAt(Moment moment) const;
    bool IsOfThisLog(const std::string& name) const;
    // Those of this log in the folder, the oldest first.
    std::vector<std::filesystem::path> Files() const;
    // That of the newest file; the beginning of time without one.
    Moment NewestMoment() const;
    void RemoveOldest() const;

    const std::filesystem::path m_folder;
    const std::string m_strName;
    const unsigned int m_uKeep;
    const std::uint64_t m_uMaxSize;

    Descriptor m_file;
    UnsharedDescriptor m_lock;
    // Which process took the lock.
    pid_t m_process = 0;
    std::filesystem::path m_path;
    std::uint64_t m_uSize = 0;
    std::uint64_t m_uDevice = 0;
    std::uint64_t m_uNumber = 0;
    // A part of a line that could not be taken back.
    bool m_bTorn = false;
    std::chrono::system_clock::time_point m_lastWrite;
    // The time from one line to the next, of late.
    std::chrono::nanoseconds m_usualGap;
    unsigned int m_uNotLooked = 0;
};

} // namespace Toolkit

#endif
