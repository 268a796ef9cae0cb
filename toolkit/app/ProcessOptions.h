// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_APP_PROCESSOPTIONS_H
#define TOOLKIT_APP_PROCESSOPTIONS_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "toolkit/core/Export.h"

namespace Toolkit
{

struct ChildSettings;

/// How a Process is run: a value with chained setters. Copies are independent of each other; one that was
/// moved from is as new. What the system has no form for (a NUL in a text, a name of a variable that is empty
/// or has a "=" in it) is refused when the process starts.
///
/// @code
/// auto options = Toolkit::ProcessOptions().Input("b\na\n").Environment("LC_ALL", "C").Timeout(5s);
/// if (Toolkit::Result<Toolkit::ProcessResult> sorted = Toolkit::Process::Run({"sort"}, options))
///     std::cout << sorted->Output();
/// @endcode
class TOOLKIT_API ProcessOptions
{
public:
    ProcessOptions();
    ProcessOptions(const ProcessOptions& other);
    ProcessOptions(ProcessOptions&& other) noexcept;
    /// Takes over the options of `other`.
    ProcessOptions& operator=(ProcessOptions other) noexcept;
    ~ProcessOptions();

    /// What the process reads, byte for byte; nothing unless said. After it `Process::Run` closes the input;
    /// `Process::Start` leaves it open for more.
    ProcessOptions& Input(std::string bytes);
    /// Where it works; otherwise where this process does. A relative name of a program is searched there.
    ProcessOptions& Folder(std::filesystem::path folder);
    /// Sets a variable beside, or in place of, what it has of this process.
    ProcessOptions& Environment(std::string name, std::string value);
    /// It has no variables of this process; those that are set here remain.
    ProcessOptions& ClearEnvironment();
    /// Its errors become part of its output, in the order in which they are written.
    ProcessOptions& MergeErrors();
    /// How long it may run from its start; then its whole process group is killed. Without it there is no
    /// end. After `Process::Start` it is killed by the operation that waits then, or by the next one.
    ProcessOptions& Timeout(std::chrono::nanoseconds time);
    /// How many bytes of output, and of errors, are kept until they are read; 1 GiB unless said. The rest is
    /// thrown away, and the process goes on.
    ProcessOptions& MaxOutput(std::uint64_t bytes);

private:
    friend class Process;

    std::unique_ptr<ChildSettings> m_pSettings;
};

} // namespace Toolkit

#endif
